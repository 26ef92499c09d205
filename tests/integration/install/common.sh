# Shared by the shell-driven integration tests: a scratch folder removed at exit (kept on
# failure), background processes stopped at exit, and waiting on a condition with a deadline.

fail() {
  echo "FAIL: $*" >&2
  exit 1
}

skip() {
  echo "SKIP: $*"
  exit 77
}

need() {
  for tool in "$@"; do
    command -v "$tool" >/dev/null 2>&1 || skip "$tool is not installed (see scripts/setup)"
  done
}

WORK=$(mktemp -d "${TMPDIR:-/tmp}/orx-$(basename "$0" .sh).XXXXXX")
PIDS=()
cleanup() {
  local status=$?
  for pid in "${PIDS[@]}"; do
    kill -TERM "$pid" 2>/dev/null && wait "$pid" 2>/dev/null
  done
  if [ "$status" -eq 0 ] || [ "$status" -eq 77 ]; then
    rm -rf "$WORK"
  else
    echo "scratch folder kept: $WORK" >&2
  fi
}
trap cleanup EXIT

# wait_for SECONDS COMMAND...: true once COMMAND succeeds, false when it did not within SECONDS.
wait_for() {
  local deadline=$((SECONDS + $1))
  shift
  until "$@"; do
    [ "$SECONDS" -lt "$deadline" ] || return 1
    sleep 0.1
  done
}
