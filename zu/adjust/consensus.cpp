#include "zu/adjust/consensus.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "zu/adjust/internal/counter_random.h"
#include "zu/adjust/internal/similarity_model.h"
#include "zu/adjust/internal/similarity_points.h"

using zu::internal::CommonPoint;
using zu::internal::SimilarityModel;

namespace {

constexpr int kSample = 3;
constexpr int kExhaustive = 15;  // common points up to which all samples are looked at
constexpr int kBlock = 64;       // samples between two looks at the end of the search
constexpr int kRefinements = 8;
// A sample of three bends with their errors: at first points this many tolerances away go along.
constexpr double kWidened = 3.0;

struct Support {
  int iAgreeing = 0;
  double dSquares = std::numeric_limits<double>::infinity();

  bool IsBetter(const Support& other) const {
    return iAgreeing != other.iAgreeing ? iAgreeing > other.iAgreeing : dSquares < other.dSquares;
  }
};

double Samples(double n) { return n * (n - 1.0) * (n - 2.0) / 6.0; }

// Sample k of all in lexicographic order of their members from the last down.
void Unrank(std::int64_t k, int* piSample) {
  int c = 2;
  while (Samples(c + 1.0) <= static_cast<double>(k)) ++c;
  k -= static_cast<std::int64_t>(Samples(c));
  int b = 1;
  while ((b + 1LL) * b / 2 <= k) ++b;
  k -= b * (b - 1LL) / 2;
  piSample[0] = static_cast<int>(k);
  piSample[1] = b;
  piSample[2] = c;
}

class Search {
 public:
  Search(const std::vector<CommonPoint>& points, const ZuConsensusOptions& options)
      : m_points(points), m_options(options), m_random(options.uSeed, 0) {
    const int n = static_cast<int>(points.size());
    m_bExhaustive = options.search == ZuConsensusSearch::Exhaustive ||
                    (options.search == ZuConsensusSearch::Automatic && n <= kExhaustive);
    m_dAll = Samples(n);
  }

  void Run() {
    const std::int64_t iEnd = static_cast<std::int64_t>(
        m_bExhaustive ? m_dAll : static_cast<double>(m_options.iMaxSamples));
    std::vector<Support> supports(kBlock);
    for (std::int64_t iFirst = 0; iFirst < iEnd; iFirst += kBlock) {
      const int iCount = static_cast<int>(std::min<std::int64_t>(kBlock, iEnd - iFirst));
#pragma omp parallel for schedule(dynamic)
      for (int i = 0; i < iCount; ++i) {
        std::vector<char> agreeing;
        supports[static_cast<std::size_t>(i)] = Evaluate(iFirst + i, &agreeing);
      }
      for (int i = 0; i < iCount; ++i) {
        if (!supports[static_cast<std::size_t>(i)].IsBetter(m_best)) continue;
        m_best = supports[static_cast<std::size_t>(i)];
        m_iBest = iFirst + i;
      }
      m_iSamples = iFirst + iCount;
      if (!m_bExhaustive && Missed() <= m_options.dMissed) break;
    }
  }

  void StoreTo(ZuConsensusResult* pResult) const {
    pResult->bExhaustive = m_bExhaustive;
    pResult->iSamples = m_iSamples;
    pResult->dMissed = Missed();
    if (m_best.iAgreeing < std::max(m_options.iLeastAgreeing, kSample)) {
      pResult->status = ZuAdjustStatus::RankDefect;
      pResult->strReason = "no sample of the common points has " +
                           std::to_string(std::max(m_options.iLeastAgreeing, kSample)) +
                           " that agree";
      return;
    }
    std::vector<char> agreeing;
    Evaluate(m_iBest, &agreeing);
    for (std::size_t u = 0; u < m_points.size(); ++u) {
      (agreeing[u] ? pResult->agreeing : pResult->rejected).push_back(m_points[u].uId);
    }
    pResult->status = ZuAdjustStatus::Good;
  }

 private:
  double Missed() const {
    if (m_bExhaustive) return 0.0;
    const double dShare = Samples(std::max(m_best.iAgreeing, kSample)) / m_dAll;
    return std::exp(static_cast<double>(m_iSamples) * std::log1p(-std::min(dShare, 1.0)));
  }

  // What sample k is carried on to; *pAgreeing gets a flag for each point.
  Support Evaluate(std::int64_t k, std::vector<char>* pAgreeing) const {
    const int n = static_cast<int>(m_points.size());
    int aiSample[kSample];
    if (m_bExhaustive) {
      Unrank(k, aiSample);
    } else {
      m_random.Sample(static_cast<std::uint64_t>(k), n, kSample, aiSample);
    }
    const ZuSimilarityOptions equalWeights;
    SimilarityModel model(m_points, equalWeights);
    pAgreeing->assign(m_points.size(), 0);
    for (int i : aiSample) (*pAgreeing)[static_cast<std::size_t>(i)] = 1;
    Support support;
    for (int i = 0; i <= kRefinements; ++i) {
      if (model.Start(*pAgreeing) != SimilarityModel::Defect::None) return Support();
      std::vector<char> agreeing(m_points.size(), 0);
      const Support found = Agreeing(model, i == 0 ? kWidened : 1.0, &agreeing);
      if (found.iAgreeing < kSample) return Support();
      const bool bEnd = i > 0 && agreeing == *pAgreeing;
      pAgreeing->swap(agreeing);
      support = found;
      if (bEnd) break;
    }
    return support;
  }

  Support Agreeing(const SimilarityModel& model, double dTolerances,
                   std::vector<char>* pAgreeing) const {
    const double dLimit = std::pow(dTolerances * m_options.dTolerance, 2);
    Support support;
    support.dSquares = 0.0;
    for (std::size_t u = 0; u < m_points.size(); ++u) {
      double adE[3];
      model.Misclosure(static_cast<int>(u), adE);
      const double d = adE[0] * adE[0] + adE[1] * adE[1] + adE[2] * adE[2];
      if (!(d <= dLimit)) continue;
      (*pAgreeing)[u] = 1;
      ++support.iAgreeing;
      support.dSquares += d;
    }
    return support;
  }

  const std::vector<CommonPoint>& m_points;
  const ZuConsensusOptions& m_options;
  zu::internal::CounterRandom m_random;
  bool m_bExhaustive;
  double m_dAll;
  Support m_best;
  std::int64_t m_iBest = 0, m_iSamples = 0;
};

}  // namespace

ZuConsensusResult ZuFindConsensus(const ZuPointList& target, const ZuPointList& source,
                                  const ZuConsensusOptions& options) {
  ZuConsensusResult result;
  auto common = zu::internal::FindCommonPoints(ZuSortHelper<ZuPoint>(&target), source, {});
  if (!common.strFault.empty()) {
    result.status = ZuAdjustStatus::NotFinite;
    result.strReason = common.strFault;
    return result;
  }
  if (common.points.size() < kSample) {
    result.strReason = std::to_string(common.points.size()) + " common points, " +
                       std::to_string(kSample) + " are needed";
    return result;
  }
  for (CommonPoint& p : common.points) {  // accuracies play no part: the tolerance is one for all
    std::fill_n(p.sx, 3, 0.0);
    std::fill_n(p.sy, 3, 1.0);
  }
  Search search(common.points, options);
  search.Run();
  search.StoreTo(&result);
  return result;
}
