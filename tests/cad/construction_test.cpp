// Numbers named "40 digits" come from a root search of the normal equations in mpmath.
#include "tests/support/random_geometry.h"
#include "tests/support/test.h"
#include "zu/cad/arc.h"
#include "zu/cad/balanced_line.h"
#include "zu/cad/cad_plane.h"
#include "zu/cad/ortho_line.h"
#include "zu/cad/rectangle.h"
#include "zu/cad/sight_intersection.h"
#include "zu/rectify/plane.h"

namespace {

using Points = std::vector<ZuPoint2d>;
constexpr double kPi = std::numbers::pi, kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinite = std::numeric_limits<double>::infinity();
const ZuPoint2d kFar(4500000.0, -5400000.0);

void ExpectNear(const ZuPoint2d& p, double x, double y, double dTolerance = 1e-9) {
  EXPECT_NEAR(p.x, x, dTolerance);
  EXPECT_NEAR(p.y, y, dTolerance);
}

Points Moved(Points points, const ZuVector2d& v, double dScale = 1.0) {
  for (ZuPoint2d& p : points) p = (dScale * p.AsVector() + v).AsPoint();
  return points;
}

// W. Gander, G. Golub, R. Strebel, "Least-squares fitting of circles and ellipses", 1994: centre
// (4.7398, 2.9835), radius 4.7142. Further digits and deviations: 40 digits.
TEST(CadArc, BestFitIsThePublishedOne) {
  const Points points = {{1, 7}, {2, 6}, {5, 8}, {7, 7}, {9, 5}, {3, 7}};
  const ZuCadArc arc = ZuCadArc::BestFit(points);
  ASSERT_EQ(arc.fit.eStatus, eCadOk);
  ExpectNear(arc.ptCentre, 4.7397824109060740, 2.9835326992924752, 1e-13);
  EXPECT_NEAR(arc.dRadius, 4.7142260377921097, 1e-13);
  EXPECT_NEAR(arc.fit.dSigma0, 0.639687183495093522, 1e-13);
  const double adSd[] = {0.477593068599434, 1.54291285336237, 1.22431910044462};
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(std::sqrt(arc.adCov[4 * i]), adSd[i], 1e-12);
  EXPECT_LT(arc.dSweep, 0.0);  // from (1, 7) clockwise to (9, 5)
  EXPECT_NEAR((arc.Evaluate(1.0) - arc.ptCentre).Angle({9 - 4.73978241, 5 - 2.98353270}), 0, 1e-8);
  const ZuCadArc far = ZuCadArc::BestFit(Moved(points, kFar.AsVector(), 1e3), 2.0);
  ExpectNear(far.ptCentre, kFar.x + 4739.7824109060740, kFar.y + 2983.5326992924752, 1e-8);
  EXPECT_NEAR(std::sqrt(far.adCov[8]), 2.0 * 1.22431910044462 / 0.639687183495094, 1e-8);
}

TEST(CadArc, PointsOfACircleGiveItBack) {
  RandomGeometry random(5);
  for (int i = 0; i < 200; ++i) {
    const ZuPoint2d m(random.Value(1e3), random.Value(1e3));
    const double r = 1.0 + std::fabs(random.Value(50.0)), dFrom = random.Value(kPi);
    const double dSweep = random.Value(6.2);
    Points p;
    for (const double t : {0.0, 0.31, 0.62, 0.8, 1.0}) {
      p.push_back(m + r * ZuVector2d::FromDirection(dFrom + t * dSweep));
    }
    if (std::fabs(dSweep) < 0.5) continue;
    const bool bLong = std::fabs(dSweep) > kPi, bLeft = (dSweep > 0.0) != bLong;
    for (const ZuCadArc& arc :
         {ZuCadArc::ByThreePoints(p[0], p[2], p[4]),
          ZuCadArc::ByRadius(p[0], p[4], r, bLeft, bLong),
          ZuCadArc::ByCentre(m, p[0], p[4], dSweep > 0.0), ZuCadArc::BestFit(p)}) {
      ASSERT_EQ(arc.fit.eStatus, eCadOk);
      ExpectNear(arc.ptCentre, m.x, m.y, 1e-8);
      EXPECT_NEAR(arc.dRadius, r, 2e-9);
      if (arc.distances.size() == 5) continue;  // its widest gap may be a part
      EXPECT_NEAR(arc.dSweep, dSweep, 1e-8);
      ExpectNear(arc.Evaluate(0.31), p[1].x, p[1].y, 1e-7);
      EXPECT_NEAR(arc.Length(), r * std::fabs(dSweep), 1e-7);
      EXPECT_NEAR(arc.Rise(), r * (1.0 - std::cos(0.5 * dSweep)), 1e-7);
    }
  }
}

TEST(CadArc, ToldWhereThereIsNone) {
  const ZuPoint2d o, a(1, 0), b(2, 0), c(3, 1e-12);
  EXPECT_EQ(ZuCadArc::ByThreePoints(a, b, c).fit.eStatus, eCadCollinear);
  EXPECT_EQ(ZuCadArc::ByThreePoints(a, b, a).fit.eStatus, eCadCoincident);
  EXPECT_EQ(ZuCadArc::ByThreePoints(a, b, {kNan, 0}).fit.eStatus, eCadNotFinite);
  EXPECT_EQ(ZuCadArc::ByRadius(o, b, 0.999, true, false).fit.eStatus, eCadNoIntersection);
  EXPECT_EQ(ZuCadArc::ByRadius(o, b, 1.0, true, false).dSweep, kPi);
  EXPECT_EQ(ZuCadArc::ByRadius(b, b, 1.0, true, false).fit.eStatus, eCadCoincident);
  EXPECT_EQ(ZuCadArc::ByRadius(o, b, kInfinite, true, false).fit.eStatus, eCadNotFinite);
  EXPECT_EQ(ZuCadArc::ByCentre(o, o, b, true).fit.eStatus, eCadCoincident);
  EXPECT_NEAR(ZuCadArc::ByCentre(o, a, b, true).dSweep, 2 * kPi, 0.0);
  EXPECT_EQ(ZuCadArc::ByCentre(o, a, b, true).distances[1], 1.0);
  EXPECT_EQ(ZuCadArc::BestFit({a, b}).fit.eStatus, eCadTooFew);
  EXPECT_EQ(ZuCadArc::BestFit({a, b, c, {9, 0}}).fit.eStatus, eCadCollinear);
  EXPECT_EQ(ZuCadArc::BestFit({kFar, kFar, kFar}).fit.eStatus, eCadCoincident);
  EXPECT_EQ(ZuCadArc::BestFit({a, b, {0, kInfinite}}).fit.eStatus, eCadNotFinite);
}

ZuCadSight Direction(double x, double y, double d) { return {{x, y}, ZuCadSight::eDirection, d}; }
ZuCadSight Distance(double x, double y, double d) { return {{x, y}, ZuCadSight::eDistance, d}; }

// More than two: 40 digits.
TEST(CadIntersection, TwoAndMoreMeasurements) {
  const auto meet = [](std::vector<ZuCadSight> sights, bool bLeft, double x, double y) {
    for (ZuCadSight& s : sights) s.ptKnown += kFar.AsVector();
    const ZuCadPosition p = ZuCadIntersect(sights, bLeft);
    EXPECT_EQ(p.fit.eStatus, eCadOk);
    ExpectNear(p.pt, kFar.x + x, kFar.y + y, 2e-9);
    return p;
  };
  meet({Direction(0, 0, kPi / 4), Direction(10, 0, 3 * kPi / 4)}, true, 5, 5);
  meet({Distance(0, 0, 5), Distance(6, 0, 5)}, true, 3, 4);
  const ZuCadPosition low = meet({Distance(0, 0, 5), Distance(6, 0, 5)}, false, 3, -4);
  EXPECT_TRUE(low.bOther);
  EXPECT_NEAR(low.dGeometry, std::asin(0.96), 1e-9);
  meet({Distance(0, 0, 4), Distance(10, 0, 6)}, true, 4, 0);  // touching
  meet({Distance(10, 5, 5), Direction(0, 0, std::atan2(3, 4))}, true, 0.8 * (11 + std::sqrt(21.0)),
       0.6 * (11 + std::sqrt(21.0)));
  meet({Direction(0, 0, .85), Direction(100, 10, 2.3), Direction(40, -60, 1.42)}, true,
       55.132633303856626, 61.083845360480527);
  meet({Distance(0, 0, 82.1), Distance(100, 10, 67.9), Distance(40, -60, 122.3)}, true,
       55.093836787365383, 61.118029520437624);
}

TEST(CadIntersection, ToldWhereThereIsNone) {
  const ZuCadSight a = Direction(0, 0, 1), r = Distance(0, 0, 1);
  for (const auto& [sights, eStatus] : Cases<std::vector<ZuCadSight>, eCadStatus>{
           {{a}, eCadTooFew},
           {{a, Direction(5, 0, 1)}, eCadParallel},
           {{a, Direction(5, 0, -0.5)}, eCadNoIntersection},  // behind the second station
           {{Direction(0, 0, 0), Direction(5, 0, kPi)}, eCadCollinear},
           {{a, Direction(0, 0, 2)}, eCadCoincident},
           {{r, Distance(3, 0, 1)}, eCadNoIntersection},
           {{r, Distance(0, 0, 2)}, eCadCoincident},
           {{r, Distance(1, 0, 5)}, eCadNoIntersection},  // one circle in the other
           {{Direction(0, 9, 0), r}, eCadNoIntersection},
           {{r, Distance(3, 0, -1)}, eCadNotFinite},
           {{a, Direction(5, kNan, 1)}, eCadNotFinite},
           {{a, Direction(5, 0, 1), Direction(9, 0, 1)}, eCadParallel}}) {
    EXPECT_EQ(ZuCadIntersect(sights).fit.eStatus, eStatus) << ZuCadStatusText(eStatus);
  }
}

TEST(CadResection, FindsThePointThatSeesTheKnownOnes) {
  RandomGeometry random(11);
  int iGood = 0;
  for (int i = 0; i < 300; ++i) {
    const ZuPoint2d p(random.Value(900), random.Value(900));
    std::vector<ZuCadSight> sights;
    const double dZero = std::fabs(random.Value(6.2));
    for (int k = 0; k < 3 + i % 2; ++k) {
      const ZuPoint2d q(random.Value(900), random.Value(900));
      sights.push_back({q, ZuCadSight::eDirection, (q - p).Direction() - dZero});
    }
    const ZuCadPosition found = ZuCadResect(sights);
    if (found.fit.eStatus != eCadOk || found.dGeometry < 0.05) continue;
    ++iGood;
    ExpectNear(found.pt, p.x, p.y, 1e-7);
    EXPECT_NEAR(std::remainder(found.dZero - dZero, 2 * kPi), 0.0, 1e-9);
  }
  EXPECT_GT(iGood, 200);
}

TEST(CadResection, FiveDirectionsAreAdjusted) {  // 40 digits
  const ZuCadPosition p =
      ZuCadResect({Direction(0, 0, -2.40359143), Direction(1000, 50, -0.78575951),
                   Direction(1200, 900, 0.38996733), Direction(400, 1300, 1.53325514),
                   Direction(-300, 700, 2.78097026)});
  ASSERT_EQ(p.fit.eStatus, eCadOk);
  ExpectNear(p.pt, 450.01350421715220, 500.00464598199013, 1e-9);
  EXPECT_NEAR(p.dZero, 0.099996539256147105, 1e-12);
  EXPECT_NEAR(p.fit.dSigma0, 3.54681843904261e-5, 1e-14);
  EXPECT_NEAR(std::sqrt(p.adCov[0]), 0.0178003707993061, 1e-10);
  EXPECT_NEAR(std::sqrt(p.adCov[4]), 0.0162037442801537, 1e-10);
  EXPECT_NEAR(std::sqrt(p.adCov[8]), 1.58818709308961e-5, 1e-13);
}

TEST(CadResection, ToldWhereThereIsNone) {
  const auto at = [](double dAngle) { return ZuVector2d::FromDirection(dAngle).AsPoint(); };
  const auto see = [](const ZuPoint2d& p, const Points& known) {
    std::vector<ZuCadSight> sights;
    for (const ZuPoint2d& q : known) {
      sights.push_back({q, ZuCadSight::eDirection, (q - p).Direction()});
    }
    return ZuCadResect(sights).fit.eStatus;
  };
  EXPECT_EQ(see(at(0.0), {at(1), at(2), at(3)}), eCadDangerousCircle);
  EXPECT_EQ(see(at(0.0), {at(1), at(2), at(3), at(5)}), eCadDangerousCircle);
  EXPECT_EQ(see(at(0.0), {at(1), at(2), at(3), {5, 5}}), eCadOk);
  EXPECT_EQ(see({0, 0}, {{1, 1}, {2, 2}, {-3, -3}}), eCadCollinear);
  EXPECT_EQ(see({0, 5}, {{1, 0}, {2, 0}, {5, 0}}),
            eCadOk);  // known ones in a line, the point aside
  EXPECT_EQ(see({0, 5}, {{0, 1}, {0, 2}, {5, 0}}), eCadOk);  // two of them seen in a line
  EXPECT_EQ(see({0, 5}, {{1, 0}, {1, 0}, {5, 0}}), eCadCoincident);
  EXPECT_EQ(see({0, 5}, {{1, 0}, {2, 0}}), eCadTooFew);
  EXPECT_EQ(see({0, 5}, {{1, 0}, {2, 0}, {kInfinite, 0}}), eCadNotFinite);
}

// The points of K. Pearson, 1901: y = 5.784 - 0.5456 x. Further digits: 40 digits.
TEST(CadBalancedLine, BestFitIsThePublishedOne) {
  const Points points = {{0.0, 5.9}, {0.9, 5.4}, {1.8, 4.4}, {2.6, 4.6}, {3.3, 3.5},
                         {4.4, 3.7}, {5.2, 2.8}, {6.1, 2.8}, {6.5, 2.4}, {7.4, 1.5}};
  for (const double dFar : {0.0, 1e6}) {
    const double dTolerance = 1e-13 + dFar * 1e-15;
    const ZuCadBalancedLine line = ZuCadBalancedLine::BestFit(Moved(points, {dFar, -dFar}));
    ASSERT_EQ(line.fit.eStatus, eCadOk);
    ASSERT_EQ(line.parts.size(), 1U);
    EXPECT_NEAR(line.parts[0].dDirection, -0.49942891481036720, dTolerance);
    EXPECT_NEAR(line.parts[0].line.getNormDistance({dFar, 5.7840437745300850 - dFar}), 0.0,
                dTolerance * 10);
    EXPECT_NEAR(line.fit.dSigma0, 0.27806760855883722, dTolerance * 10);
    EXPECT_NEAR(line.parts[0].dDirectionSd, 0.032545925421444672, dTolerance);
    EXPECT_NEAR(line.parts[0].dStraightness, 0.72648865281940414, dTolerance * 10);
  }
}

TEST(CadBalancedLine, BreaksWhereTheTolerancesAsksForIt) {
  Points points;
  for (int i = 0; i < 10; ++i) points.emplace_back(i, 0.01 * (i % 2));
  for (int i = 1; i < 10; ++i) points.emplace_back(9.005 + 0.01 * (i % 2), i);
  for (int i = 1; i < 6; ++i) points.emplace_back(9.005 - i, 9.0 + i);
  const ZuCadBalancedLine line = ZuCadBalancedLine::BestFit(points, {.dTolerance = 0.02});
  ASSERT_EQ(line.fit.eStatus, eCadOk);
  ASSERT_EQ(line.corners.size(), 4U);
  ExpectNear(line.corners[1], 9.0, 0.0, 0.03);
  ExpectNear(line.corners[2], 9.0, 9.0, 0.03);
  EXPECT_LE(line.fit.dLargest, 0.02);
  EXPECT_EQ(line.fit.iRedundancy, 24 - 6);
  const ZuCadBalancedLine same =
      ZuCadBalancedLine::BestFit(points, {.breaks = {line.parts[1].uFirst, line.parts[2].uFirst}});
  EXPECT_EQ(same.fit.dSigma0, line.fit.dSigma0);
  EXPECT_EQ(ZuCadBalancedLine::BestFit(points, {.dTolerance = 9.0}).parts.size(), 1U);
}

TEST(CadBalancedLine, ToldWhereThereIsNone) {
  const Points square = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
  const auto status = [](const Points& points, const ZuCadLineOptions& options = {}) {
    return ZuCadBalancedLine::BestFit(points, options).fit.eStatus;
  };
  EXPECT_EQ(status({{1, 1}}), eCadTooFew);
  EXPECT_EQ(status({{1, 1}, {1, 1}, {1, 1}}), eCadCoincident);
  EXPECT_EQ(status(square), eCadUndetermined);
  EXPECT_EQ(status({{1, 1}, {kNan, 1}}), eCadNotFinite);
  EXPECT_EQ(status(square, {.breaks = {3}}), eCadTooFew);
  EXPECT_EQ(status(square, {.breaks = {2, 2}}), eCadNotFinite);
  EXPECT_EQ(status({{0, 0}, {1, 0}, {1, 5}}, {.dTolerance = 0.01}), eCadTooFew);
  EXPECT_EQ(status(Points(2001, {1, 1}), {.dTolerance = 0.01}), eCadTooMany);
}

TEST(CadRectangle, BestFitOfThreeAndFourCorners) {  // 40 digits
  const Points given = {{0, 0}, {10.2, 0.1}, {9.9, 5.3}, {-0.2, 5.0}};
  const double adFit[2][4] = {
      {0.025611641309678923, 10.151792972678795, 5.1047296135428352, 0.10055680399365038},
      {0.019687483039602524, 10.101205158451075, 5.1544887766708694, 0.15684344143821798}};
  for (const size_t uLeft : {0U, 1U}) {
    const Points corners(given.begin(), given.end() - static_cast<std::ptrdiff_t>(uLeft));
    for (const ZuVector2d& move : {ZuVector2d(), kFar.AsVector()}) {
      const ZuCadRectangle r = ZuCadRectangle::ByCorners(Moved(corners, move));
      ASSERT_EQ(r.fit.eStatus, eCadOk);
      const double adGot[] = {r.dDirection, r.dWidth, r.dHeight, r.fit.dSigma0};
      for (int i = 0; i < 4; ++i) EXPECT_NEAR(adGot[i], adFit[uLeft][i], 3e-9) << i;
      if (uLeft == 0) {
        ExpectNear(r.corners[0] - move, -0.033868689041896521, -0.081515560800207228, 3e-9);
      }
      for (int k = 0; k < 4; ++k) {
        const ZuPoint2d* p = r.corners.data();
        EXPECT_NEAR((p[(k + 1) % 4] - p[k]) * (p[(k + 3) % 4] - p[k]), 0.0, 1e-7);
      }
    }
  }
  // The other way round, and a direction away from the x axis.
  const ZuCadRectangle turned = ZuCadRectangle::ByCorners({{0, 0}, {0, -3}, {-4, -3}, {-4, 0}});
  EXPECT_NEAR(turned.dDirection, -kPi / 2, 1e-15);
  EXPECT_ROW("3 4", turned.dWidth, turned.dHeight);
}

TEST(CadRectangle, PointsOnTheSidesGiveItBack) {
  RandomGeometry random(3);
  for (int i = 0; i < 40; ++i) {
    const double dTurn = random.Value(0.78), w = 3.0 + random.Value(1.0), h = 7.0;
    const ZuVector2d u = ZuVector2d::FromDirection(dTurn), v = u.Normal();
    Points points;
    for (int k = 0; k < 24; ++k) {
      const double t = 0.05 + 0.9 * (k / 4) / 5.0;
      const double adX[] = {t * w, w, t * w, 0}, adY[] = {0, t * h, h, t * h};
      points.push_back(kFar + adX[k % 4] * u + adY[k % 4] * v);
    }
    const ZuCadRectangle r = ZuCadRectangle::ByOutline(points, 0.01);
    ASSERT_EQ(r.fit.eStatus, eCadOk);
    EXPECT_NEAR(r.dDirection, dTurn, 1e-9);
    EXPECT_NEAR(r.dWidth, w, 1e-8);
    EXPECT_NEAR(r.dHeight, h, 1e-8);
    ExpectNear(r.corners[0], kFar.x, kFar.y, 1e-8);
    EXPECT_EQ(r.sides[6], 2);
    EXPECT_GT(r.dWidthSd, 0.005);
  }
  const auto status = [](const Points& points) {
    return ZuCadRectangle::ByCorners(points).fit.eStatus;
  };
  EXPECT_EQ(status({{0, 0}, {1, 0}}), eCadTooFew);
  EXPECT_EQ(status(Points(5)), eCadTooMany);
  EXPECT_EQ(status({{0, 0}, {0, 0}, {1, 1}}), eCadCoincident);
  EXPECT_EQ(status({{0, 0}, {1, 0}, {3, 0}, {2, 0}}), eCadCollinear);
  EXPECT_EQ(status({{0, 0}, {1, 0}, {kNan, 0}}), eCadNotFinite);
  EXPECT_EQ(ZuCadRectangle::ByOutline(Points(7, {3, 4})).fit.eStatus, eCadCoincident);
  EXPECT_EQ(ZuCadRectangle::ByOutline({{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}}).fit.eStatus,
            eCadCollinear);
}

TEST(CadOrthoLine, FeetOffsetsAndChains) {
  const ZuCadOrthoLine line({10, 20}, {70, 100}, 50.0);  // length 100 measured as 50
  ZuPoint2d foot;
  const ZuCadOffset offset = line.Offset({10 - 8 + 6, 20 + 6 + 8}, &foot);
  EXPECT_NEAR(offset.dStation, 5.0, 1e-13);
  EXPECT_NEAR(offset.dOffset, 5.0, 1e-13);
  ExpectNear(foot, 16, 28, 1e-13);
  ExpectNear(line.Point(offset), 8, 34, 1e-13);
  const ZuCadOrthoLine base({0, 0}, {0, 10});
  const ZuCadChain open = base.Chain({{0, 5}, {-1, 3}, {1, 2}, {1, 1}});
  ASSERT_EQ(open.points.size(), 4U);
  ExpectNear(open.points[1], 3, 5, 1e-14);
  ExpectNear(open.points[3], 2, 7, 1e-14);
  const ZuPoint2d end(2.2, 7.7);  // the chain 1.1 times as long
  const ZuCadChain closed = base.Chain({{0, 5}, {-1, 3}, {1, 2}, {1, 1}}, &end);
  EXPECT_NEAR(closed.dScale, 1.1, 1e-14);
  EXPECT_NEAR(closed.dTurn, 0.0, 1e-14);
  EXPECT_NEAR(closed.dAlong, -0.7, 1e-14);
  EXPECT_NEAR(closed.dAcross, 0.2, 1e-14);
  ExpectNear(closed.points[1], 3.3, 5.5, 1e-13);
  EXPECT_EQ(ZuCadOrthoLine({1, 1}, {1, 1}).GetStatus(), eCadCoincident);
  EXPECT_EQ(ZuCadOrthoLine({1, 1}, {kNan, 1}).GetStatus(), eCadNotFinite);
  EXPECT_EQ(base.Chain({}).eStatus, eCadTooFew);
  EXPECT_EQ(base.Chain({{0, 1}, {2, 1}}, &end).eStatus, eCadCoincident);
  EXPECT_EQ(base.Chain({{0, kInfinite}}).eStatus, eCadNotFinite);
}

ZuPlane PlaneOf(double dA, double dB, double dC, double dD) {
  ZuPlane plane;
  plane.A() = dA;
  plane.B() = dB;
  plane.C() = dC;
  plane.D() = dD;
  return plane;
}

TEST(CadPlane, PointsGoThereAndBack) {
  RandomGeometry random(41);
  ZuCadPlane fitted, level, local;
  ASSERT_TRUE(ZuCadPlane::Of(PlaneOf(0.6, 0.0, 0.8, -5.0), &fitted));
  ASSERT_TRUE(ZuCadPlane::Of(PlaneOf(0.001, 0.002, -1.0, 5.0), &level));
  ASSERT_TRUE(ZuCadPlane::Through({1, 2, 3}, {4, 2, 7}, {1, 9, 4}, &local));
  for (const ZuCadPlane& plane :
       {fitted, level, local, ZuCadPlane::XY(3), ZuCadPlane::XZ(4), ZuCadPlane::YZ(-2)}) {
    const ZuPoint3d p = random.Point(100), q = random.Point(100);
    double h = 0.0, g = 0.0;
    const ZuPoint2d a = plane.ToPlane(p, &h), b = plane.ToPlane(q, &g);
    EXPECT_NEAR(plane.ToSpace(a, h).Distance(p), 0.0, 1e-12);
    EXPECT_NEAR(std::hypot(a.Distance(b), h - g), p.Distance(q), 1e-12);  // lengths are kept
  }
  double h = 0.0;
  fitted.ToPlane({5, 7, 2.5}, &h);
  EXPECT_NEAR(h, 0.0, 1e-13);  // 0.6 5 + 0.8 2.5 - 5
  level.ToPlane({1000, 0, 6}, &h);
  EXPECT_NEAR(h, 0.0, 1e-12);
  ExpectNear(local.ToPlane({4, 2, 7}, &h), 5, 0, 1e-13);
  EXPECT_GT(local.ToPlane({1, 9, 4}, &h).y, 0.0);
  EXPECT_NEAR(h, 0.0, 1e-13);
  EXPECT_FALSE(ZuCadPlane::Through({1, 1, 1}, {2, 2, 2}, {5, 5, 5}, &local));
  EXPECT_FALSE(ZuCadPlane::Through({1, 1, 1}, {2, 2, 2}, {5, 5, kNan}, &local));
}

}  // namespace
