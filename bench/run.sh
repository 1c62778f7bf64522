#!/usr/bin/env bash
# Runs the benchmarks of the release build (cmake --preset release && cmake --build build/release).
#
#   bench/run.sh              all; prints the table of all rows and writes it into docs/performance.md
#   bench/run.sh NAME...      the named ones; prints their rows
#   bench/run.sh --growth     how cost grows with n, to ten million elements; slopes and plot into docs
#   bench/run.sh --growth-networks  the same of networks
#   bench/run.sh --table      no measurement; table, slopes and plot from the last results
#   bench/run.sh --once       one short round of all, to see that they work and that no row is missing
#
# Nine repetitions in random order; the best of each counts, see bench/report/results.h.
set -euo pipefail
cd "$(dirname "$0")/.."
programs=build/release/bench
results=$programs/results
growth=$results/growth.txt
networks=$results/growth_networks.txt
page=docs/performance.md

# Files in memory, so that they tell of the work and not of the disk.
if [ -z "${TMPDIR:-}" ] && [ -w /dev/shm ] &&
   [ "$(df --output=avail -k /dev/shm | tail -n 1)" -gt 4000000 ]; then
  export TMPDIR=/dev/shm
fi

# measure FOLDER OPTION... : runs the benchmarks in $names, one JSON file each.
measure() {
  local folder=$1 name program
  shift
  mkdir -p "$folder"
  for name in $names; do
    program=$programs/bench_$name
    [ -x "$program" ] || program=$programs/peers/bench_$name
    echo "== $name"
    "$program" --benchmark_out="$folder/$name.json" --benchmark_out_format=json "$@"
  done
}

write_table() { "$programs/bench_report" bench/rows.txt "$results" "$page"; }
write_growth() { "$programs/bench_growth" --results "$growth" --table "$page" docs/images/growth.svg; }
write_networks() {
  "$programs/bench_growth" --networks --results "$networks" --table "$page" docs/images/growth_networks.svg
}

names=$(find "$programs" -maxdepth 2 -name 'bench_*' -type f -executable ! -name bench_report \
          ! -name bench_growth \
          -printf '%f\n' | sed 's/^bench_//' | sort)
full=(--benchmark_repetitions=9 --benchmark_min_time=0.15
      --benchmark_enable_random_interleaving=true)
case ${1:-} in
  --once)
    rm -rf "$results-once"
    measure "$results-once" --benchmark_min_time=0.01
    "$programs/bench_growth" --once
    "$programs/bench_report" bench/rows.txt "$results-once"
    ;;
  --table)
    write_table
    write_growth
    ;;
  --growth)
    mkdir -p "$results"
    "$programs/bench_growth" --results "$growth"
    write_growth
    ;;
  --growth-networks)
    mkdir -p "$results"
    "$programs/bench_growth" --networks --results "$networks"
    write_networks
    ;;
  '')
    rm -f "$results"/*.json
    measure "$results" "${full[@]}"
    write_table
    ;;
  *)
    names=$*
    folder=$(mktemp -d)
    trap 'rm -rf "$folder"' EXIT
    measure "$folder" "${full[@]}"
    "$programs/bench_report" bench/rows.txt "$folder"
    mkdir -p "$results"
    cp "$folder"/*.json "$results"
    ;;
esac
