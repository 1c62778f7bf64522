// A second way to the robust merge: step by step on lists, as one would tell it, every move of
// points between lists a real one. Slow and plain; for comparison.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <vector>

#include "zu/transform/trafo3d.h"

class PlainRobustMerge {
 public:
  ZuTrafo3d trafo;
  int iTrials = 0;

  eTrafo3DStatus Run(ZuPointList* pResult, ZuPointList* pBad, ZuPointList* pBadControl,
                     const ZuPointList& listA, const ZuPointList& listB, double dTolerance,
                     bool bAbsolute, double dBlend, int iMinPoints, int iExtraPoints,
                     int iExtraSample) {
    Split(listA, listB);
    const int n = m_CommonB.Count();
    if (n < iMinPoints) return eTrafo3DTooFewPoints;
    if (!bAbsolute) dTolerance *= LargestSide();
    m_dTolerance2 = dTolerance * dTolerance;
    m_iMinPoints = iMinPoints;
    if (CalcAndCheck(m_CommonB) != eRobustOk) {
      if (n < iMinPoints + iExtraPoints) return eTrafo3DTooFewPoints;
      Search(n, iExtraSample + 4);
      if (m_Best.empty()) return eTrafo3DNoSolution;
      ZuPointList best;
      MoveIds(m_Best, &best);
      if (!trafo.CalcByControlPoints(&m_CommonA, &best, iMinPoints, false)) {
        return trafo.GetStatus();
      }
      best.MoveTo(&m_CommonB);
    }
    ZuPointList good, bad, badControl;
    trafo.Transform(&good, &bad, &badControl, &m_CommonB, dTolerance,
                    ZuSortHelper<ZuPoint>(&m_CommonA), dBlend);
    bad.MoveTo(pBad != nullptr ? pBad : pResult);
    if (pBadControl != nullptr) badControl.MoveTo(pBadControl);
    good.MoveTo(pResult);
    trafo.InPlaceTransform(&m_OnlyB);
    m_OnlyB.MoveTo(pResult);
    m_OnlyA.MoveTo(pResult);
    return eTrafo3DOk;
  }

 private:
  void Split(const ZuPointList& listA, const ZuPointList& listB) {
    m_OnlyA = listA;
    for (const ZuPoint* p = listB.First(); p != nullptr; p = p->Next()) {
      ZuPoint* pPartner = m_OnlyA.Find(p->GetId());
      (pPartner != nullptr ? m_CommonB : m_OnlyB).Add(*p);
      if (pPartner == nullptr) continue;
      m_CommonA.Add(m_OnlyA.Subtract(pPartner));
      m_Ids.push_back(p->GetId());
    }
    for (ZuPointList* pList : {&m_CommonA, &m_CommonB, &m_OnlyA, &m_OnlyB}) {
      for (ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) p->ClearFlag(0x40 | 0x800);
    }
  }

  double LargestSide() const {
    double dSide = 0.0;
    for (double ZuPoint::*pd : {&ZuPoint::m_dX, &ZuPoint::m_dY, &ZuPoint::m_dZ}) {
      double dMin = INFINITY, dMax = -INFINITY;
      for (const ZuPoint* p = m_CommonA.First(); p != nullptr; p = p->Next()) {
        dMin = std::min(dMin, p->*pd);
        dMax = std::max(dMax, p->*pd);
      }
      dSide = std::max(dSide, dMax - dMin);
    }
    return dSide;
  }

  // Squared residual of a point against its partner, axis by axis into *pdSquares.
  double Residual(const ZuMatrix& map, const ZuPoint& point, double* pdSquares = nullptr) const {
    ZuPoint p(point);
    map.PTrans3D(&p);
    const ZuPoint* q = m_CommonA.Find(p.GetId());
    const double d[] = {q->m_dX - p.m_dX, q->m_dY - p.m_dY, q->m_dZ - p.m_dZ};
    for (int i = 0; i < 3 && pdSquares != nullptr; ++i) pdSquares[i] += d[i] * d[i];
    return d[0] * d[0] + d[1] * d[1] + d[2] * d[2];
  }

