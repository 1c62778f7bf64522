#!/usr/bin/env bash
# Builds the program and runs its main jobs on real data: from thirteen pictures alone a calibrated
# camera, oriented photos, points on a board and a picture of the board to scale, and two measurements
# of the same stations joined into one system.
set -euo pipefail
cd "$(dirname "$0")"
source .ci/packages.sh
need_packages "${build_packages[@]}"

# What is configured already, for the tests say, stays as it is and need not be compiled again.
if [ ! -e build/release/build.ninja ]; then
  cmake --preset release -DZU_BUILD_BENCH=OFF -DZU_BUILD_TESTS=OFF -DZU_BUILD_EXAMPLES=OFF >/dev/null
fi
cmake --build build/release -j "${JOBS:-$(nproc)}" --target zu_program
zu=build/release/apps/zu
mkdir -p out

run() {
  echo
  echo "\$ $*"
  "$@"
}

run "$zu" detect board --size 9x6 --square 25 samples/chessboard/left*.jpg -o out/detected.prj \
  --points out/board.coo --overlay out/found
run "$zu" calibrate out/detected.prj --board out/board.coo -o out/oriented.prj
run "$zu" adjust out/oriented.prj --control out/board.coo --estimate c,xh,yh,a1,a2 --unit mm \
  -o out/calibrated.prj --report out/calibration.html --pictures samples/chessboard
run "$zu" measure out/calibrated.prj --plane out/board.coo --check out/board.coo --unit mm \
  -o out/measured.coo --report out/report.html
run "$zu" rectify --image out/calibrated.prj --photo 1,3 --plane out/board.coo --pixel 0.25 \
  --region -30,-30,230,155 -o out/board.png
run "$zu" transform samples/datum/local.coo --control samples/datum/wgs84.coo -o out/joined.coo

cat <<TXT

Files to open:
  out/found/                what was detected in the pictures
  out/calibration.html      the camera and the photos: verdict, network, residuals, distortion
  out/report.html           the measurement: verdict, residuals of each photo, plan, camera
  out/measured.coo          photo, id, X, Y, Z of every measured point [mm]
  out/board.png             the board to scale, four pixels a mm, from two pictures
  out/joined.coo            the stations of the first file in the system of the second
  samples/chessboard/README.md, samples/datum/README.md   where the data come from
TXT
