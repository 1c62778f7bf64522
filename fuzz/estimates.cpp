// Transformations estimated from common points, and the robust merge of two lists. A row of the
// input is a point in both systems: id, three coordinates each, control code.
#include <cstdlib>

#include "fuzz/points_use.h"
#include "zu/rectify/region.h"
#include "zu/transform/calc_trafo2d.h"
#include "zu/transform/trafo3d.h"

namespace {

constexpr int kMostPoints = 40;

struct Lists {
  ZuPointList source, target;
};

Lists TakeLists(const Input& input) {
  static constexpr eZuPointRWMask kColumns[] = {eZuPointRWIdName, eZuPointRWX,       eZuPointRWY,
                                                eZuPointRWZ,      eZuPointRWDX,      eZuPointRWDY,
                                                eZuPointRWDZ,     eZuPointRWCodeNum, eZuPointRWEnd};
  Lists lists;
  ZuPointList rows;
  rows.ReadFile(input.Path(), Columns(kColumns));
  int iLeft = kMostPoints;
  for (const ZuPoint* p = rows.First(); p != nullptr && iLeft-- > 0; p = p->Next()) {
    // Codes above 7 are points that one of the lists alone knows.
    const short int sCode = p->GetControlFlags();
    if ((sCode & 8) == 0) lists.source.Add(ZuPoint(p->GetId(), p->m_dX, p->m_dY, p->m_dZ));
    if ((sCode & 16) == 0) {
      lists.target.Add(ZuPoint(p->GetId(), p->m_dDX, p->m_dDY, p->m_dDZ, sCode & 7));
    }
  }
  return lists;
}

// Longest distance from the first point, and largest coordinate.
struct Extent {
  double dSpread = 0.0, dLargest = 0.0;

  explicit Extent(const ZuPointList& list) {
    for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
      dSpread = std::fmax(dSpread, p->Distance(list.First()));
      for (const double d : {p->m_dX, p->m_dY, p->m_dZ})
        dLargest = std::fmax(dLargest, std::fabs(d));
    }
  }
  // Whether the points tell a transformation at all in double precision.
  bool IsUsual() const { return dLargest < 1e9 && dSpread > 1e-3 && dSpread > 1e-6 * dLargest; }
  double Tolerance() const { return 1e-6 * dSpread + 1e-11 * dLargest; }
};

// Finite coordinates, and no id twice.
bool IsPlain(const ZuPointList& list) {
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
    if (!std::isfinite(p->m_dX + p->m_dY + p->m_dZ)) return false;
    if (list.Find(p->GetId(), 0, nullptr) != p) return false;
  }
  return true;
}

void CheckRotation(const ZuTrafo3d& trafo) {
  const ZuMatrix& r = trafo.m_mRot;
  Require(std::isfinite(trafo.m_dScale) && trafo.m_dScale >= 0.0);
  for (int i = 1; i <= 3; ++i) {
    for (int j = 1; j <= 3; ++j) {
      double dSum = 0.0;
      for (int k = 1; k <= 3; ++k) dSum += r.GetElem(k, i) * r.GetElem(k, j);
      Require(std::fabs(dSum - (i == j ? 1.0 : 0.0)) <= 1e-6);
    }
  }
}

void Check3d(Lists& lists) {
  ZuTrafo3d trafo;
  for (const bool bUnitScale : {true, false}) {
    if (!trafo.CalcByControlPoints(&lists.target, &lists.source, 3, bUnitScale)) {
      Require(trafo.GetStatus() == eTrafo3DTooFewPoints || trafo.GetStatus() == eTrafo3DNoSolution);
      continue;
    }
    Require(trafo.GetStatus() == eTrafo3DOk && trafo.GetCommonPoints() >= 3);
    if (!bUnitScale) CheckRotation(trafo);
  }
  ZuPointList out;
  Require(trafo.Transform(out, lists.source, &lists.target, true));
  Require(out.Count() >= lists.source.Count());
}

// Points carried over by a known similarity are carried over by its estimate.
void CheckExact3d(const ZuPointList& source) {
  const Extent extent(source);
  if (!IsPlain(source) || !extent.IsUsual()) return;
  ZuTrafo3d known, found;
  known.m_dScale = 2.5;
  known.m_mRot.MakeRotMatrix(0.3, -1.1, 2.0);
  known.m_vTarget = ZuVector(7.0, -30.0, 0.5);
  ZuPointList target(source), carried(source);
  known.InPlaceTransform(&target);
  if (!found.CalcByControlPoints(&target, &source, 3, false)) return;
  CheckRotation(found);
  found.InPlaceTransform(&carried);
  const ZuPoint* q = carried.First();
  for (const ZuPoint* p = target.First(); p != nullptr; p = p->Next(), q = q->Next()) {
    Require(p->Distance(*q) <= 2.5 * extent.Tolerance());
  }
}

