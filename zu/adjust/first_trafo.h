// The first transformation of a photo, from pixels to the system of its reseau, found from crosses
// or fiducial marks that were measured in the picture (K. Kraus, "Photogrammetry", 2007, on
// interior orientation).
//
//   measured pixel  --pre-transformation of the photo-->  --ZuFirstTrafo-->  nominal cross [mm]
//
// The pre-transformation stays: where pixels count downwards, or a film was digitised in parts, it
// holds what is known. Without one the new transformation takes pixels as they are, and all kinds
// but Helmert's mirror them where that fits.
#pragma once

#include <vector>

#include "zu/adjust/export.h"
#include "zu/adjust/trafo2d_fit.h"
#include "zu/points/point_list.h"

class ZuPhoto;
class ZuReseauFile;

struct ZuFirstTrafoOptions {
  ZuTrafo2dKind kind = ZuTrafo2dKind::Affine;  // Congruence is no first transformation
  // Standard deviation of the pixels of crosses that tell none in m_dDX, m_dDY; 0: not told.
  double dPixelSigma = 0.0;
  ZuTestOptions tests;
};

struct ZU_ADJUST_API ZuFirstTrafo {
  // From the photo's pre-system to the reseau's; residuals are transformed less nominal [mm], in
  // the order of `common`.
  ZuTrafo2dFit fit;
  std::vector<unsigned> common;       // crosses measured and nominal
  std::vector<unsigned> notNominal;   // measured, but not in the reseau
  std::vector<unsigned> notMeasured;  // in the reseau alone, corners of the picture left aside
  // Of a polynomial: from the reseau's system back, fitted over the picture, and the farthest it
  // misses a point of that grid [of the pre-system, a pixel as a rule].
  ZuTrafo2d inverse;
  double dInverseError = 0.0;

  bool IsGood() const { return fit.eStatus == ZuAdjustStatus::Good; }
};

// Crosses and pixels are joined by id; of equal ids the first counts. Corners of the picture
// (control code 2) count where they were measured. Cost: that of ZuFitTrafo2d.
ZU_ADJUST_API ZuFirstTrafo ZuFitFirstTrafo(const ZuPhoto& photo, const ZuPointList& pixels,
                                           const ZuReseauFile& reseau,
                                           const ZuFirstTrafoOptions& options = {});

// Gives a good transformation to the photo as its main one, a polynomial with its inverse, and the
// reseau's name and sub id. What the photo keeps of Bikos is derived anew, but for a pixel size
// that was asked for before. False, photo untouched, otherwise.
ZU_ADJUST_API bool ZuStoreFirstTrafo(const ZuFirstTrafo& first, const ZuReseauFile& reseau,
                                     ZuPhoto* pPhoto);
