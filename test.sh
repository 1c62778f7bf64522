#!/usr/bin/env bash
# Builds the library and the program in release and runs all tests. Run as root on Debian, it installs
# what is missing. Ends with the lines of ctest.
set -euo pipefail
cd "$(dirname "$0")"
source .ci/packages.sh
need_packages "${test_packages[@]}"

jobs=${JOBS:-$(nproc)}
cmake --preset release -DZU_BUILD_BENCH=OFF -DZU_BUILD_EXAMPLES=OFF >/dev/null
cmake --build build/release -j "$jobs"
ctest --test-dir build/release -j "$jobs" --output-on-failure --no-tests=error </dev/null
