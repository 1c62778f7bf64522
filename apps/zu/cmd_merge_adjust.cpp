#include "cmd_merge_adjust.h"

#include <algorithm>
#include <cmath>

#include "zu/foundation/sort_helper.h"

namespace cli {
namespace {

ZuSimilarityOptions OptionsOf(const SimilarityValues& values) {
  ZuSimilarityOptions options = values.OptionsOf();
  options.dSigmaSource = options.dSigmaTarget = values.dSigma;
  return options;
}

double Length(const double* pd) { return std::hypot(pd[0], pd[1], pd[2]); }

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

}  // namespace

ZuSimilarityResult AdjustMerge(const ZuSortHelper<ZuPoint>& listA, const ZuPointList& listB,
                               const SimilarityValues& values, std::vector<unsigned>* pRejected) {
  ZuSimilarityOptions options = OptionsOf(values);
  if (values.bTest) {
    ZuPointList agreeing;
    for (const ZuPoint* p = listB.First(); p != nullptr; p = p->Next()) {
      const bool bRejected = std::binary_search(pRejected->begin(), pRejected->end(), p->GetId());
      if (!bRejected) agreeing.Add(*p);
    }
    const ZuSimilarityResult tested = ZuAdjustSimilarity(listA, agreeing, options);
    if (!tested.IsGood()) return tested;
    for (const ZuSetAside& aside : tested.setAside) pRejected->push_back(aside.uId);
    std::sort(pRejected->begin(), pRejected->end());
  }
  options.tests.bSnoop = false;
  options.startAside = *pRejected;
  return ZuAdjustSimilarity(listA, listB, options);
}

ZuSimilarityResult AdjustWithin(double dTolerance, const ZuSortHelper<ZuPoint>& listA,
                                const ZuPointList& listB, const SimilarityValues& values,
                                std::vector<unsigned>* pRejected) {
  for (;;) {
    ZuSimilarityResult result = AdjustMerge(listA, listB, values, pRejected);
    const size_t uBefore = pRejected->size();
    for (const ZuSimilarityPoint& p : result.points) {
      if (p.bUsed && !(Length(p.adResidual) <= dTolerance)) pRejected->push_back(p.uId);
    }
    if (!result.IsGood() || pRejected->size() == uBefore) return result;
    std::sort(pRejected->begin(), pRejected->end());
  }
}

void SetJoinedSds(const ZuSimilarityResult& result, const ZuSortHelper<ZuPoint>& listA,
                  const ZuPointList& listB, double dBlend, ZuPointList* pJoined) {
  ZuPointList carried(listB);
  result.Carry(&carried);
  const ZuSortHelper<ZuPoint> indexB(&carried);
  for (ZuPoint* p = pJoined->First(); p != nullptr; p = p->Next()) {
    const ZuPoint* const pA = listA.Find(p->GetId());
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

}  // namespace cli
