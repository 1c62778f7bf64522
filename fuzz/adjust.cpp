// Adjustments of points: a row of the input is a point, and its partner in a second system or in an
// image. Whatever the numbers are, a good result is one in all its figures, its redundancy numbers
// sum up, and it does not depend on the order of the points.
#include "fuzz/points_use.h"
#include "zu/adjust/consensus.h"
#include "zu/adjust/fit_primitives.h"
#include "zu/adjust/resection.h"
#include "zu/adjust/similarity.h"
#include "zu/adjust/trafo2d_fit.h"
#include "zu/photo/camera.h"

namespace {

constexpr int kMostPoints = 12;
constexpr double kFits = 10.0;      // sigma0 of points that are still told to be of a shape
constexpr double kRounding = 1e-3;  // of a sum of redundancy numbers, for points of any extent

ZuPointList TakeRows(const Input& input) {
  static constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWX,  eZuPointRWY,
                                                eZuPointRWZ,  eZuPointRWDX, eZuPointRWDY,
                                                eZuPointRWDZ, eZuPointRWEnd};
  ZuPointList rows;
  rows.ReadFile(input.Path(), Columns(kColumns));
  while (rows.Count() > kMostPoints) delete rows.SubtractLast();
  return rows;
}

template <class Range>
void RequireFinite(const Range& range) {
  for (const double d : range) Require(std::isfinite(d));
}

template <class Tests>
void CheckRedundancy(const Tests& tests, int iRedundancy) {
  double dSum = 0.0;
  for (const ZuPointTest& test : tests) {
    if (test.bUsed) dSum += test.Redundancy();
  }
  Require(std::fabs(dSum - iRedundancy) <= kRounding);
}

void CheckSimilarity(const ZuPointList& rows, unsigned uOption) {
  ZuPointList source, target, reversed;
  for (const ZuPoint* p = rows.First(); p != nullptr; p = p->Next()) {
    source.Add(ZuPoint(p->GetId(), p->m_dX, p->m_dY, p->m_dZ));
    target.Add(ZuPoint(p->GetId(), p->m_dDX, p->m_dDY, p->m_dDZ));
  }
  ZuSimilarityOptions options;
  options.kind = static_cast<ZuSimilarityKind>(uOption & 3U);
  options.tests.bSnoop = (uOption & 4U) != 0;
  const ZuSimilarityResult result = ZuAdjustSimilarity(target, source, options);
  Require(result.IsGood() == result.strReason.empty());
  if (result.IsGood()) {
    Require(std::isfinite(result.trafo.m_dScale) && result.trafo.m_dScale > 0.0);
    RequireFinite(result.adCovariance);
    CheckRedundancy(result.points, result.iRedundancy);
    result.Carry(&source);
  }
  ZuConsensusOptions search;
  search.dTolerance = 0.5;
  const ZuConsensusResult found = ZuFindConsensus(target, source, search);
  Require(found.IsGood() == found.strReason.empty());
}

void CheckPlane(const ZuPointList& rows, unsigned uOption) {
  std::vector<ZuTrafo2dPair> pairs;
  for (const ZuPoint* p = rows.First(); p != nullptr; p = p->Next()) {
    ZuTrafo2dPair& pair = pairs.emplace_back();
    pair.uId = p->GetId();
    pair.adSource[0] = p->m_dX, pair.adSource[1] = p->m_dY;
    pair.adTarget[0] = p->m_dDX, pair.adTarget[1] = p->m_dDY;
  }
  ZuTrafo2dOptions options;
  options.tests.bSnoop = (uOption & 16U) != 0;
  const ZuTrafo2dFit fit = ZuFitTrafo2d(static_cast<ZuTrafo2dKind>(uOption % 5U), pairs, options);
  if (fit.eStatus != ZuAdjustStatus::Good) return;
  RequireFinite(fit.coefficients);
  RequireFinite(fit.covariance);
  CheckRedundancy(fit.points, fit.iRedundancy);
}

template <class Fit>
void CheckFit(Fit (*pfnFit)(const std::vector<ZuFitPoint>&, const ZuFitOptions&),
              const std::vector<ZuFitPoint>& points) {
  const Fit shape = pfnFit(points, {});
  Require(shape.fit.strFree.empty() || shape.fit.eStatus == ZuAdjustStatus::RankDefect);
  if (shape.fit.eStatus != ZuAdjustStatus::Good) return;
  RequireFinite(shape.adCov);
  Require(std::isfinite(shape.fit.dSigma0) && std::isfinite(shape.fit.dRms));
  double dSum = 0.0;
  for (const ZuFittedPoint& p : shape.fit.points) {
    Require(std::isfinite(p.dDistance));
    if (p.bUsed) dSum += p.test.Redundancy();
  }
  // Far from any such shape the numbers of the last step are no longer those of the result.
  const bool bFits = shape.fit.bSigmaTold && shape.fit.dSigma0 < kFits;
  Require(!bFits || std::fabs(dSum - shape.fit.iRedundancy) <= kRounding);
  const std::vector<ZuFitPoint> reversed(points.rbegin(), points.rend());
  Require(IsSame(pfnFit(reversed, {}).fit.dSigma0, shape.fit.dSigma0));
}

void CheckShapes(const ZuPointList& rows, unsigned uOption) {
  std::vector<ZuFitPoint> points;
  for (const ZuPoint* p = rows.First(); p != nullptr; p = p->Next()) {
    ZuFitPoint& point = points.emplace_back();
    point.uId = p->GetId();
    point.adX[0] = p->m_dX, point.adX[1] = p->m_dY, point.adX[2] = p->m_dZ;
    if ((uOption & 8U) == 0) continue;
    for (int i = 0; const double d : {p->m_dDX, p->m_dDY, p->m_dDZ}) point.adCov[4 * i++] = d * d;
  }
  CheckFit(&ZuFitPlane, points);
  CheckFit(&ZuFitLine, points);
  CheckFit(&ZuFitSphere, points);
  if ((uOption & 32U) != 0) CheckFit(&ZuFitCylinder, points);  // slow
}

void CheckResection(const ZuPointList& rows) {
  ZuCamera camera;
  camera.m_dC = 5.0;
  std::vector<ZuResectionPoint> points;
  for (const ZuPoint* p = rows.First(); p != nullptr; p = p->Next()) {
    ZuResectionPoint& point = points.emplace_back();
    point.image.uId = p->GetId();
    point.image.x = p->m_dX, point.image.y = p->m_dY;
    point.X = p->m_dDX, point.Y = p->m_dDY, point.Z = p->m_dDZ;
  }
  const ZuResectionResult result = ZuResect(camera, points);
  Require((result.status == ZuAdjustStatus::Good) == result.strWhy.empty());
  if (result.status == ZuAdjustStatus::Good) RequireFinite(result.pose.covariance);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  const unsigned uOption = input.Option() ^ '\n';
  const ZuPointList rows = TakeRows(input);
  CheckSimilarity(rows, uOption);
  CheckPlane(rows, uOption);
  CheckShapes(rows, uOption);
  CheckResection(rows);
  return 0;
}
