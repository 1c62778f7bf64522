#!/usr/bin/env bash
# Runs the benchmarks of the release build (cmake --preset release && cmake --build build/release).
#
#   bench/run.sh [NAME...]   the named ones (all), the least of seven repetitions counts
#   bench/run.sh --once      one short round of all, to see that they work
set -euo pipefail
cd "$(dirname "$0")/.."
programs=build/release/bench

options=(--benchmark_repetitions=7 --benchmark_enable_random_interleaving=true
         --benchmark_report_aggregates_only=false)
if [ "${1:-}" = --once ]; then
  options=(--benchmark_min_time=0.01)
  shift
fi

if [ $# -eq 0 ]; then
  set -- $(cd "$programs" && ls | sed -n 's/^bench_\([a-z0-9_]*\)$/\1/p')
fi
for name in "$@"; do
  echo "== $name"
  "$programs/bench_$name" "${options[@]}"
done
