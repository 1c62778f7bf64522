// A map of the plane from what is known of the points: that lines between them are parallel, at
// right angles, or of known ratio of lengths.
//
//   ZuPlaneConditions solver(eZuTrafo2DAffin);
//   const size_t a = solver.AddPoint({0, 0}) ...;
//   solver.AddRightAngle(a, b, a, c);
//   solver.Add(ZuLenghtRatioConstraint(a, b, c, d, 1.5));
//   if (solver.Calc() == eConditionsOk) solver.Transform(&p);
//
// The affine map straightens a picture whose parallels are parallel (a scan, a picture that was
// rectified from parallels alone); the projective one takes a picture as it is, whose parallels
// tell where the horizon lies. Both are found up to a similarity, which no such condition tells:
// the map keeps the centre of the points and the area there, and turns them as little as it can.
//
// The coordinates of the points are moved by the least sum of squares so that all conditions hold
// (least squares with conditions and parameters: E. M. Mikhail, "Observations and least squares",
// 1976). Start: the horizon from the parallels, then the metric of the plane, linear in right
// angles and ratios (R. Hartley, A. Zisserman, "Multiple view geometry in computer vision", 2004,
// ch. 2.7).
#pragma once

#include <vector>

#include "zu/export.h"
#include "zu/numerics/point2d.h"
#include "zu/transform/trafo2d.h"

enum eConditionsStatus : int {
  eConditionsOk = 0,
  eConditionsTooFew = 1,      // none, or a point that is none
  eConditionsOpen = 2,        // something of the map stays free, see GetDefect
  eConditionsCoincident = 3,  // both ends of a line are one
  eConditionsContradict = 4,  // as two lines that shall be parallel and at right angles
  eConditionsDependent = 5,   // conditions that others hold already, or parallels that meet nowhere
  eConditionsNotFinite = 6,   // a coordinate or a ratio, which must be above 0, or the result
  eConditionsNotConverged = 7,  // no end after fifty steps, or points across the horizon
  eConditionsTooMany = 8,       // more than 300 conditions
};

// "ok", "the conditions leave the map open", ...; static text.
ZU_API const char* ZuConditionsStatusText(eConditionsStatus eStatus);

// Two lines between points, by the numbers that AddPoint gave.
struct ZuPlaneCondition {
  enum eKind : int { eParallel = 0, eRightAngle = 1, eLengthRatio = 2 };

  eKind kind = eParallel;
  size_t auPoint[4] = {};  // line 0 to 1, line 2 to 3
  double dRatio = 1.0;     // length of the first over the second

  // After Calc. False: others hold it already, it counted once.
  bool bUsed = false;
  // Of the measured points, carried over: how far the lines are from the angle [rad], or their
  // ratio from the one told [-, of it].
  double dResidual = 0.0;
};

// The ratio of two lengths; 1: equal ones.
struct ZuLenghtRatioConstraint : ZuPlaneCondition {
  ZuLenghtRatioConstraint(size_t a, size_t b, size_t c, size_t d, double dLengthRatio = 1.0) {
    kind = eLengthRatio;
    auPoint[0] = a;
    auPoint[1] = b;
    auPoint[2] = c;
    auPoint[3] = d;
    dRatio = dLengthRatio;
  }
};

class ZU_API ZuPlaneConditions {
 public:
  // eZuTrafo2DAffin (shear and ratio of the axes are unknown) or eZuTrafo2DProjektiv (and the
  // horizon); any other type acts like the affine one.
  explicit ZuPlaneConditions(eZuTrafo2DType eType) : m_bHorizon(eType == eZuTrafo2DProjektiv) {}

  // The number of the point, from 0.
  size_t AddPoint(const ZuPoint2d& p);
  void Add(const ZuPlaneCondition& condition) { m_conditions.push_back(condition); }
  void AddParallel(size_t a, size_t b, size_t c, size_t d);
  void AddRightAngle(size_t a, size_t b, size_t c, size_t d);

  // Any thread. Cost: the cube of the conditions for each step.
  eConditionsStatus Calc();

  eConditionsStatus GetStatus() const { return m_eStatus; }
  // How many of the unknowns no condition decides, and which: "shear", "shear against the ratio of
  // the axes", "the horizon". With eConditionsOpen alone.
  int GetDefect() const { return m_iDefect; }
  const char* GetFree() const { return m_szFree; }

  // The rest after a good Calc alone.
  ZuPoint2d Transform(const ZuPoint2d& p) const;
  // The 3 x 3 map row by row, of whole coordinates; its last row is (0, 0, 1) for the affine map.
  // Transform keeps more digits far from the origin.
  void GetMap(double* pdMap) const;
  // Of the points, adjusted less measured.
  const std::vector<ZuVector2d>& GetMoves() const { return m_moves; }
  const std::vector<ZuPlaneCondition>& GetConditions() const { return m_conditions; }
  // Conditions used less unknowns.
  int GetRedundancy() const { return m_iRedundancy; }
  // Standard deviation of a coordinate; 0 without redundancy.
  double GetSigma0() const { return m_dSigma0; }

 private:
  class Adjustment;

  bool m_bHorizon;
  std::vector<ZuPoint2d> m_points;
  std::vector<ZuPlaneCondition> m_conditions;
  eConditionsStatus m_eStatus = eConditionsTooFew;
  int m_iDefect = 0, m_iRedundancy = 0;
  const char* m_szFree = "";
  double m_dSigma0 = 0.0;
  std::vector<ZuVector2d> m_moves;
  ZuPoint2d m_centre;
  double m_dExtent = 1.0;
  double m_adMap[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};  // of reduced coordinates
};
