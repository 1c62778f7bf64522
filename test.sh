#!/usr/bin/env bash
# Builds everything and runs all tests: the release build (shared library), then the build with address
# and undefined behaviour sanitizers (static library). Run as root on Debian, it installs what is
# missing. Ends with the lines of ctest.
set -euo pipefail
cd "$(dirname "$0")"
source .ci/packages.sh
need_packages "${test_packages[@]}"

jobs=${JOBS:-$(nproc)}
export UBSAN_OPTIONS=print_stacktrace=1
for preset in release asan; do
  echo "== $preset"
  cmake --preset "$preset" -DZU_BUILD_BENCH=OFF >/dev/null
  cmake --build "build/$preset" -j "$jobs"
  ctest --test-dir "build/$preset" -j "$jobs" --output-on-failure --no-tests=error </dev/null
done
