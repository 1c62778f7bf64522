#!/usr/bin/env bash
# Fuzzes the readers of the library:
#
#   fuzz/run.sh MINUTES [TARGET...]      20s in the place of MINUTES are 20 seconds
#
# Each target starts with its seeds (samples/, fuzz/seeds, fuzz/regression, fuzz/dictionaries) and
# goes on with the corpus of earlier runs, which stays under build/fuzz/campaign. A target that
# finds something is started again until its time is over. Prints a table of this run, and writes
# the sums of all runs to build/fuzz/campaign/summary.json. Ends with 1 if anything was found.
#
#   JOBS           targets at a time (number of processors)
#   FUZZ_TIMEOUT   seconds that one input may take (20)
#   FUZZ_FINDINGS  findings after which a target is left (10)
#   FUZZ_SEED      of the random choices, so that a run can be repeated (another each time)
#   FUZZ_NO_BUILD  not empty: takes the targets as they are
set -uo pipefail
cd "$(dirname "$0")/.."

if [ $# -lt 1 ]; then
  sed -n '2,/^set/s/^# \{0,1\}//p' "$0"
  exit 2
fi
case $1 in
  *s) seconds=${1%s} ;;
  *) seconds=$(awk -v m="$1" 'BEGIN { printf "%d", m * 60 }') ;;
esac
shift
jobs=${JOBS:-$(nproc)}
timeout=${FUZZ_TIMEOUT:-20}
binaries=build/fuzz/fuzz
campaign=build/fuzz/campaign
history=$campaign/history.tsv
max_length=12000  # bytes of an input: room for a line longer than any line buffer
seed_length=3000  # of a sample; what follows in a large one is more of the same
grown_length=5000 # of one more seed: beyond the blocks by which a build for fuzzing reads
max_findings=${FUZZ_FINDINGS:-10}  # of a target in one run

if [ -z "${FUZZ_NO_BUILD:-}" ]; then
  source .ci/packages.sh
  need_packages "${fuzz_packages[@]}"
  cmake --preset fuzz >/dev/null && cmake --build build/fuzz -j "$(nproc)" >/dev/null || exit 1
fi
if [ $# -eq 0 ]; then
  for binary in "$binaries"/fuzz_*; do [ -x "$binary" ] && set -- "$@" "${binary##*/fuzz_}"; done
fi
mkdir -p "$campaign"

# The samples that are good inputs of a target.
samples() {
  case $1 in
    project | program) echo samples/*/*.prj ;;
    camera) echo samples/*/*.cam ;;
    plane) echo samples/*/*.pln ;;
    rectification | project_json) echo samples/older/*.prj ;;
    transformation) echo samples/chessboard/left.prj ;;
    reseau) echo samples/chessboard/*.txt ;;
    keyword_file | point_rows) echo samples/older/*.prj samples/planes/*.pln ;;
    coordinate_file) echo samples/*/*.coo samples/datum/names.txt samples/gsi/*.gsi samples/clouds/*.p* ;;
    gsi_file) echo samples/gsi/*.gsi ;;
    pts_file) echo samples/clouds/*.pts samples/clouds/*.xyz ;;
    ply_file) echo samples/clouds/*.ply ;;
  esac
}

# Copies seeds and samples, cut to length, into one folder.
stage_seeds() {
  local file seeds=$campaign/seeds/$1
  rm -rf "$seeds"
  mkdir -p "$seeds" "$campaign/corpus/$1" "$campaign/findings"
  for file in $(samples "$1"); do head -c "$seed_length" "$file" >"$seeds/$(basename "$file")"; done
  for file in fuzz/seeds/"$1"/* fuzz/regression/"$1"/*; do
    [ -f "$file" ] && cp "$file" "$seeds"
  done
  file=$(find fuzz/seeds/"$1" -type f -size +0 | sort | head -n 1)
  [ -n "$file" ] && yes "$file" | xargs cat 2>/dev/null | head -c $grown_length >"$seeds/grown"
}

# One start of a target; adds a line to the history: target, seconds, processor seconds, inputs,
# edges, findings.
start() {
  local target=$1 left=$2 dictionary=fuzz/dictionaries/$1.dict log=$campaign/$1.log
  local code edges inputs arguments=() TIMEFORMAT='%R %U'
  [ -f "$dictionary" ] && arguments+=("-dict=$dictionary")
  {
    time nice -n "${FUZZ_NICE:-0}" "$binaries/fuzz_$target" "${arguments[@]}" \
      -max_total_time="$left" -timeout="$timeout" -max_len=$max_length -rss_limit_mb=2048 \
      -malloc_limit_mb=256 -report_slow_units=5 -print_final_stats=1 -seed="${FUZZ_SEED:-0}" \
      -artifact_prefix="$campaign/findings/$target-" \
      "$campaign/corpus/$target" "$campaign/seeds/$target" >"$log" 2>&1
    code=$?
  } 2>"$log.time"
  grep -q 'libFuzzer: run interrupted' "$log" && code=0  # by hand
  inputs=$(sed -nE 's/^#([0-9]+)[[:space:]].*/\1/p' "$log" | tail -n 1)
  edges=$(sed -nE 's/.* cov: ([0-9]+) .*/\1/p' "$log" | tail -n 1)
  printf '%s\t%s\t%s\t%s\t%s\t%s\n' "$target" $(tail -n 1 "$log.time") "${inputs:-0}" "${edges:-0}" \
    $((code != 0)) >>"$history"
  if [ $code -ne 0 ]; then
    cp "$log" "$campaign/findings/$target-$(date +%s).log"
    echo "== finding of $target, $campaign/findings" >&2
    tail -n 30 "$log" >&2
  fi
  return $code
}

