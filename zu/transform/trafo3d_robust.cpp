// The merge of two point lists when some of the common points are wrong.
#include <algorithm>
#include <cstdint>
#include <numeric>
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
  common.reserve(static_cast<std::size_t>(indexA.Count()));
  for (ZuPoint *p = onlyB.First(), *pNext; p != nullptr; p = pNext) {
    pNext = p->Next();
    ZuPoint* pPartner = p->GetId() != 0 ? indexA.Find(p->GetId()) : nullptr;
    // Of an id that B holds twice the first has the partner, which carries a mark from then on.
    if (pPartner == nullptr || pPartner->IsFlagSet(kTransformed)) continue;
    pPartner->SetFlag(kTransformed);
    commonA.Add(onlyA.Subtract(pPartner));
    commonB.Add(onlyB.Subtract(p));
    common.push_back({p, pPartner});
    ids.Add(p->GetId());
    box.Update(pPartner->m_dX, pPartner->m_dY, pPartner->m_dZ);
  }
  for (ZuPoint* p = commonA.First(); p != nullptr; p = p->Next()) p->ClearFlag(kTransformed);
}

}  // namespace

// The search for the largest set of common points that agree. Points are numbered as in the split
// lists; `m_Pool` is the order in which they stand, which the moves of samples change from trial to
// trial, and with it the order of the sums.
class ZuTrafo3d::RobustSearch {
 public:
  RobustSearch(ZuTrafo3d& trafo, const SplitLists& lists, double dTolerance2, int iMinPoints)
      : m_Trafo(trafo), m_Lists(lists), m_dTolerance2(dTolerance2), m_iMinPoints(iMinPoints) {
    const std::size_t n = lists.common.size();
    m_Coordinates.reserve(n);
    for (const PointPair& pair : lists.common) {
      const ZuPoint &b = *pair.pSource, &a = *pair.pTarget;
      m_Coordinates.push_back({b.m_dX, b.m_dY, b.m_dZ, a.m_dX, a.m_dY, a.m_dZ});
    }
    m_Pool.resize(n);
    std::iota(m_Pool.begin(), m_Pool.end(), 0);
    m_Sample.reserve(n);
    m_Pairs.reserve(n);
    m_Marks.resize(n);
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
  const PointPairs& TakeBest() {
    m_Sample.clear();
    Append(m_Best);
    m_Pool.insert(m_Pool.end(), m_Sample.begin(), m_Sample.end());
    return SamplePairs();
  }

  const std::vector<int>& Pool() const { return m_Pool; }

 private:
  using Marks = std::vector<unsigned char>;  // a point each

  // A common point in both systems, for the tests of all points in each trial: the records
  // themselves stand far apart in memory.
  struct Coordinates {
    double xB, yB, zB, xA, yA, zA;
  };

  int Count() const { return static_cast<int>(m_Lists.common.size()); }

  const PointPairs& SamplePairs() {
    m_Pairs.clear();
    for (const int k : m_Sample) m_Pairs.push_back(m_Lists.common[static_cast<std::size_t>(k)]);
    return m_Pairs;
  }

  // Moves the points drawn from the pool to the sample, in the order of the draw.
  void MoveSample(const std::vector<unsigned int>& drawn) {
    std::fill(m_Marks.begin(), m_Marks.end(), static_cast<unsigned char>(0));
    for (const unsigned int k : drawn) m_Marks[k] = 1;
    m_Sample.clear();
    Append(m_Marks);
    m_Sample.assign(drawn.begin(), drawn.end());
  }

  // Moves the marked points of the pool to the end of the sample, in the order of the pool.
  void Append(const Marks& marks) {
    auto itKept = m_Pool.begin();
    for (const int k : m_Pool) {
      if (marks[static_cast<std::size_t>(k)] != 0) {
        m_Sample.push_back(k);
      } else {
        *itKept++ = k;
      }
    }
    m_Pool.erase(itKept, m_Pool.end());
  }

  // Estimates from the sample, takes those in that agree, and keeps the set if it is the largest so
  // far. The earliest of equals wins.
  bool Try() {
    if (m_Trafo.RobustCalcAndCheckByControlPoints(SamplePairs(), m_dTolerance2, m_iMinPoints) !=
        eRobustOk) {
      return false;
    }
    // The marks of the sample stand; they join those that agree.
    const ZuMatrix map = m_Trafo.GetAsMatrix();
    for (const int k : m_Pool) {
      const auto u = static_cast<std::size_t>(k);
      m_Marks[u] = Agrees(map.GetData(), m_Coordinates[u]) ? 1 : 0;
    }
    Append(m_Marks);
    if (!m_Trafo.CalcByPairs(SamplePairs(), m_iMinPoints, false)) return false;
    const int iInliers = static_cast<int>(m_Sample.size());
    if (iInliers <= m_iBest) return false;
    m_Best = m_Marks;
    m_iBest = iInliers;
    return true;
  }

  // As ZuMatrix::PTrans3D with e, whose last row is (0, 0, 0, 1): w is 1 or, for a point that is
  // not finite, no number, and so is the residual then.
  bool Agrees(const double* e, const Coordinates& p) const {
    const double w = e[12] * p.xB + e[13] * p.yB + e[14] * p.zB + e[15];
    if (w != 1.0) return false;
    const double dx = p.xA - (e[0] * p.xB + e[1] * p.yB + e[2] * p.zB + e[3]);
    const double dy = p.yA - (e[4] * p.xB + e[5] * p.yB + e[6] * p.zB + e[7]);
    const double dz = p.zA - (e[8] * p.xB + e[9] * p.yB + e[10] * p.zB + e[11]);
    return dx * dx + dy * dy + dz * dz <= m_dTolerance2;
  }

  ZuTrafo3d& m_Trafo;
  const SplitLists& m_Lists;
  double m_dTolerance2;
  int m_iMinPoints;
  ZuGenerateRandomIndex m_Random;
  std::vector<Coordinates> m_Coordinates;
  std::vector<int> m_Pool, m_Sample;
  PointPairs m_Pairs;  // of the sample
  Marks m_Marks, m_Best;
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