  eRobustStatus CalcAndCheck(const ZuPointList& source) {
    if (!trafo.CalcByControlPoints(&m_CommonA, &source, m_iMinPoints, false)) {
      return eRobustCalcFailed;
    }
    const ZuMatrix map = trafo.GetAsMatrix();
    double adSquares[3] = {}, dMax = 0.0, dMean = 0.0;
    for (const ZuPoint* p = source.First(); p != nullptr; p = p->Next()) {
      dMax = std::max(dMax, Residual(map, *p, adSquares));
    }
    for (const double dSquares : adSquares) {
      const double dRms = std::sqrt(dSquares / source.Count());
      dMean += dRms * dRms;
    }
    if (dMean > m_dTolerance2) {
      return dMax > m_dTolerance2 ? eRobustRmsAndMaxTooLarge : eRobustRmsTooLarge;
    }
    return dMax > m_dTolerance2 ? eRobustMaxTooLarge : eRobustOk;
  }

  void Search(int n, int k) {
    const int iLimit = std::min(std::max(2 * n, 12), 50);
    for (iTrials = 0; iTrials < iLimit;) {
      ++iTrials;
      ZuPointList sample;
      for (const unsigned int uId : Draw(n, k)) {
        sample.Add(m_CommonB.Subtract(uId));
      }
      Trial(&sample);
      sample.MoveTo(&m_CommonB);
      if (static_cast<double>(m_Best.size()) > 0.8 * n) return;
    }
  }

  void Trial(ZuPointList* pSample) {
    if (CalcAndCheck(*pSample) != eRobustOk) return;
    const ZuMatrix map = trafo.GetAsMatrix();
    std::set<unsigned int> inliers;
    for (const ZuPoint* p = m_CommonB.First(); p != nullptr; p = p->Next()) {
      if (Residual(map, *p) <= m_dTolerance2) inliers.insert(p->GetId());
    }
    for (const ZuPoint* p = pSample->First(); p != nullptr; p = p->Next()) {
      inliers.insert(p->GetId());
    }
    MoveIds(inliers, pSample);
    if (!trafo.CalcByControlPoints(&m_CommonA, pSample, m_iMinPoints, false)) return;
    if (inliers.size() > m_Best.size()) m_Best = inliers;
  }

  void MoveIds(const std::set<unsigned int>& ids, ZuPointList* pTo) {
    for (ZuPoint* p = m_CommonB.First(); p != nullptr;) {
      ZuPoint* pNext = p->Next();
      if (ids.count(p->GetId()) != 0) m_CommonB.Move(p, *pTo);
      p = pNext;
    }
  }

  // The ids of a new subset, in the order of the table. A subset is told by its ids themselves.
  std::vector<unsigned int> Draw(int n, int k) {
    double dCombinations = 0.0;
    if (k <= n) {
      dCombinations = 1.0;
      const int iSmaller = std::min(k, n - k);
      for (int i = 1; i <= iSmaller; ++i) dCombinations = dCombinations * (n - iSmaller + i) / i;
      dCombinations = std::ceil(dCombinations + 0.5);
    }
    std::set<unsigned int> drawn;
    for (int i = 0; i <= 40; ++i) {
      const bool bEnough =
          dCombinations != 0.0 && static_cast<double>(m_Seen.size()) > 0.8 * dCombinations;
      if (i > 0 && bEnough) break;
      drawn.clear();
      while (static_cast<int>(drawn.size()) < std::min(k, n)) {
        double r = 0.0;
        for (int j = 0; j < 3; ++j) r += std::rand() % 32768;
        drawn.insert(
            std::min(static_cast<unsigned int>(r / 98301.0 * n), static_cast<unsigned int>(n) - 1));
      }
      if (m_Seen.insert(drawn).second) break;
    }
    std::vector<unsigned int> ids;
    for (const unsigned int u : drawn) ids.push_back(m_Ids[u]);
    return ids;
  }

  ZuPointList m_CommonA, m_CommonB, m_OnlyA, m_OnlyB;
  std::vector<unsigned int> m_Ids;
  std::set<std::set<unsigned int>> m_Seen;
  std::set<unsigned int> m_Best;
  double m_dTolerance2 = 0.0;
  int m_iMinPoints = 0;
};
