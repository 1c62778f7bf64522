// The network of a project: its oriented photos with their cameras and measured pixels, with
// control and start positions from coordinate files.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "zu/adjust/network.h"

class ZuPointList;
class ZuProject;

struct ZuNetworkInput {
  // Standard deviation of a measured coordinate along both axes, where the project tells none of
  // the point's own; in pixels, or in mm.
  double dSigma = 0.1;
  bool bSigmaInPixels = true;
  // Parameters of the cameras that are estimated, as bits 1 << ZuNetworkC ...; those that a
  // camera's mode has not are passed over.
  unsigned uEstimate = 0;
  // One camera for all photos of a camera id, as a rule; else one a photo.
  bool bCameraPerPhoto = false;
};

// An image point's place in the project, parallel to ZuNetwork::images.
struct ZuNetworkPixel {
  double x = 0.0, y = 0.0;          // measured [px]
  std::array<double, 4> adSlope{};  // of Biko by pixels, by rows [mm/px]
};

struct ZuNetworkOfProject {
  ZuNetwork network;
  std::vector<ZuNetworkPixel> pixels;
  std::vector<std::string> photoNames;  // parallel to the photos
  std::vector<std::string> warnings;    // what is left out, and why
};

// Control: coordinates of the bits of the control code, all three where a point has none; with the
// standard deviations m_dDX, m_dDY, m_dDZ, 0 for what is fixed. Start positions of the other
// points: of the list, else of the project's object points, else where their rays come closest to
// each other. A point of neither list that is measured in fewer than two oriented photos is left
// out.
ZU_ADJUST_API ZuNetworkOfProject ZuMakeNetwork(const ZuProject& project, const ZuPointList& control,
                                               const ZuPointList& approximations,
                                               const ZuNetworkInput& input);

// A residual of an image point carried to the axes of the pixels: from mm, y up, to px.
ZU_ADJUST_API std::array<double, 2> ZuToPixels(const ZuNetworkPixel& pixel, const double* pdMm);

// With more photos than these, the covariances of photos with each other are left out of a project:
// they grow with the square of their number.
inline constexpr int kZuMostPairedPhotos = 50;

// Puts the adjusted orientations and cameras into the project: into the photos that were used, and
// into the project's cameras of the same id. Covariances of photos with their cameras, of cameras,
// and of photos that have a point in common take the place of those it had (none without
// statistics). Measurements and all else stay.
ZU_ADJUST_API void ZuStoreNetwork(const ZuNetwork& network, const ZuNetworkResult& result,
                                  ZuProject* pProject);
