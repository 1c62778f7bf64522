#include "zu/adjust/epochs.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "zu/adjust/consensus.h"

namespace {

// How many points of the second epoch have a partner: as many are tested.
int CountCommon(const ZuPointList& first, const ZuPointList& second) {
  std::unordered_set<unsigned> ids;
  for (const ZuPoint* p = first.First(); p != nullptr; p = p->Next()) ids.insert(p->GetId());
  ids.erase(0);
  int n = 0;
  for (const ZuPoint* p = second.First(); p != nullptr; p = p->Next()) {
    n += static_cast<int>(ids.erase(p->GetId()));
  }
  return n;
}

// The longest misclosure of a common point that its accuracies explain; 0 where they are not known.
double Tolerance(const ZuPointList& first, const ZuPointList& second,
                 const ZuEpochOptions& options) {
  const auto largest = [](const ZuPointList& points, double dSigma) {
    for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
      dSigma = std::max({dSigma, p->m_dDX, p->m_dDY, p->m_dDZ});
    }
    return dSigma;
  };
  const double dSigma =
      std::hypot(largest(first, options.dSigmaFirst), largest(second, options.dSigmaSecond));
  const double dAlpha = ZuTestAlpha(options.tests, CountCommon(first, second));
  return dSigma * std::sqrt(3.0 * ZuGroupLimit(dAlpha, 3));
}

}  // namespace

ZuEpochResult ZuCompareEpochs(const ZuPointList& first, const ZuPointList& second,
                              const ZuEpochOptions& options) {
  ZuSimilarityOptions similarity;
  similarity.kind = options.kind;
  similarity.tests = options.tests;
  similarity.tests.bSnoop = true;
  similarity.dSigmaSource = options.dSigmaFirst;
  similarity.dSigmaTarget = options.dSigmaSecond;
  ZuConsensusOptions consensus;
  consensus.dTolerance = Tolerance(first, second, options);
  consensus.uSeed = options.uSeed;
  if (consensus.dTolerance > 0.0 && std::isfinite(consensus.dTolerance)) {
    const ZuConsensusResult stable = ZuFindConsensus(second, first, consensus);
    if (stable.IsGood()) similarity.startAside = stable.rejected;
  }

  ZuEpochResult result;
  result.similarity = ZuAdjustSimilarity(second, first, similarity);
  for (const ZuSimilarityPoint& p : result.similarity.points) {
    ZuEpochPoint point;
    point.uId = p.uId;
    point.bMoved = !p.bUsed;
    std::copy_n(p.adResidual, 3, point.adMove);
    std::copy_n(p.adResidualSd, 3, point.adMoveSd);
    point.dTest = p.dTest;
    point.dLimit = p.dLimit;
    result.points.push_back(point);
  }
  return result;
}
