#include "zu/adjust/merge.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "zu/foundation/sort_helper.h"

namespace {

constexpr double kEveryPoint = std::numeric_limits<double>::infinity();  // a tolerance

double LengthOf(const double* pd) { return std::hypot(pd[0], pd[1], pd[2]); }

bool HoldsId(const std::vector<unsigned>& sorted, unsigned uId) {
  return std::binary_search(sorted.begin(), sorted.end(), uId);
}

// Largest side of the box of A's common points.
double ExtentOfCommon(const ZuPointList& a, const ZuSortHelper<ZuPoint>& indexB) {
  double adLow[3] = {}, adHigh[3] = {};
  bool bFirst = true;
  for (const ZuPoint* p = a.First(); p != nullptr; p = p->Next()) {
    if (indexB.Find(p->GetId()) == nullptr) continue;
    const double ad[] = {p->m_dX, p->m_dY, p->m_dZ};
    for (int i = 0; i < 3; ++i) {
      adLow[i] = bFirst ? ad[i] : std::min(adLow[i], ad[i]);
      adHigh[i] = bFirst ? ad[i] : std::max(adHigh[i], ad[i]);
    }
    bFirst = false;
  }
  return std::max({adHigh[0] - adLow[0], adHigh[1] - adLow[1], adHigh[2] - adLow[2]});
}

// --- Least squares -------------------------------------------------------------------------------

// B onto A over the common points but for those rejected, which are held against the result. With
// snooping agreeing points that do not fit are set aside; they join *pRejected.
ZuSimilarityResult AdjustAgreeing(const ZuSortHelper<ZuPoint>& indexA, const ZuPointList& b,
                                  ZuSimilarityOptions options, std::vector<unsigned>* pRejected) {
  if (options.tests.bSnoop) {
    ZuPointList agreeing;
    for (const ZuPoint* p = b.First(); p != nullptr; p = p->Next()) {
      if (!HoldsId(*pRejected, p->GetId())) agreeing.Add(*p);
    }
    const ZuSimilarityResult tested = ZuAdjustSimilarity(indexA, agreeing, options);
    if (!tested.IsGood()) return tested;
    for (const ZuSetAside& aside : tested.setAside) pRejected->push_back(aside.uId);
    std::sort(pRejected->begin(), pRejected->end());
  }
  options.tests.bSnoop = false;
  options.startAside = *pRejected;
  return ZuAdjustSimilarity(indexA, b, options);
}

// Points that the adjusted parameters leave beyond the tolerance are rejected, too, until none is.
ZuSimilarityResult AdjustWithin(double dTolerance, const ZuSortHelper<ZuPoint>& indexA,
                                const ZuPointList& b, const ZuSimilarityOptions& options,
                                std::vector<unsigned>* pRejected) {
  for (;;) {
    ZuSimilarityResult result = AdjustAgreeing(indexA, b, options, pRejected);
    const size_t uBefore = pRejected->size();
    for (const ZuSimilarityPoint& p : result.points) {
      if (p.bUsed && !(LengthOf(p.adResidual) <= dTolerance)) pRejected->push_back(p.uId);
    }
    if (!result.IsGood() || pRejected->size() == uBefore) return result;
    std::sort(pRejected->begin(), pRejected->end());
  }
}

// --- Standard deviations -------------------------------------------------------------------------

// Of a coordinate of A, as it went into the adjustment.
double VarianceOfA(const ZuSimilarityResult& result, double dTold) {
  const double d = dTold != 0.0 ? dTold * dTold : result.dOwnTargetVariance;
  return result.dSigma0 * result.dSigma0 * d;
}

// Joined is (1 - F) carried + F A. With e = A - carried the covariance of both follows from the
// variances of all three, which leaves (1 - F) var(carried) + F var(A) - F (1 - F) var(e).
void SetCommonSds(const ZuSimilarityResult& result, const ZuSimilarityPoint& test, const ZuPoint& a,
                  double dBlend, ZuPoint* pJoined) {
  const double adTold[] = {a.m_dDX, a.m_dDY, a.m_dDZ};
  const bool abControl[] = {a.IsXControlPoint() != 0, a.IsYControlPoint() != 0,
                            a.IsZControlPoint() != 0};
  double* const apd[] = {&pJoined->m_dDX, &pJoined->m_dDY, &pJoined->m_dDZ};
  for (int i = 0; i < 3; ++i) {
    const double f = abControl[i] ? 1.0 : dBlend;
    const double d = (1.0 - f) * test.adCarried[4 * i] + f * VarianceOfA(result, adTold[i]) -
                     f * (1.0 - f) * test.adResidualSd[i] * test.adResidualSd[i];
    *apd[i] = std::sqrt(std::max(0.0, d));
  }
}

// Of points of both lists moved towards A's by the share dBlend, of B alone, of A alone.
void SetJoinedSds(const ZuSimilarityResult& result, const ZuSortHelper<ZuPoint>& indexA,
                  const ZuPointList& b, double dBlend, ZuPointList* pJoined) {
  ZuPointList carried(b);
  result.Carry(&carried);
  const ZuSortHelper<ZuPoint> indexB(&carried);
  for (ZuPoint* p = pJoined->First(); p != nullptr; p = p->Next()) {
    const ZuPoint* const pA = indexA.Find(p->GetId());
    const ZuPoint* const pB = indexB.Find(p->GetId());
    const ZuSimilarityPoint* const pTest = result.Find(p->GetId());
    if (pA != nullptr && pTest != nullptr && pTest->bUsed) {
      SetCommonSds(result, *pTest, *pA, dBlend, p);
    } else if (pB != nullptr) {
      p->m_dDX = pB->m_dDX;
      p->m_dDY = pB->m_dDY;
      p->m_dDZ = pB->m_dDZ;
    } else if (pA != nullptr) {
      p->m_dDX = std::sqrt(VarianceOfA(result, pA->m_dDX));
      p->m_dDY = std::sqrt(VarianceOfA(result, pA->m_dDY));
      p->m_dDZ = std::sqrt(VarianceOfA(result, pA->m_dDZ));
    }
  }
}

// --- Joining -------------------------------------------------------------------------------------

// Carries B over and joins it with A in the order of ZuTrafo3d::
// RobustCalcByControlPointsAndTransform.
void Join(const ZuPointList& a, const ZuPointList& b, const ZuSortHelper<ZuPoint>& indexA,
          const ZuSortHelper<ZuPoint>& indexB, double dTolerance, double dBlend,
          ZuMergeResult* pResult) {
  ZuPointList agreeing, rejected, onlyB;
  for (const ZuPoint* p = b.First(); p != nullptr; p = p->Next()) {
    const bool bCommon = indexA.Find(p->GetId()) != nullptr;
    (!bCommon ? onlyB : HoldsId(pResult->aside, p->GetId()) ? rejected : agreeing).Add(*p);
  }
  const auto transform = [&](double dMost, ZuPointList* pPoints) {
    pResult->trafo.Transform(&pResult->joined, &pResult->rejected, &pResult->rejectedControl,
                             pPoints, dMost, indexA, dBlend);
  };
  transform(dTolerance, &agreeing);
  transform(std::nan(""), &rejected);  // within which no point is
  pResult->trafo.InPlaceTransform(&onlyB);
  onlyB.MoveTo(&pResult->joined);
  for (const ZuPoint* p = a.First(); p != nullptr; p = p->Next()) {
    if (indexB.Find(p->GetId()) == nullptr) pResult->joined.Add(*p);
  }
}

}  // namespace

