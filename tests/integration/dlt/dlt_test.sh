#!/usr/bin/env bash
# Log lines into DLT, end to end: maintaind starts with DLT on while no dlt-daemon runs (nothing
# blocks, the console keeps its lines); then Debian's dlt-daemon starts on a private FIFO folder
# and a loopback port, the radar demo runs with DLT on, and dlt-receive reads the plug-in's lines
# (context "CM") and maintaind's node-online line back, with their levels and texts intact.
#   dlt_test.sh BIN_DIR PLUGIN
set -euo pipefail
BIN=$1
PLUGIN=$2
. "$(dirname "$(readlink -f "$0")")/../install/common.sh"
need dlt-daemon dlt-receive

PORT=$((20000 + $$ % 10000))
export ORX_DDS_DOMAIN=219 ORX_LOG_DLT=1 ORX_LOG_LEVEL=debug DLT_PIPE_DIR=$WORK

ORX_CONFIG=$WORK/none.json ORX_LOG_DLT_APP_ID=MNTD "$BIN/maintaind" --db "$WORK/registry.db" >"$WORK/maintaind.log" 2>&1 &
PIDS+=("$!")
wait_for 20 grep -q "Maintaind started" "$WORK/maintaind.log" ||
  fail "maintaind with DLT on and no dlt-daemon did not start: $(cat "$WORK/maintaind.log")"

cat >"$WORK/dlt.conf" <<CONF
ECUId = ORXT
SendContextRegistration = 1
LoggingMode = 2
LoggingLevel = 6
LoggingFilename = $WORK/dlt-daemon.log
ContextLogLevel = 6
ControlSocketPath = $WORK/dlt-ctrl.sock
PersistanceStoragePath = $WORK
# libdlt 2.18 parses the address as IPv6: the IPv4 loopback, mapped.
BindAddress = ::ffff:127.0.0.1
CONF
dlt-daemon -c "$WORK/dlt.conf" -t "$WORK" -p "$PORT" >"$WORK/dlt-daemon.out" 2>&1 &
PIDS+=("$!")
wait_for 10 test -p "$WORK/dlt" || fail "dlt-daemon did not start: $(cat "$WORK/dlt-daemon.out")"
# Line-buffered: the test reads the file while dlt-receive runs.
stdbuf -oL dlt-receive -a -p "$PORT" 127.0.0.1 >"$WORK/received.txt" 2>&1 &
PIDS+=("$!")

ORX_DFX_PLUGIN=$PLUGIN "$BIN/orx-demo" radar >"$WORK/radar.log" 2>&1 &
PIDS+=("$!")

# A console line of the plug-in at `$1` ("debug", "info") and the same line in DLT at that level:
# application RADA, context CM.
plugin_line_in_dlt() {
  local line
  while IFS= read -r line; do
    grep -qF -- "RADA CM-- log $1 V 1 [$line]" "$WORK/received.txt" && return 0
  done < <(grep -E "\[$1\] \[[0-9:]+\] \[radar:CM\] " "$WORK/radar.log" | sed -E 's/^.*\[radar:CM\] //')
  return 1
}
for level in debug info; do
  wait_for 30 plugin_line_in_dlt $level || fail "no plug-in $level line in DLT: radar: $(cat "$WORK/radar.log")
received: $(cat "$WORK/received.txt")"
done
wait_for 30 grep -Eq "MNTD MAIN log info V 1 \[Node online\[appName=radar" "$WORK/received.txt" ||
  fail "maintaind's node line not in DLT: $(cat "$WORK/received.txt")"
echo "PASS"
