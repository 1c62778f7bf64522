// Numbers of targets from what is known roughly: where their points stand, and where the photo was
// taken.
#pragma once

#include <string>
#include <vector>

#include "zu/image/export.h"
#include "zu/image/target.h"
#include "zu/numerics/matrix.h"
#include "zu/numerics/vector.h"

class ZuPhoto;
class ZuPointList;

struct ZuNumberingOptions {
  // How far a target may lie from where the approximate orientation has it, as a part of the
  // picture's diagonal; some degrees and per cent of the distance are all right.
  double m_dReach = 0.15;
  // Diameter of the targets' disks in units of the object; above 0: the numbered targets are moved
  // from the centre of the ellipse to the image of the disk's centre.
  double m_dDiameter = 0.0;
};

struct ZuNumbering {
  int m_iExpected = 0;  // points that the photo should show
  int m_iNumbered = 0;
  // Distances from the points' places by the pose found, moved as the points around them are
  // [pixel].
  double m_dRms = 0.0;
  // The pose that fits: rotation (3 x 3) and position, as those of the photo.
  ZuMatrix m_Rotation{3, 3};
  ZuVector m_Position{3};
  // The longest way from a centre of an ellipse to the image of its disk's centre, by the diameters
  // that the axes tell, or by the one given [pixel].
  double m_dLargestOffset = 0.0;
  std::string m_strText;  // why nothing was numbered; empty: it was
  bool IsGood() const { return m_strText.empty(); }
};

// Gives targets the ids of the points, others keep 0. The photo has a camera, transformations and
// an approximate orientation; distortion may be unknown. Tried are all poses that carry a point
// from the middle of the photo onto a target within reach, each grown from there over its
// neighbours; the one with the most points counts. Nothing is numbered, and the text tells it,
// where fewer than half of the points that the photo should show, or fewer than six, are found, or
// where another numbering has as many but for three: a regular grid of targets that goes on beyond
// the picture decides nothing.
ZU_IMAGE_API ZuNumbering ZuNumberTargets(const ZuPhoto& photo, const ZuPointList& points,
                                         const ZuNumberingOptions& options,
                                         std::vector<ZuTarget>* pTargets);
