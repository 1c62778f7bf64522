// Calibration of a camera from photos of a board whose points are known.
//
//   ZuProjectCalibration found = ZuCalibrateProject(&project, board, options);
//   if (found.result.status == ZuAdjustStatus::Good) {
//     ZuStoreNetwork(found.made.network, found.result, &project);
//   }
//
// The photos are oriented from the board without approximations, then cameras and orientations are
// adjusted to it. A camera without constant starts from the size of the image.
#pragma once

#include <string>
#include <vector>

#include "zu/adjust/export.h"
#include "zu/adjust/network_project.h"
#include "zu/adjust/orientation_project.h"

class ZuPointList;
class ZuProject;

struct ZuCalibrationOptions {
  // Standard deviation of a measured coordinate, along both axes; in pixels, or in mm.
  double dSigma = 0.1;
  bool bSigmaInPixels = true;
  // The camera's mode, 0, 2 or 3; -1 as the cameras have it, 2 where there is none.
  int iMode = -1;
  // Parameters that are estimated, as bits 1 << ZuNetworkC ...; 0: c, xh, yh, radial, affine and
  // tangential ones, as many as the photos decide.
  unsigned uEstimate = 0;
  ZuTestOptions test;
};

struct ZuProjectCalibration {
  ZuProjectOrientation orientation;
  ZuNetworkOfProject made;  // its network as it was adjusted last
  ZuNetworkResult result;
  unsigned uEstimated = 0;  // parameters, as bits
  // What was assumed, and which parameters the photos do not decide.
  std::vector<std::string> notes;
};

// Puts start values of cameras and the orientations into the project, the result only where it is
// stored. All photos are oriented anew. Where a set of parameters is not decided, fewer are
// estimated and a note says so; the status is not good where not even c can be.
ZU_ADJUST_API ZuProjectCalibration ZuCalibrateProject(ZuProject* pProject, const ZuPointList& board,
                                                      const ZuCalibrationOptions& options = {});