ZuMergeResult ZuMergePoints(const ZuPointList& a, const ZuPointList& b,
                            const ZuMergeOptions& options) {
  ZuMergeResult result;
  const ZuSortHelper<ZuPoint> indexA(&a), indexB(&b);
  ZuIdTable ids;
  ZuTrafo3d::GetCommonIds(ids, const_cast<ZuPointList*>(&a), const_cast<ZuPointList*>(&b));
  result.iCommon = ids.Count();
  result.dTolerance = options.dTolerance;
  if (options.bRelative) result.dTolerance *= ExtentOfCommon(a, indexB);

  ZuConsensusOptions search;
  search.dTolerance = result.dTolerance;
  search.uSeed = options.uSeed;
  search.search = options.search;
  search.iLeastAgreeing =
      std::min(options.iMinPoints + options.iExtraPoints, std::max(result.iCommon, 3));
  result.consensus = ZuFindConsensus(a, b, search);
  result.status = result.consensus.status;
  result.strReason = result.consensus.strReason;
  if (!result.IsGood()) return result;

  ZuPointList agreeing;
  for (const ZuPoint* p = b.First(); p != nullptr; p = p->Next()) {
    if (HoldsId(result.consensus.agreeing, p->GetId())) agreeing.Add(*p);
  }
  result.trafo.CalcByControlPoints(indexA, &agreeing, 3, false);
  if (options.bAdjust) {
    result.aside = result.consensus.rejected;
    result.adjusted = AdjustWithin(result.dTolerance, indexA, b, options.similarity, &result.aside);
    result.status = result.adjusted.status;
    result.strReason = result.adjusted.strReason;
    if (!result.IsGood()) return result;
    static_cast<ZuTrafo3dData&>(result.trafo) = result.adjusted.trafo;
    Join(a, b, indexA, indexB, kEveryPoint, options.dBlend, &result);
  } else {
    Join(a, b, indexA, indexB, result.dTolerance, options.dBlend, &result);
    for (const ZuPoint* p = result.rejected.First(); p != nullptr; p = p->Next()) {
      result.aside.push_back(p->GetId());
    }
    std::sort(result.aside.begin(), result.aside.end());
    result.adjusted = AdjustAgreeing(indexA, b, options.similarity, &result.aside);
  }
  if (!result.adjusted.IsGood()) return result;
  for (ZuPointList* pPoints : {&result.joined, &result.rejected}) {
    SetJoinedSds(result.adjusted, indexA, b, options.dBlend, pPoints);
  }
  return result;
}
