#!/usr/bin/env bash
# Builds the libFuzzer targets (preset "fuzz": clang, ASan + UBSan) and runs
# each for the given number of seconds, starting from its checked-in corpus
# and the test data folders fuzz/targets.txt names for it.
#
#   scripts/fuzz.sh <seconds> [target...]     (default: every target)
#
# The build goes to $VELK_FUZZ_BUILD (default build/fuzz); new inputs go to
# its corpus/<target>, findings (crash-*, leak-*, timeout-*, oom-*) to its
# artifacts/, logs to its logs/. VELK_FUZZ_PARALLEL=N runs N targets at a
# time (default 1). Allocations above VELK_FUZZ_MAX_ALLOC_MB (default 64)
# fail, as on a small machine: the readers allocate what a header announces,
# and inputs announcing hundreds of megabytes would otherwise dominate the
# run. Exits non-zero when any target found something.
set -euo pipefail
cd "$(dirname "$0")/.."

if [ $# -lt 1 ] || ! [[ "$1" =~ ^[0-9]+$ ]]; then
    echo "usage: scripts/fuzz.sh <seconds> [target...]" >&2
    exit 2
fi
seconds=$1
shift
# Every target, and the test data folders that seed it.
all=()
declare -A folders
while read -r name rest; do
    [[ -z $name || $name == \#* ]] && continue
    all+=("$name")
    folders[$name]=$rest
done <fuzz/targets.txt
targets=("$@")
[ ${#targets[@]} -eq 0 ] && targets=("${all[@]}")
for t in "${targets[@]}"; do
    if [ -z "${folders[$t]+known}" ]; then
        echo "unknown target: $t (known: ${all[*]})" >&2
        exit 2
    fi
done
parallel=${VELK_FUZZ_PARALLEL:-1}
export ASAN_OPTIONS="allocator_may_return_null=1:max_allocation_size_mb=${VELK_FUZZ_MAX_ALLOC_MB:-64}${ASAN_OPTIONS:+:$ASAN_OPTIONS}"

build=${VELK_FUZZ_BUILD:-build/fuzz}
cmake --preset fuzz -B "$build" >/dev/null
cmake --build "$build" --parallel 2 --target "${targets[@]/%/_fuzz}"

mkdir -p "$build/artifacts" "$build/logs"

run_one() {
    local t=$1
    local bin="$build/fuzz/${t}_fuzz"
    local work="$build/corpus/$t"
    local log="$build/logs/$t.log"
    local dict=()
    [ -f "fuzz/dict/$t.dict" ] && dict=(-dict="fuzz/dict/$t.dict")
    local seeds=("fuzz/corpus/$t")
    for f in ${folders[$t]}; do seeds+=("tests/data/$f"); done
    mkdir -p "$work"
    # The first directory receives new inputs; the checked-in seeds are read only.
    if "$bin" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2560 -max_len=16384 \
        -print_final_stats=1 -artifact_prefix="$build/artifacts/$t-" "${dict[@]}" \
        "$work" "${seeds[@]}" >"$log" 2>&1; then
        local runs rate
        runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
        rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
        printf '%-14s ok      %10s runs %8s exec/s  corpus %s\n' "$t" "$runs" "$rate" \
            "$(find "$work" -type f | wc -l)"
    else
        printf '%-14s FAILED  (log: %s)\n' "$t" "$log"
        grep -E 'ERROR|SUMMARY|fuzz check failed|Test unit written' "$log" | head -20 || true
        return 1
    fi
}

status=0
running=0
for t in "${targets[@]}"; do
    run_one "$t" &
    running=$((running + 1))
    if [ "$running" -ge "$parallel" ]; then
        wait -n || status=1
        running=$((running - 1))
    fi
done
while [ "$running" -gt 0 ]; do
    wait -n || status=1
    running=$((running - 1))
done
exit $status
