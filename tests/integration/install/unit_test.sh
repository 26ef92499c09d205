#!/usr/bin/env bash
# maintaind.service as systemd reads it: `systemd-analyze verify` of the unit, written for the
# programs of the build tree, must pass without a word about the unit.
#   unit_test.sh UNIT_TEMPLATE BIN_DIR
set -euo pipefail
TEMPLATE=$1
BIN=$2
. "$(dirname "$0")/common.sh"
need systemd-analyze

sed -e "s|@ORX_BIN_DIR@|$BIN|g" -e "s|@ORX_DOC_DIR@|/usr/share/doc/orx|g" "$TEMPLATE" \
  >"$WORK/maintaind.service"
if grep -q "@ORX_" "$WORK/maintaind.service"; then
  fail "unfilled placeholder: $(grep "@ORX_" "$WORK/maintaind.service")"
fi
status=0
systemd-analyze verify "$WORK/maintaind.service" >"$WORK/verify.log" 2>&1 || status=$?
if [ "$status" -ne 0 ] || grep -q "maintaind.service" "$WORK/verify.log"; then
  fail "systemd-analyze verify (exit $status): $(cat "$WORK/verify.log")"
fi
echo "PASS"
