// Spatial similarity transformation between two point lists that share point ids.
//
//   target = s R (source - xs) + xt        s scale, R rotation, xs and xt the centres
//
// The estimate from control points is a closed form: unweighted, linear in the number of points,
// without approximate values. A point with id 0 has no partner. Copies hold all results; the worst
// point they name belongs to the list that was transformed.
#pragma once

#include <vector>

#include "zu/export.h"
#include "zu/foundation/id_table.h"
#include "zu/foundation/sort_helper.h"
#include "zu/points/point.h"
#include "zu/points/point_list.h"
#include "zu/transform/trafo3d_data.h"

class ZuLokalSystem;

namespace zu::internal {
struct PointPair;
}

enum eTrafo3DStatus : int {
  eTrafo3DOk = 0,
  eTrafo3DTooFewPoints = 1,   // fewer common points than demanded
  eTrafo3DPointMissing = 2,   // a point of a local system is not in the list
  eTrafo3DBadDefinition = 3,  // equal ids in a scale pair; a needed point or every scale is missing
  eTrafo3DNoSolution = 4,     // degenerate geometry, no convergence, equal axis ids
  eTrafo3DScaleMismatch = 5,  // the scales of a local system disagree beyond tolerance
  eTrafo3DScaleUndefined = 6,  // a scale pair of distance 0.0, or none at all
};

// How well an estimate fits: the mean squared residual, and the largest residual.
enum eRobustStatus : int {
  eRobustOk = 0,
  eRobustCalcFailed = 1,         // no estimate
  eRobustRmsTooLarge = 2,        // the mean alone is over
  eRobustRmsAndMaxTooLarge = 3,  // both are over
  eRobustMaxTooLarge = 4,        // the largest alone is over
};

// A short English text for a status, "unknown status" for other values.
ZU_API const char* GetTrafo3DStatusText(eTrafo3DStatus eStatus);

class ZU_API ZuTrafo3d : public virtual ZuTrafo3dData {
 public:
  ZuTrafo3d() = default;
  ZuTrafo3d(const ZuTrafo3d&) = default;
  virtual ~ZuTrafo3d() = default;
  ZuTrafo3d& operator=(const ZuTrafo3d&) = default;

  // Estimates the transformation that carries the points of `source` onto those of the same id in
  // `target`, by least squares; with bUnitScale the rotation is that for a scale of 1.
  //
  // False with status 1 for fewer than iMinPoints common points: parameters untouched. False with
  // status 4 where the points do not determine it; the parameters are then partly worked and must
  // not be used. GetCommonPoints() tells how many were found in either case.
  //
  // R is orthogonal to 1e-10, whatever the shape of the set, and the scale is exact to 1e-10 of
  // itself. Flat sets (a facade, any three points) and narrow ones give a proper rotation; the turn
  // about the long direction is known to about 1e-16 (length / width)^2 rad, which is 1e-10 at a
  // thousandth of the length. Within a millionth of the length the points count as collinear: the
  // rotation is then arbitrary about the line. Centred coordinates below 1e-10 are taken for 1e-10,
  // so that extents should be well above that in both systems. Where one list mirrors the other the
  // result is the best rotation, orthogonal to 1e-8, or status 4.
  //
  // Required: with bUnitScale the scale keeps its estimated value, and R is a rotation only where
  // that value is 1; applications compare both. For a rotation at a scale of 1 estimate without the
  // flag and set m_dScale to 1: the best rotation does not depend on the scale.
  //
  // Method: R is the orthogonal factor of M = B A^T / q, after B. K. P. Horn, H. M. Hilden, S.
  // Negahdaripour, "Closed-form solution of absolute orientation using orthonormal matrices", 1988;
  // the root of M^T M from its invariants, after A. Hoger, D. E. Carlson, "Determination of the
  // stretch and rotation in the polar decomposition of the deformation gradient", 1984.
  bool CalcByControlPoints(const ZuSortHelper<ZuPoint>& target, const ZuPointList* pSource,
                           int iMinPoints, bool bUnitScale);
  bool CalcByControlPoints(const ZuPointList* pTarget, const ZuPointList* pSource, int iMinPoints,
                           bool bUnitScale);

