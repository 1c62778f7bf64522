// The merge of two point lists when some of the common points are wrong.
#include <algorithm>
#include <cstdint>
#include <unordered_set>
#include <vector>

#include "zu/numerics/bounding_box3d.h"
#include "zu/transform/internal/point_flags.h"
#include "zu/transform/internal/point_pair.h"
#include "zu/transform/random_index.h"
#include "zu/transform/trafo3d.h"

using zu::internal::PointPair;
using zu::internal::PointPairs;

namespace {

constexpr int kMinTrials = 12;
constexpr int kMaxTrials = 50;
constexpr int kSampleSize = 4;   // and the caller's extra points
constexpr double kEnough = 0.8;  // share of the common points that ends the search

// The two lists, taken apart into copies. common[k] is the pair of id ids[k], in the order of B.
struct SplitLists {
  SplitLists(const ZuPointList& listA, const ZuPointList& listB);

  ZuPointList commonA, commonB, onlyA, onlyB;
  PointPairs common;
  ZuIdTable ids;
  ZuBoundingBox3d box;  // of commonA
};

void CopyCleared(const ZuPointList& in, ZuPointList* pOut) {
  in.CopyTo(pOut);
  for (ZuPoint* p = pOut->First(); p != nullptr; p = p->Next()) {
    p->ClearFlag(kTransformed | kRejected);
  }
}

SplitLists::SplitLists(const ZuPointList& listA, const ZuPointList& listB) {
  CopyCleared(listA, &onlyA);
  CopyCleared(listB, &onlyB);
  const ZuSortHelper<ZuPoint> indexA(&onlyA);
  std::unordered_set<unsigned int> taken;
  for (ZuPoint *p = onlyB.First(), *pNext; p != nullptr; p = pNext) {
    pNext = p->Next();
    ZuPoint* pPartner = p->GetId() != 0 ? indexA.Find(p->GetId()) : nullptr;
    // Of an id that B holds twice the first has the partner.
    if (pPartner == nullptr || !taken.insert(p->GetId()).second) continue;
    commonA.Add(onlyA.Subtract(pPartner));
    commonB.Add(onlyB.Subtract(p));
    common.push_back({p, pPartner});
    ids.Add(p->GetId());
    box.Update(pPartner->m_dX, pPartner->m_dY, pPartner->m_dZ);
  }
}

}  // namespace

// The search for the largest set of common points that agree. Points are numbered as in the split
// lists; `m_Pool` is the order in which they stand, which the moves of samples change from trial to
// trial, and with it the order of the sums.
class ZuTrafo3d::RobustSearch {
 public:
  RobustSearch(ZuTrafo3d& trafo, const SplitLists& lists, double dTolerance2, int iMinPoints)
      : m_Trafo(trafo), m_Lists(lists), m_dTolerance2(dTolerance2), m_iMinPoints(iMinPoints) {
    for (int k = 0; k < Count(); ++k) m_Pool.push_back(k);
  }

  // True when a sample was supported.
  bool Run(int iSampleSize) {
    const int iTrials = static_cast<int>(
        std::clamp<std::int64_t>(2 * static_cast<std::int64_t>(Count()), kMinTrials, kMaxTrials));
    for (int i = 0; i < iTrials; ++i) {
      MoveSample(m_Random.Draw(m_Lists.ids, iSampleSize));
      const bool bBetter = Try();
      m_Pool.insert(m_Pool.end(), m_Sample.begin(), m_Sample.end());
      if (bBetter && static_cast<double>(m_iBest) > kEnough * Count()) break;
    }
    return m_iBest > 0;
  }

  // The points of the best set in the order of the pool, which then stand at its end.
  PointPairs TakeBest() {
    Move(m_Best);
    m_Pool.insert(m_Pool.end(), m_Sample.begin(), m_Sample.end());
    return Pairs(m_Sample);
  }

  const std::vector<int>& Pool() const { return m_Pool; }

 private:
  using Marks = std::vector<unsigned char>;  // a point each

  int Count() const { return static_cast<int>(m_Lists.common.size()); }

  PointPairs Pairs(const std::vector<int>& numbers) const {
    PointPairs pairs;
    pairs.reserve(numbers.size());
    for (const int k : numbers) pairs.push_back(m_Lists.common[static_cast<std::size_t>(k)]);
    return pairs;
  }

  // Moves the points drawn from the pool to the sample, in the order of the draw.
  void MoveSample(const std::vector<unsigned int>& drawn) {
    Marks marks(m_Lists.common.size());
    for (const unsigned int k : drawn) marks[k] = 1;
    Move(marks);
    m_Sample.assign(drawn.begin(), drawn.end());
  }

  // Empties the sample and moves the marked points of the pool to it, in the order of the pool.
  void Move(const Marks& marks) {
    m_Sample.clear();
    Append(marks);
  }

  void Append(const Marks& marks) {
    const auto isMarked = [&](int k) { return marks[static_cast<std::size_t>(k)] != 0; };
    std::copy_if(m_Pool.begin(), m_Pool.end(), std::back_inserter(m_Sample), isMarked);
    m_Pool.erase(std::remove_if(m_Pool.begin(), m_Pool.end(), isMarked), m_Pool.end());
  }