double SumOfSquares(ZuCalcTrafo2D& trafo, ZuPointList& source) {
  Require(trafo.CalcResiduals(&source));
  return trafo.GetResidualX() * trafo.GetResidualX() + trafo.GetResidualY() * trafo.GetResidualY();
}

void Check2d(Lists& lists) {
  using Estimate = bool (ZuCalcTrafo2D::*)(ZuPointList*);
  constexpr Estimate kEstimates[] = {
      &ZuCalcTrafo2D::CalcTrafoHelmert, &ZuCalcTrafo2D::CalcTrafoAffin,
      &ZuCalcTrafo2D::CalcTrafoProjectiv, &ZuCalcTrafo2D::CalcTrafoPolynom};
  ZuCalcTrafo2D trafo(&lists.target);
  for (const Estimate estimate : kEstimates) {
    if (!(trafo.*estimate)(&lists.source)) continue;
    for (int i = 0; i < ZuTrafo2d::kCoefficients; ++i) Require(std::isfinite(trafo.GetCoef(i)));
    SumOfSquares(trafo, lists.source);
    double dMaxX = 0.0, dMaxY = 0.0;
    int iWithin = 0;
    Require(trafo.CalcResiduals(dMaxX, dMaxY, iWithin, 1.0, &lists.source));
    Require(iWithin >= 0 && iWithin <= lists.source.Count());
  }
  Require(trafo.SuggestTrafoByPointsNbr(&lists.source) >=
          trafo.SuggestTrafoByDistrib(ZuRegion(-100.0, -100.0, 100.0, 100.0), &lists.source));
}

// Points carried over by a known Helmert transformation are met by its estimate.
void CheckExact2d(const ZuPointList& points) {
  const Extent extent(points);
  if (!IsPlain(points) || points.Count() < 2) return;
  ZuPointList source(points), target(points);
  double dSpread = 0.0;  // in the plane
  for (ZuPoint* p = target.First(); p != nullptr; p = p->Next()) {
    dSpread = std::fmax(dSpread,
                        std::hypot(p->m_dX - points.First()->m_dX, p->m_dY - points.First()->m_dY));
    const double x = p->m_dX, y = p->m_dY;
    p->m_dX = 3.0 + 0.8 * x - 0.6 * y;
    p->m_dY = -5.0 + 0.6 * x + 0.8 * y;
  }
  // The sums are not centred: digits go with the square of the offset.
  if (!(extent.dLargest < 1e6 && dSpread > 1e-2 && dSpread > 1e-3 * extent.dLargest)) return;
  ZuCalcTrafo2D trafo(&target);
  Require(trafo.CalcTrafoHelmert(&source));
  Require(std::sqrt(SumOfSquares(trafo, source)) <= 1e-6 * extent.dLargest);
  Require(std::fabs(trafo.GetScale() - 1.0) <= 1e-6);
}

struct Merge {
  Merge(const Lists& lists, double dTolerance, bool bAbsolute) {
    std::srand(1);
    eStatus = trafo.RobustCalcByControlPointsAndTransform(&result, &bad, &badControl, lists.target,
                                                          lists.source, dTolerance, bAbsolute, 0.5,
                                                          3, false, 1, 0);
  }
  ZuTrafo3d trafo;
  ZuPointList result, bad, badControl;
  eTrafo3DStatus eStatus;
};

// Every point of both lists comes out once; what agrees does so within the tolerance; the same
// seed gives the same merge.
void CheckMerge(const Lists& lists, double dTolerance, bool bAbsolute) {
  const Merge merge(lists, dTolerance, bAbsolute), again(lists, dTolerance, bAbsolute);
  Require(merge.eStatus == again.eStatus && merge.eStatus == merge.trafo.GetStatus());
  if (merge.eStatus != eTrafo3DOk) {
    Require(merge.result.IsEmpty() && merge.bad.IsEmpty() && merge.badControl.IsEmpty());
    return;
  }
  const int iCommon = merge.trafo.GetCommonIdTable().Count();
  Require(merge.result.Count() + merge.bad.Count() ==
          lists.source.Count() + lists.target.Count() - iCommon);
  Require(merge.bad.Count() == merge.badControl.Count());
  const ZuPoint* q = again.result.First();
  for (const ZuPoint* p = merge.result.First(); p != nullptr; p = p->Next(), q = q->Next()) {
    Require(p->GetId() == q->GetId() && IsSame(p->m_dX, q->m_dX) && IsSame(p->m_dY, q->m_dY));
    const double dResidual = std::hypot(p->m_dRedu1, p->m_dRedu2, p->m_dRedu3);
    Require(!bAbsolute || !(dResidual > dTolerance * (1.0 + 1e-12)));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  Lists lists = TakeLists(input);
  Check3d(lists);
  CheckExact3d(lists.source);
  Check2d(lists);
  CheckExact2d(lists.source);
  CheckMerge(lists, 0.5, true);
  CheckMerge(lists, 0.01, false);
  return 0;
}