  // The transformation into a local system that named points define, y = s R (x - O) + offset, O
  // the origin point. The scale is dFixedScale unless that is 0.0, otherwise the mean of the scale
  // pairs whose points are in the list; a pair that differs from it by more than dScaleTolerance,
  // relative, is told by IsScale1Bad() to IsScale3Bad() and gives status 5.
  //
  // False with the status of the definition (ZuLokalSystem::IsValid), 3 where a needed point or
  // every scale is missing or the axis mode is unknown, 4 for points that give no frame or no
  // finite centre, 6 for a scale that is not finite and for a mean not above 0.0. The parameters
  // are then unfinished. After success the status is 0.
  bool CalcByLocalSystem(const ZuLokalSystem& system, const ZuPointList* pPoints,
                         double dFixedScale, double dScaleTolerance);

  // dDistance / |a - b| over three elements.
  //
  // Required: 1e-10 where the two points coincide exactly; a comparison of scales then fails.
  static double CalcScale(const ZuVector& a, const ZuVector& b, double dDistance);

  // Right-handed frame of three points as columns of the 3x3 matrix *m: a is the origin, b lies on
  // the first axis, c in the plane of the first two. The matrix stays as it is for points that
  // ZuMatrix::MakeRotMatrix refuses: coincident or collinear ones.
  static void unvect(const ZuVector& a, const ZuVector& b, const ZuVector& c, ZuMatrix* m);

  // Clears ids and adds, in the order of the source, each id of a source point that the target
  // holds too.
  static void GetCommonIds(ZuIdTable& ids, ZuPointList* pTarget, ZuPointList* pSource);

  // Fills `out`, emptied first, with transformed copies of the points of `in`, in their order; flag
  // bit 0x40 is set in each. A copy with a control point of its id holds the difference control
  // minus transformed as its residuals and takes those coordinates for which the control point has
  // its control flag. Copies of the control points without partner follow, in the order of their
  // list, or by id where the index alone is given. With bSort the result is put in the order of
  // ids. Then the figures below are those of this run. True always.
  //
  // Required: the root mean squares are taken over all points of `in`; one without partner counts
  // with residuals of 0.0.
  bool Transform(ZuPointList& out, const ZuPointList& in, const ZuSortHelper<ZuPoint>& control,
                 bool bSort);
  bool Transform(ZuPointList& out, const ZuPointList& in, const ZuPointList* pControl, bool bSort);

  // Transforms the points of `in`, which ends empty, and moves them to `good`, or to `bad` where
  // the residual against the control point of the id is longer than dTolerance. Each coordinate of
  // a point with a control point becomes that point's where its control flag is set, else the blend
  // (1 - dBlend) transformed + dBlend control, dBlend limited to 0 to 1; the control flags are
  // taken over. Flag bit 0x40 is set, in bad points 0x800 too; residuals are control minus
  // transformed. `badControl` gets copies of the control points of bad points. Lists are appended
  // to; without `bad` its points go to `good`, without `badControl` the copies are not made. The
  // root mean squares are those of the good points, the worst point is that of all. False, nothing
  // changed, without `good` or `in`.
  bool Transform(ZuPointList* pGood, ZuPointList* pBad, ZuPointList* pBadControl, ZuPointList* pIn,
                 double dTolerance, const ZuSortHelper<ZuPoint>& control, double dBlend);

