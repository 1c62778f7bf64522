// The parameters of a spatial similarity transformation, without what computes them:
//
//   target = s R (source - xs) + xt
#pragma once

#include "zu/export.h"
#include "zu/numerics/matrix.h"
#include "zu/numerics/vector.h"

class ZU_API ZuTrafo3dData {
 public:
  // The 4x4 homogeneous matrix T(xt) * (s R) * T(-xs), T a translation, for points as column
  // vectors. A result matrix that is given must be 4x4.
  ZuMatrix GetAsMatrix() const;
  void GetAsMatrix(ZuMatrix& m) const { m = GetAsMatrix(); }

 public:
  ZuMatrix m_mRot = ZuMatrix(3, 3);  // R; all zero before an estimate: every point goes to xt
  ZuVector m_vTarget = ZuVector(3);  // xt
  ZuVector m_vSource = ZuVector(3);  // xs
  double m_dScale = 1.0;             // s
};
