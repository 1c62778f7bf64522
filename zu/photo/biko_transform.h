// The prepared conversion of coordinates between two systems of one photo.
//
//   Digi --pre--> Pre --main--> Biko --Adjust--> Adjusted <--collinearity-- Object
//
// Digi: pixels, y may count downwards. Pre: as the photo's pre-transformation gives them. Biko: mm
// in the camera's reseau system, distorted. Adjusted: mm, without distortion, from the principal
// point. Set multiplies the plane transformations into one 3x3 matrix, so that a point costs one
// product; a polynomial main transformation runs around that matrix.
//
// It keeps copies of the transformations and refers to the photo for camera and orientation: after
// a change of a transformation Set is called again. The photo must outlive it. One thread at a time
// where the camera's inverse table takes part.
#pragma once

#include <limits>

#include "zu/export.h"
#include "zu/numerics/matrix.h"
#include "zu/numerics/vector.h"
#include "zu/photo/reseau_trafo.h"

class ZuPhoto;
class ZuPoint;
class ZuPoint3d;
class ZuPointList;

// From and to. Any other value converts nothing.
enum eConvertBikoMode : int {
  eDigiToPre = 1,
  eDigiToBiko = 2,
  ePreToBiko = 3,
  eDigiToAdjusted = 4,
  eBikoToAdjusted = 5,
  eBikoToDigi = 6,
  ePreToDigi = 7,
  eBikoToPre = 8,
  eAdjustedToBiko = 9,
  eAdjustedToDigi = 10,
  eObjectToAdjusted = 11,
  eObjectToBiko = 12,
  eObjectToDigi = 13
};

class ZU_API ZuBikoTransform {
 public:
  ZuBikoTransform() = default;
  ZuBikoTransform(const ZuPhoto* pPhoto, eConvertBikoMode eMode, bool bFlipY) {
    Set(pPhoto, eMode, bFlipY);
  }
  ZuBikoTransform(const ZuBikoTransform&) = default;
  virtual ~ZuBikoTransform() = default;
  ZuBikoTransform& operator=(const ZuBikoTransform&) = default;

  // Prepares a conversion. With bFlipY the y of Digi counts the other way than the photo's
  // transformations take it: y is turned to height - y, height that of the image with one added.
  // A singular transformation gives what ZuMatrix::Invert leaves.
  void Set(const ZuPhoto* pPhoto, eConvertBikoMode eMode, bool bFlipY);

  // Exact conversion of the whole chain, off by default and kept by Set: the camera's AdjustExact
  // and InvAdjustExact take the place of Adjust and its table, a polynomial main transformation is
  // applied by eDigiToAdjusted too and inverted by Newton's method from the stored inverse, and
  // the collinearity takes |c|, as rays do. Forth and back then agree to 1e-12 mm. Transform is
  // false, in every mode, where the camera refuses the point or no inverse of a polynomial is
  // found (coordinates as the last good step gave them), and for an object point at the height of
  // the projection centre; the rest stays as told there. Any number of threads.
  void SetExact(bool bExact) { m_bExact = bExact; }
  bool IsExact() const { return m_bExact; }

  // Converts in place; z is read for Object systems only and then set to 0. True, also for an
  // unknown mode and where the camera refuses a point, whose coordinates then stay as the last step
  // gave them; but false
  //   - to Biko and Digi from Object where the camera's inverse refuses the point, which is then
  //     left in Adjusted;
  //   - from Object with bFlipY, in all three modes, for a point nearer than one pixel to the
  //     border of the image or outside; its coordinates are changed all the same;
  //   - from Object where a round picture (ZuPhoto::IsRound) has no image of the point, which
  //   stays.
  //
  // Required: eDigiToAdjusted leaves a polynomial main transformation out, unlike eDigiToBiko;
  // ZuPhoto::ConvertBiko applies it. Stored measurements were made with both.
  bool Transform(double* x, double* y, double* z) const;
  bool Transform(ZuPoint3d& point) const;
  bool Transform(ZuVector& vector) const;
  bool Transform(ZuPoint* pPoint) const;
  // Each point, in list order; results are dropped. Null does nothing.
  void Transform(ZuPointList* pList) const;

  // Rough test that an object point lies before the camera: the direction from the point to the
  // projection centre is at most 120 degrees from the viewing axis. True for a round picture.
  bool IsInPhotoView(double x, double y, double z) const;

  bool IsPolyTrafo() const { return m_bPolyTrafo; }
  const ZuPhoto* GetPhoto() const { return m_pPhoto; }
  eConvertBikoMode GetMode() const { return m_eMode; }

 protected:
  struct IntBox {
    int iMinX = std::numeric_limits<int>::max();
    int iMinY = std::numeric_limits<int>::max();
    int iMaxX = std::numeric_limits<int>::min();
    int iMaxY = std::numeric_limits<int>::min();
  };

  void SetMatrix(const ZuMatrix& pre, const ZuMatrix& main);
  void Flip(double* y) const {
    if (m_bFlipY) *y = m_dHeight - *y;
  }
  bool ToPlane(double* x, double* y, double* z) const;
  bool FromObject(double* x, double* y, double* z) const;
  bool Correct(double* x, double* y) const;    // Biko to Adjusted
  bool Uncorrect(double* x, double* y) const;  // Adjusted to Biko
  bool InvertPolynomial(double* x, double* y) const;
  bool SolvePolynomial(double* x, double* y) const;

  const ZuPhoto* m_pPhoto = nullptr;  // not owned
  ZuMatrix m_Matrix = ZuMatrix(3, 3);
  bool m_bPolyTrafo = false;
  ZuReseauTrafo m_ForwardTrafo;
  ZuReseauTrafo m_InverseTrafo;
  eConvertBikoMode m_eMode = static_cast<eConvertBikoMode>(0);
  bool m_bFlipY = false;
  bool m_bExact = false;
  double m_dWidth = 0.0;  // of the image, one added [pixels]
  double m_dHeight = 0.0;
  ZuVector m_ViewDirection = ZuVector(3);  // unit third axis of the image system in object space
  IntBox m_IntBox;
};
