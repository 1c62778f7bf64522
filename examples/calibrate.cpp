// A camera from photos of a flat board: photos oriented from the board's points, then camera and
// orientations adjusted at once.
#include <zu/adjust/network_project.h>
#include <zu/adjust/orientation_project.h>
#include <zu/points/point_list.h>
#include <zu/project/project.h>

#include <cstdio>

int main() {
  // Measured pixels and a camera constant from the lens; no orientation, no distortion.
  ZuProject project;
  if (!project.Read("samples/chessboard/pixels.prj")) return 3;
  const eZuPointRWMask columns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                    eZuPointRWEnd};
  ZuPointList board;
  if (board.ReadFile("samples/chessboard/board.coo", columns) < 4) return 3;
  if (ZuOrientProject(&project, board, {}).CountGood() < 13) return 4;

  ZuNetworkInput input;
  for (const int k : {ZuNetworkC, ZuNetworkXh, ZuNetworkYh, ZuNetworkA1, ZuNetworkA2}) {
    input.uEstimate |= 1U << k;
  }
  const ZuNetworkOfProject made = ZuMakeNetwork(project, board, {}, input);
  const ZuNetworkResult result = made.network.Adjust({});
  if (result.status != ZuAdjustStatus::Good) {
    std::printf("%s\n", result.strText.c_str());
    return 4;
  }
  std::printf("sigma0 %.3f of 0.1 px\n", result.dSigma0);
  for (const int k : {ZuNetworkC, ZuNetworkXh, ZuNetworkYh, ZuNetworkA1, ZuNetworkA2}) {
    std::printf("%-2s %12.8f +- %.8f\n", ZuNetworkParameterName(k),
                ZuNetworkParameterValue(result.cameras[0], k),
                result.cameraSd[0][static_cast<size_t>(k)]);
  }
  ZuStoreNetwork(made.network, result,
                 &project);  // camera and orientations; Export writes the file
  return 0;
}
