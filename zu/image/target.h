// Circular targets in a picture: dark disks on bright ground or bright ones on dark.
#pragma once

#include <vector>

#include "zu/image/detected_point.h"
#include "zu/image/export.h"

class ZuImage;

// A disk is seen as an ellipse; its place is the ellipse's centre, which is not the image of the
// disk's centre (ZuCircleOffset).
struct ZuTarget : ZuDetectedPoint {
  double m_dA = 0.0;      // longer semi-axis [pixel]
  double m_dB = 0.0;      // shorter one
  double m_dAngle = 0.0;  // of the longer one, from x towards y (down) [rad]
  double m_dContrast =
      0.0;  // ground less disk in grey values of the picture; below 0: a bright disk
};

struct ZuTargetOptions {
  bool m_bBright = false;         // bright disks on dark ground
  double m_dLeastDiameter = 8.0;  // along the shorter axis [pixel]
  double m_dMostDiameter = 200.0;
  // Of disk and ground, as a part of the range of grey values (255, 65535).
  double m_dLeastContrast = 0.06;
  double m_dSigmaFloor = kZuSigmaFloor;  // of the standard deviations [pixel]
};

// Finds all ellipses of one grey on another that keep to the options, in rows from the top and in
// them from the left, with id 0. Edges lie half way between the grey of the disk and that of the
// ground around it, to a fraction of a pixel; an ellipse is fitted to them, weighted by the square
// of their slope, and from its residuals come the standard deviations of the centre. An ellipse cut
// by the border of the picture is left out. The time grows with the picture.
ZU_IMAGE_API std::vector<ZuTarget> ZuDetectTargets(const ZuImage& image,
                                                   const ZuTargetOptions& options = {});
