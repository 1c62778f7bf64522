// Computes the matrices of a rectification from its definition points.
//
//   ZuCalcZusp calc;
//   if (calc.Calc(&trafo)) ...   // trafo.Transform carries image points to object space
//   else show(calc.GetStatusText());
//
// The points are those that stand in DEFPOINTS (X, Y, Z) and MEASPOINTS (x, y) under one id. A
// plane through the first gives the 4 x 4 map (ZuMakePlaneFrame, or Z kept where all points have
// the same one); the 3 x 3 map is the projective one with the least squares of the residuals in
// that plane. With the distortion stage on, measured points are corrected exactly by its camera
// first. An own object for each thread.
#pragma once

#include <vector>

#include "zu/export.h"

class ZuZuspTrafo;

class ZU_API ZuCalcZusp {
 public:
  enum eStatus : int {
    StatusOk = 0,
    TooLessPoints = 1,    // fewer than four in common, or none so far
    BadPointDistrib = 2,  // in a line, or so that the projective map is not determined
    NotInCamera = 3,      // a point lies where the camera's model is not one to one
    NotFinite = 4,        // a coordinate, or the result
    NotConverged = 5      // no end after twenty steps
  };
  // Transformed less defined, in the plane, and the height of the defined point over the plane.
  struct Residual {
    unsigned m_uId;
    double m_dX, m_dY, m_dZ;
  };

  // Sets both matrices of the rectification, which is a new record then (its inverses are formed
  // again). False with the status, the rectification untouched. Cost: the number of points, some
  // ten times.
  bool Calc(ZuZuspTrafo* pTrafo);

  eStatus GetStatus() const { return m_eStatus; }
  // "ok", "fewer than four common points", ...
  const char* GetStatusText() const;
  // In the order of the measured points.
  const std::vector<Residual>& GetResiduals() const { return m_residuals; }
  // sqrt(v'v / (2 n - 8)) of x and y; 0 for four points.
  double GetSigma0() const { return m_dSigma0; }

 private:
  bool Fail(eStatus eWhy);

  eStatus m_eStatus = TooLessPoints;
  std::vector<Residual> m_residuals;
  double m_dSigma0 = 0.0;
};
