#!/usr/bin/env bash
# Builds the program and runs its main job on the samples: two measurements of the same stations are
# joined into one system.
set -euo pipefail
cd "$(dirname "$0")"
source .ci/packages.sh
need_packages "${build_packages[@]}"

cmake --preset release -DZU_BUILD_BENCH=OFF -DZU_BUILD_TESTS=OFF -DZU_BUILD_EXAMPLES=OFF >/dev/null
cmake --build build/release -j "${JOBS:-$(nproc)}" --target zu_program
zu=build/release/apps/zu
mkdir -p out

run() {
  echo
  echo "\$ $*"
  "$@"
}

run "$zu" transform samples/datum/local.coo --control samples/datum/wgs84.coo -o out/joined.coo

cat <<TXT

Files to open:
  samples/datum/README.md   the seven stations, and the figures published for them
  out/joined.coo            the stations of the first file in the system of the second
TXT
