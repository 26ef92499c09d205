#!/usr/bin/env bash
# Runs the DDS driver's request/reply round trip beside Cyclone's own ddsperf
# ping/pong at the same payload size, both on the loopback-only configuration
# of the driver, and prints the p50 ratio.
#
#   bench/dds/run.sh [build-dir] [seconds]
#
# build-dir defaults to ./build (a RelWithDebInfo or Release build with the
# dds_roundtrip_bench target built); seconds is the ddsperf run time (10).
set -euo pipefail

BUILD=${1:-build}
SECONDS_TO_RUN=${2:-10}
BENCH="$BUILD/bin/dds_roundtrip_bench"
BENCH_DOMAIN=222
PERF_DOMAIN=223

if [[ ! -x "$BENCH" ]]; then
    echo "missing $BENCH: cmake --build $BUILD --target dds_roundtrip_bench -j2" >&2
    exit 1
fi
command -v ddsperf > /dev/null || { echo "ddsperf not found (package cyclonedds-tools)" >&2; exit 1; }

SIZE=$("$BENCH" --size-only)
# ddsperf gets exactly the driver's loopback configuration.
CYCLONEDDS_URI=$("$BENCH" --cyclone-config)
export CYCLONEDDS_URI

PERF_OUT=$(mktemp)
trap 'rm -f "$PERF_OUT"; [[ -n "${PONG:-}" ]] && kill "$PONG" 2> /dev/null || true' EXIT

echo "== ddsperf ping/pong, size $SIZE, waitset, ${SECONDS_TO_RUN} s"
ddsperf -i "$PERF_DOMAIN" -D $((SECONDS_TO_RUN + 5)) pong waitset > /dev/null 2>&1 &
PONG=$!
ddsperf -i "$PERF_DOMAIN" -D "$SECONDS_TO_RUN" ping size "$SIZE" waitset > "$PERF_OUT" 2>&1 || true
kill "$PONG" 2> /dev/null || true
wait "$PONG" 2> /dev/null || true
PONG=

# One line per second: "... 50% 16.1us 90% ... 99% 40.2us ...". The first
# second holds discovery; take the median of the rest.
column() {  # column NAME: the per-second values that follow NAME, first second dropped
    awk -v name="$1" '/ 50% / { for (i = 1; i <= NF; i++) if ($i == name) { v = $(i + 1); sub("us", "", v); print v } }' \
        "$PERF_OUT" | tail -n +2
}
median() { sort -g | awk '{ v[NR] = $1 } END { if (NR == 0) print "nan"; else print v[int((NR + 1) / 2)] }'; }
PERF_P50=$(column "50%" | median)
PERF_P99=$(column "99%" | median)
echo "ddsperf   p50 ${PERF_P50} us   p99 ${PERF_P99} us (median of the per-second figures)"

echo "== DDS driver round trip"
unset CYCLONEDDS_URI
DRIVER_OUT=$("$BENCH" --domain "$BENCH_DOMAIN")
echo "$DRIVER_OUT"

for MODE in chained blocking; do
    P50=$(echo "$DRIVER_OUT" | awk -v mode="$MODE" '$1 == mode { print $3 }')
    awk -v mode="$MODE" -v ours="$P50" -v perf="$PERF_P50" 'BEGIN {
        if (perf > 0) printf "ratio %-8s p50 / ddsperf p50 = %.2f (target <= 1.5)\n", mode, ours / perf }'
done
