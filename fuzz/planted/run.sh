#!/usr/bin/env bash
# Plants one fault after the other into a copy of the project and tells whether its fuzz target finds it:
#
#   fuzz/planted/run.sh [TARGET...]
#
# The fault of a target is fuzz/planted/TARGET.patch; its first line tells what is wrong then. Each target
# starts as fuzz/run.sh starts it, without a corpus of earlier runs. Prints the executions up to the
# finding, which the target without the fault must take. Ends with 1 if a fault is not found, a target has
# none, or a patch does not apply.
#
#   SECONDS_EACH   seconds that a target may take (60)
#   SCRATCH        folder of the copy, kept for the next time (a temporary one, removed)
set -uo pipefail
cd "$(dirname "$0")/../.."
root=$PWD
each=${SECONDS_EACH:-60}
scratch=${SCRATCH:-$(mktemp -d)}
[ -n "${SCRATCH:-}" ] || trap 'rm -rf "$scratch"' EXIT
if [ $# -eq 0 ]; then
  for target in fuzz/*.cpp; do
    target=$(basename "$target" .cpp)
    [ "$target" = replay ] || set -- "$@" "$target"
  done
fi

mkdir -p "$scratch"
git ls-files -z --cached --others --exclude-standard | while IFS= read -r -d '' file; do
  [ -f "$file" ] && printf '%s\0' "$file"
done | xargs -0 cp --parents --preserve=mode,timestamps -t "$scratch"
cd "$scratch" || exit 1
# A kept copy was last built with a fault in these: the files have their old times again.
sed -n 's|^+++ b/||p' fuzz/planted/*.patch | sort -u | xargs touch
cmake --preset fuzz -DZU_WERROR=OFF >/dev/null || exit 1
cmake --build build/fuzz --target zu >/dev/null || exit 1

build() {
  cmake --build build/fuzz --target "fuzz_$1" >build.log 2>&1 && return
  tail -n 20 build.log >&2
  return 1
}

# Looks for the fault of a target, which is planted.
look_for() {
  local target=$1 history=build/fuzz/campaign/history.tsv
  rm -rf build/fuzz/campaign
  build "$target" || { echo "does not build"; return 1; }
  if FUZZ_NO_BUILD=1 FUZZ_FINDINGS=1 JOBS=1 fuzz/run.sh "${each}s" "$target" >run.log 2>&1; then
    echo "NOT FOUND in $(tail -n 1 "$history" | cut -f 4) executions"
    return 1
  fi
  if ! "./sound_$target" build/fuzz/campaign/findings/"$target"-[!0-9]*-* >run.log 2>&1; then
    echo "found a fault that was not planted"
    return 1
  fi
  echo "found after $(tail -n 1 "$history" | cut -f 4) executions"
}

failed=0
for target; do
  patch=$root/fuzz/planted/$target.patch
  if [ ! -f "$patch" ]; then
    result="no fault planted"
    failed=1
  elif ! build "$target" || ! cp "build/fuzz/fuzz/fuzz_$target" "sound_$target"; then
    result="does not build"
    failed=1
  elif ! patch -p1 -F2 --no-backup-if-mismatch <"$patch" >patch.log 2>&1; then
    cat patch.log >&2
    result="the patch does not apply"
    failed=1
  else
    result=$(look_for "$target") || failed=1
    patch -R -p1 -F2 --no-backup-if-mismatch <"$patch" >/dev/null
  fi
  printf '%-18s %-36s %s\n' "$target" "$result" "$(head -n 1 "$patch" 2>/dev/null)"
done
exit $failed