  // Carries list B into the system of list A although some of the common points are wrong: all
  // common points first, then by random-sample consensus (after M. A. Fischler, R. C. Bolles,
  // "Random sample consensus", 1981). Appends to *pResult, in this order: the rejected points if no
  // pBad is given, the agreeing common points, those only B knows, and those only A knows,
  // unchanged. Rejected points go to pBad with flag bit 0x800, copies of their partners to
  // pBadControl; both may be null. dBlend as in Transform. Neither input is changed.
  //
  // A point agrees when its residual is at most dTolerance, an absolute length or a share of the
  // longest side of the common points' box in A. Sampling needs iMinPoints + iExtraPoints common
  // points; samples have iExtraSample + 4 points, and there are 2 n trials, at least 12 and at most
  // 50. They follow the state of the standard generator `rand`, which the caller seeds: one job at
  // a time in a process. The unnamed bool is not read.
  //
  // Status 0; 1 for too few common points and 4 where no sample is supported: outputs untouched.
  eTrafo3DStatus RobustCalcByControlPointsAndTransform(
      ZuPointList* pResult, ZuPointList* pBad, ZuPointList* pBadControl, const ZuPointList& listA,
      const ZuPointList& listB, double dTolerance, bool bAbsoluteTolerance, double dBlend,
      int iMinPoints, bool, int iExtraPoints, int iExtraSample);

  // Transforms the points of a list in place, zeroes their residuals and clears their flag bits
  // 0x40 and 0x800. False for a null list.
  bool InPlaceTransform(ZuPointList* pList) const;

  eTrafo3DStatus GetStatus() const { return m_eStatus; }
  bool IsScale1Bad() const { return m_bScale1Bad; }
  bool IsScale2Bad() const { return m_bScale2Bad; }
  bool IsScale3Bad() const { return m_bScale3Bad; }
  int GetCommonPoints() const { return m_iCommonPoints; }
  // The ids of the common points of the last robust merge, in the order of list B.
  const ZuIdTable& GetCommonIdTable() const { return m_tCommonIds; }

  // Figures of the last transformation; the count is 1 where there were no points.
  double GetRmsX() const { return m_dRmsX; }
  double GetRmsY() const { return m_dRmsY; }
  double GetRmsZ() const { return m_dRmsZ; }
  int GetResidualCount() const { return m_iResidualCount; }
  // The point of the result with the longest residual; null where all are 0.0.
  ZuPoint* GetMaxResidualPoint() const { return m_pMaxResidualPoint; }

 protected:
  // Sums of a run over points.
  struct ResidualSums {
    double dX = 0.0, dY = 0.0, dZ = 0.0;  // of the squared residuals
    double dMax = 0.0;                    // largest squared length so far
  };

  // The figures of a transformation run: reset, then each point with its residuals stored, then the
  // root mean squares. NoteWorst keeps the first point with the longest residual; AddResiduals adds
  // to the sums and counts.
  void ResetResiduals();
  void AddResiduals(ResidualSums& sums, const ZuPoint& point);
  void NoteWorst(ResidualSums& sums, ZuPoint* pPoint);
  void FinishResiduals(const ResidualSums& sums);

  // The estimate from common points, in their order.
  bool CalcByPairs(const std::vector<zu::internal::PointPair>& pairs, int iMinPoints,
                   bool bUnitScale);

  // Transform without the control points that found no partner; their ids go to usedIds.
  void TransformPoints(ZuPointList& out, const ZuPointList& in,
                       const ZuSortHelper<ZuPoint>& control, std::vector<unsigned int>& usedIds);

  // Parts of the robust merge; tolerances are squared. RobustCheckTransformQuality stores the
  // residuals of the pairs' source points and keeps the figures of the run.
  eRobustStatus RobustCalcAndCheckByControlPoints(const std::vector<zu::internal::PointPair>& pairs,
                                                  double dTolerance2, int iMinPoints);
  eRobustStatus RobustCheckTransformQuality(const std::vector<zu::internal::PointPair>& pairs,
                                            double dTolerance2);
  class RobustSearch;

  eTrafo3DStatus m_eStatus = eTrafo3DOk;
  bool m_bScale1Bad = false;
  bool m_bScale2Bad = false;
  bool m_bScale3Bad = false;
  int m_iCommonPoints = 0;
  double m_dRmsX = 0.0;
  double m_dRmsY = 0.0;
  double m_dRmsZ = 0.0;
  int m_iResidualCount = 0;
  ZuPoint* m_pMaxResidualPoint = nullptr;  // not owned
  ZuIdTable m_tCommonIds;
};
