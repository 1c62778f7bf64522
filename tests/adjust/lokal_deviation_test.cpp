// Standard deviations of a local system against differences of the core's own transformation.
#include "zu/adjust/lokal_deviation.h"

#include <gtest/gtest.h>

#include <cmath>

#include "zu/adjust/similarity.h"
#include "zu/transform/trafo3d.h"

namespace {

constexpr double kAt[][3] = {{10, 10, 5}, {11, 14, 6}, {7, 10, 5}, {10, 12, 9}, {-3, 20, 1}};
constexpr double kSds[] = {0.002, 0.003, 0.001};

ZuPointList Points(double dFar) {
  ZuPointList points;
  for (unsigned i = 0; i < 5; ++i) {
    ZuPoint p(i + 1, kAt[i][0] + dFar, kAt[i][1] + dFar, kAt[i][2]);
    p.m_dDX = kSds[0] * (1 + i % 3);
    p.m_dDY = kSds[1];
    p.m_dDZ = kSds[2];
    points.Add(p);
  }
  return points;
}

double* Coordinate(ZuPoint* p, int k) { return k == 0 ? &p->m_dX : k == 1 ? &p->m_dY : &p->m_dZ; }
double Sd(const ZuPoint& p, int k) { return k == 0 ? p.m_dDX : k == 1 ? p.m_dDY : p.m_dDZ; }

ZuPointList Local(const ZuLokalSystem& system, const ZuPointList& points, ZuTrafo3d* pTrafo) {
  ZuPointList local(points);
  EXPECT_TRUE(pTrafo->CalcByLocalSystem(system, &points, system.m_uScale1IdA ? 0.0 : 1.0, 1.0));
  pTrafo->InPlaceTransform(&local);
  return local;
}

}  // namespace

// Every axis and plane, with and without scales, an origin of its own: variances of all coordinates
// equal those of central differences.
TEST(LokalDeviation, EqualsDifferencesOfTheCore) {
  for (int i = 0; i < 12; ++i) {
    ZuLokalSystem system;
    const int aiAxis[] = {1, 1, 2, 2, 3, 3}, aiPlane[] = {4, 6, 4, 5, 5, 6};
    system.m_iAxisMode = aiAxis[i % 6];
    system.m_iPlaneMode = aiPlane[i % 6];
    system.m_uIdA = 1;
    system.m_uIdB = 2;
    system.m_uIdC = 3;
    system.m_uIdOrigin = i % 2 ? 4 : 1;
    system.m_dOffsetX = 100.0;
    if (i >= 6) {
      system.m_uScale1IdA = 1, system.m_uScale1IdB = 2, system.m_dScale1Dist = 8.0;
      system.m_uScale2IdA = 3, system.m_uScale2IdB = 4, system.m_dScale2Dist = 11.0;
    }
    const ZuPointList points = Points(i % 3 ? 0.0 : 5e6);
    ZuTrafo3d trafo;
    const ZuPointList local = Local(system, points, &trafo);
    ZuLokalDeviation deviation;
    ASSERT_TRUE(deviation.Calc(system, points, trafo, {}));
    double adVariance[5][3] = {};
    const double h = 1e-3;
    for (int p = 0; p < 5; ++p) {
      for (int k = 0; k < 3; ++k) {
        ZuPointList moved[2] = {points, points};
        ZuTrafo3d other;
        for (int s = 0; s < 2; ++s) {
          *Coordinate(moved[s].Find(static_cast<unsigned>(p + 1)), k) += s ? h : -h;
          moved[s] = Local(system, moved[s], &other);
        }
        const double dSd = Sd(*points.Find(static_cast<unsigned>(p + 1)), k);
        for (unsigned q = 0; q < 5; ++q) {
          for (int l = 0; l < 3; ++l) {
            const double d =
                (*Coordinate(moved[1].Find(q + 1), l) - *Coordinate(moved[0].Find(q + 1), l)) /
                (2.0 * h);
            adVariance[q][l] += d * d * dSd * dSd;
          }
        }
      }
    }
    ZuSimilarityResult parameters;
    parameters.trafo = trafo;
    std::copy_n(deviation.Covariance(), 49, parameters.adCovariance);
    for (unsigned q = 0; q < 5; ++q) {
      double adCovariance[9], adByParameters[9];
      const ZuPoint& point = *points.Find(q + 1);
      deviation.PointCovariance(point, adCovariance);
      for (int l = 0; l < 3; ++l) {
        EXPECT_NEAR(std::sqrt(adCovariance[4 * l]), std::sqrt(adVariance[q][l]), 2e-8)
            << i << " point " << q + 1 << " axis " << l;
      }
      // A point that defines nothing: parameters and its own accuracy.
      if (q != 4) continue;
      const double adOwn[9] = {point.m_dDX * point.m_dDX, 0, 0, 0,
                               point.m_dDY * point.m_dDY, 0, 0, 0,
                               point.m_dDZ * point.m_dDZ};
      parameters.CarriedCovariance(point, adOwn, adByParameters);
      for (int l = 0; l < 9; ++l) EXPECT_NEAR(adByParameters[l], adCovariance[l], 1e-12);
    }
  }
}

// What the definition sets has no deviation, and nothing told gives none.
TEST(LokalDeviation, OfOriginAndAxisIsNone) {
  ZuLokalSystem system;
  ZuPointList points = Points(0.0);
  system.Suggest(&points);
  ZuTrafo3d trafo;
  Local(system, points, &trafo);
  ZuLokalDeviation deviation;
  double ad[9];
  ASSERT_TRUE(deviation.Calc(system, points, trafo, {0.01, 0.0}));
  deviation.PointCovariance(*points.Find(1U), ad);
  for (const double d : ad) EXPECT_NEAR(d, 0.0, 1e-20);
  deviation.PointCovariance(*points.Find(2U), ad);
  EXPECT_NEAR(ad[4] + ad[8], 0.0, 1e-18);
  EXPECT_GT(ad[0], 1e-6);
  for (ZuPoint* p = points.First(); p != nullptr; p = p->Next()) p->m_dDX = p->m_dDY = p->m_dDZ = 0;
  EXPECT_FALSE(deviation.Calc(system, points, trafo, {}));
  EXPECT_TRUE(deviation.Calc(system, points, trafo, {0.01, 0.0}));
}
