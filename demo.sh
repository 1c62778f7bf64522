#!/usr/bin/env bash
# Builds the program and runs its main jobs on real data: from the measured pixels of thirteen photos
# alone a calibrated camera, oriented photos and points on a board, and two measurements of the same
# stations joined into one system.
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

run "$zu" adjust samples/chessboard/pixels.prj --control samples/chessboard/board.coo \
  --estimate c,xh,yh,a1,a2 --unit mm -o out/calibrated.prj --report out/calibration.html
run "$zu" measure out/calibrated.prj --plane samples/chessboard/board.coo \
  --check samples/chessboard/board.coo --unit mm -o out/measured.coo --report out/report.html
run "$zu" transform samples/datum/local.coo --control samples/datum/wgs84.coo -o out/joined.coo

cat <<TXT

Files to open:
  out/calibration.html      the camera and the photos: verdict, network, residuals, distortion
  out/report.html           the measurement: verdict, residuals of each photo, plan, camera
  out/measured.coo          photo, id, X, Y, Z of every measured point [mm]
  out/joined.coo            the stations of the first file in the system of the second
  samples/chessboard/README.md, samples/datum/README.md   where the data come from
TXT
