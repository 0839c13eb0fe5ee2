#!/usr/bin/env bash
# Builds the optimised benchmarks and runs them all: five repetitions of every
# case (medians, means and spreads reported), then the peak memory of a
# 4096 x 4096 computation. Extra arguments go to velk-bench, for example
# --benchmark_filter=BM_LicDefaults.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset release >/dev/null
cmake --build --preset release --target velk-bench velk-lic-memory
build/release/bench/velk-bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true "$@"
build/release/bench/velk-lic-memory 4096
