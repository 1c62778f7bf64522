// What an adjustment told of the photos and cameras of a project, for the steps that come after it:
// covariance matrices, sigma0 included, in the units of the project, mm and radians.
#pragma once

#include <array>
#include <iosfwd>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "zu/export.h"

class ZuReaderObject;

// Covariance matrix of a photo, of a camera, or of one photo (rows) with another (columns).
//
// Of a photo: X0 Y0 Z0 [project unit], the small rotations wx wy wz about its image axes (R becomes
// R exp[w]) [rad], and behind them the parameters of its camera that were estimated [mm, the units
// of the coefficients]. Of a camera: these parameters alone.
struct ZU_API ZuCovariance {
  static constexpr int kOrientation = 6;  // unknowns of an orientation

  unsigned m_uPhoto = 0;   // 0: of a camera
  unsigned m_uWith = 0;    // the other photo; 0: none
  unsigned m_uCamera = 0;  // of a camera
  // "c", "xh", ... in their order; of a photo with another, empty: as in their own matrices.
  std::vector<std::string> m_parameters;
  // Of a photo with another, where both have the same camera, 6 x 6: the rest stands in the matrix
  // of each.
  int m_iRows = 0, m_iColumns = 0;
  std::vector<double> m_matrix;  // row by row

  // PHOTOID 3 PARAMETERS "c xh yh" MATRIX { 9 9 ... }, the content of a COVARIANCE block. Returns
  // 1; what is wrong is told by Fault.
  int Read(ZuReaderObject* pObject);
  std::ostream& Export(std::ostream& os) const;
  // What is wrong with the matrix, and what would be right; both empty where nothing is.
  std::array<std::string, 2> Fault() const;
};

class ZU_API ZuCovarianceList {
 public:
  // Photo, other photo, camera.
  using Key = std::array<unsigned, 3>;
  static Key KeyOf(const ZuCovariance& covariance) {
    return {covariance.m_uPhoto, covariance.m_uWith, covariance.m_uCamera};
  }

  // In place of the one with the same photos, or of the same camera.
  void Set(const ZuCovariance& covariance) { m_all[KeyOf(covariance)] = covariance; }
  bool IsEmpty() const { return m_all.empty(); }
  const std::map<Key, ZuCovariance>& All() const { return m_all; }

  // Null where nothing is told.
  const ZuCovariance* Find(const Key& key) const;
  const ZuCovariance* OfPhoto(unsigned uPhoto) const { return Find({uPhoto, 0, 0}); }
  const ZuCovariance* OfCamera(unsigned uCamera) const { return Find({0, 0, uCamera}); }
  // The whole covariance of one photo's unknowns (rows) with those of another (columns), row by
  // row, whichever of both stands first in the file; of a photo with itself its matrix. Empty where
  // it is not told.
  std::vector<double> Cross(unsigned uPhoto, unsigned uWith) const;

  void Clear() { m_all.clear(); }
  void Erase(const Key& key) { m_all.erase(key); }
  // Whatever names the photo.
  void ErasePhoto(unsigned uPhoto);
  // From the keys to the values.
  void RenumberPhotos(const std::map<unsigned, unsigned>& ids);

 private:
  std::map<Key, ZuCovariance> m_all;
};