  // Estimates from the sample, takes those in that agree, and keeps the set if it is the largest so
  // far. The earliest of equals wins.
  bool Try() {
    if (m_Trafo.RobustCalcAndCheckByControlPoints(Pairs(m_Sample), m_dTolerance2, m_iMinPoints) !=
        eRobustOk) {
      return false;
    }
    Marks inliers(m_Lists.common.size());
    int iInliers = static_cast<int>(m_Sample.size());
    const ZuMatrix map = m_Trafo.GetAsMatrix();
    for (const int k : m_Pool) {
      if (!Agrees(map, m_Lists.common[static_cast<std::size_t>(k)])) continue;
      inliers[static_cast<std::size_t>(k)] = 1;
      ++iInliers;
    }
    Append(inliers);
    if (!m_Trafo.CalcByPairs(Pairs(m_Sample), m_iMinPoints, false)) return false;
    if (iInliers <= m_iBest) return false;
    for (const int k : m_Sample) inliers[static_cast<std::size_t>(k)] = 1;
    m_Best = std::move(inliers);
    m_iBest = iInliers;
    return true;
  }

  bool Agrees(const ZuMatrix& map, const PointPair& pair) const {
    double x = pair.pSource->m_dX, y = pair.pSource->m_dY, z = pair.pSource->m_dZ;
    map.PTrans3D(&x, &y, &z);
    const double dx = pair.pTarget->m_dX - x, dy = pair.pTarget->m_dY - y,
                 dz = pair.pTarget->m_dZ - z;
    return dx * dx + dy * dy + dz * dz <= m_dTolerance2;
  }

  ZuTrafo3d& m_Trafo;
  const SplitLists& m_Lists;
  double m_dTolerance2;
  int m_iMinPoints;
  ZuGenerateRandomIndex m_Random;
  std::vector<int> m_Pool, m_Sample;
  Marks m_Best;
  int m_iBest = 0;
};

eRobustStatus ZuTrafo3d::RobustCalcAndCheckByControlPoints(const PointPairs& pairs,
                                                           double dTolerance2, int iMinPoints) {
  if (!CalcByPairs(pairs, iMinPoints, false)) return eRobustCalcFailed;
  return RobustCheckTransformQuality(pairs, dTolerance2);
}

eRobustStatus ZuTrafo3d::RobustCheckTransformQuality(const PointPairs& pairs, double dTolerance2) {
  ResetResiduals();
  ResidualSums sums;
  const ZuMatrix map = GetAsMatrix();
  for (const PointPair& pair : pairs) {
    double x = pair.pSource->m_dX, y = pair.pSource->m_dY, z = pair.pSource->m_dZ;
    map.PTrans3D(&x, &y, &z);
    pair.pSource->m_dRedu1 = pair.pTarget->m_dX - x;
    pair.pSource->m_dRedu2 = pair.pTarget->m_dY - y;
    pair.pSource->m_dRedu3 = pair.pTarget->m_dZ - z;
    AddResiduals(sums, *pair.pSource);
    NoteWorst(sums, pair.pSource);
  }
  FinishResiduals(sums);
  const bool bMean = m_dRmsX * m_dRmsX + m_dRmsY * m_dRmsY + m_dRmsZ * m_dRmsZ > dTolerance2;
  const bool bMax = sums.dMax > dTolerance2;
  if (bMean) return bMax ? eRobustRmsAndMaxTooLarge : eRobustRmsTooLarge;
  return bMax ? eRobustMaxTooLarge : eRobustOk;
}

eTrafo3DStatus ZuTrafo3d::RobustCalcByControlPointsAndTransform(
    ZuPointList* pResult, ZuPointList* pBad, ZuPointList* pBadControl, const ZuPointList& listA,
    const ZuPointList& listB, double dTolerance, bool bAbsoluteTolerance, double dBlend,
    int iMinPoints, bool, int iExtraPoints, int iExtraSample) {
  m_eStatus = eTrafo3DOk;
  SplitLists lists(listA, listB);
  m_tCommonIds = lists.ids;
  const int n = static_cast<int>(lists.common.size());
  const auto fail = [this](eTrafo3DStatus eStatus) {
    m_pMaxResidualPoint = nullptr;  // it stood in a list that ends here
    return m_eStatus = eStatus;
  };
  if (n < iMinPoints) return fail(eTrafo3DTooFewPoints);
  if (!bAbsoluteTolerance) dTolerance *= lists.box.GetMax();
  const double dTolerance2 = dTolerance * dTolerance;

  if (RobustCalcAndCheckByControlPoints(lists.common, dTolerance2, iMinPoints) != eRobustOk) {
    if (n < static_cast<std::int64_t>(iMinPoints) + iExtraPoints) return fail(eTrafo3DTooFewPoints);
    RobustSearch search(*this, lists, dTolerance2, iMinPoints);
    const std::int64_t iSample = static_cast<std::int64_t>(iExtraSample) + kSampleSize;
    if (!search.Run(static_cast<int>(std::clamp<std::int64_t>(iSample, 0, n)))) {
      return fail(eTrafo3DNoSolution);
    }
    if (!CalcByPairs(search.TakeBest(), iMinPoints, false)) return fail(m_eStatus);
    lists.commonB.SubtractAll();
    for (const int k : search.Pool()) {
      lists.commonB.Add(lists.common[static_cast<std::size_t>(k)].pSource);
    }
  }

  ZuPointList good, bad, badControl;
  Transform(&good, &bad, &badControl, &lists.commonB, dTolerance,
            ZuSortHelper<ZuPoint>(&lists.commonA), dBlend);
  bad.MoveTo(pBad != nullptr ? pBad : pResult);
  badControl.MoveTo(pBadControl);
  good.MoveTo(pResult);
  InPlaceTransform(&lists.onlyB);
  lists.onlyB.MoveTo(pResult);
  lists.onlyA.MoveTo(pResult);
  if (pResult == nullptr) m_pMaxResidualPoint = nullptr;  // it ends with the local lists
  return m_eStatus = eTrafo3DOk;
}