run_target() {
  local target=$1 end=$((SECONDS + seconds)) found=0
  [ -x "$binaries/fuzz_$target" ] || { echo "no target $target" >&2; return 1; }
  stage_seeds "$target"
  while [ $SECONDS -lt $end ] && [ $found -lt $max_findings ]; do
    start "$target" $((end - SECONDS)) || found=$((found + 1))
  done
  return $((found > 0))
}

# Sums of the lines of the history from a line on, as a table or as JSON.
sums() {
  tail -n +"$1" "$history" 2>/dev/null | awk -F '\t' -v form="$2" '
    { if (!($1 in inputs)) order[++n] = $1
      wall[$1] += $2; cpu[$1] += $3; inputs[$1] += $4; found[$1] += $6
      if ($5 > edges[$1]) edges[$1] = $5 }
    END {
      if (form == "table") printf "%-18s %9s %9s %12s %9s %7s %9s\n", "target", "wall min", "cpu min", "executions", "per cpu s", "edges", "findings"
      else print "["
      for (i = 1; i <= n; ++i) {
        t = order[i]; rate = cpu[t] > 0 ? inputs[t] / cpu[t] : 0
        if (form == "table") printf "%-18s %9.1f %9.1f %12d %9.0f %7d %9d\n", t, wall[t] / 60, cpu[t] / 60, inputs[t], rate, edges[t], found[t]
        else printf "  {\"target\": \"%s\", \"wall_minutes\": %.1f, \"cpu_minutes\": %.1f, \"executions\": %d, \"edges\": %d, \"findings\": %d}%s\n", t, wall[t] / 60, cpu[t] / 60, inputs[t], edges[t], found[t], i < n ? "," : ""
      }
      if (form != "table") print "]"
    }'
}

touch "$history"
first=$(($(wc -l <"$history") + 1))
TMPDIR=$(mktemp -d "$([ -w /dev/shm ] && echo /dev/shm || echo /tmp)/zu_fuzz_XXXXXX")
export TMPDIR
# Variables of functions that have returned are watched. What the sanitizer keeps of freed memory and of
# each allocation's callers: little is enough to find a fault, and more slows the targets and fills
# memory over hours.
export ASAN_OPTIONS=detect_stack_use_after_return=1:quarantine_size_mb=64:malloc_context_size=12${ASAN_OPTIONS:+:$ASAN_OPTIONS}
# Waiting threads would take the time of the other targets.
export OMP_THREAD_LIMIT=1
trap 'rm -rf "$TMPDIR"' EXIT
failed=0
running=0
for target; do
  while [ $running -ge "$jobs" ]; do
    wait -n || failed=1
    running=$((running - 1))
  done
  run_target "$target" &
  running=$((running + 1))
done
while [ $running -gt 0 ]; do
  wait -n || failed=1
  running=$((running - 1))
done
sums "$first" table
sums 1 json >"$campaign/summary.json"
exit $failed
