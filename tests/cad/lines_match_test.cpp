#include "zu/cad/lines_match.h"

#include "tests/support/random_geometry.h"
#include "tests/support/test.h"
#include "zu/numerics/line3d.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

void ExpectPoint(const ZuPoint3d& p, double x, double y, double z, double dTolerance = 1e-12) {
  EXPECT_NEAR(p.x, x, dTolerance);
  EXPECT_NEAR(p.y, y, dTolerance);
  EXPECT_NEAR(p.z, z, dTolerance);
  EXPECT_EQ(p.w, 1.0);
}

TEST(Cad2LinesMatch, CrossingLinesMeetExactly) {
  const ZuCad2LinesMatch match({-1, 0, 5}, {3, 0, 5}, {0, -2, 5}, {0, 1, 5}, 0.0, 0.0, 1.0,
                               eMatchMode3d);
  EXPECT_TRUE(match.IsValid() && !match.IsParallel());
  ExpectPoint(match.Match1(), 0, 0, 5);
  EXPECT_ROW("0 0", match.Distance(), match.ValueDistance());
  ExpectPoint(match.Keep1(), 3, 0, 5);  // the farther ends stay
  ExpectPoint(match.Keep2(), 0, -2, 5);
}

TEST(Cad2LinesMatch, SkewLinesAgreeWithTheCommonPerpendicular) {
  RandomGeometry random(167);
  int iSkew = 0;
  for (int i = 0; i < 300; ++i) {
    const ZuPoint3d a1 = random.Point(9.0), a2 = random.Point(9.0);
    const ZuPoint3d b1 = random.Point(9.0), b2 = random.Point(9.0);
    const ZuCad2LinesMatch match(a1, a2, b1, b2, 0.0, 0.0, 1.0, eMatchMode3d);
    if (match.IsParallel()) continue;
    ++iSkew;
    const ZuLine3d l1(a1, a2), l2(b1, b2);
    const ZuVector3d n = l1.getDirection() % l2.getDirection();
    EXPECT_NEAR(match.Distance(), std::fabs((b1 - a1) * n) / n.Norm(), 1e-8);
    EXPECT_NEAR(l1.getNormDistance(match.Match1()), 0.0, 1e-8);
    EXPECT_NEAR(l2.getNormDistance(match.Match2()), 0.0, 1e-8);
    ZuPoint3d middle;
    EXPECT_NEAR(l1.Intersect(l2, middle), match.Distance(), 1e-8);
    EXPECT_NEAR(middle.Distance(match.MiddlePoint()), 0.0, 1e-8);
    EXPECT_LE(match.Match1().Distance(a1) - 1e-8,
              std::max(match.Match1().Distance(a1), match.Match1().Distance(a2)));
    const ZuPoint3d& far = match.Match1().Distance(a1) >= match.Match1().Distance(a2) ? a1 : a2;
    EXPECT_EQ(match.Keep1().Distance(far), 0.0);
  }
  EXPECT_GT(iSkew, 280);
}

TEST(Cad2LinesMatch, ExtensionsRunOnAwayFromTheKeptEnd) {
  const struct {
    ZuPoint3d a1, a2;
    double dMatch;
    double dKeep;
  } lines[] = {{{-5, 0, 0}, {-1, 0, 0}, 1.0, -5.0},   // past a2: forward
               {{1, 0, 0}, {5, 0, 0}, -1.0, 5.0},     // before a1: backward
               {{5, 0, 0}, {1, 0, 0}, -1.0, 5.0},     // past a2, the other way
               {{-2, 0, 0}, {2, 0, 0}, -1.0, -2.0}};  // Required: a tie keeps a1 and extends to it
  for (const auto& l : lines) {
    const ZuCad2LinesMatch match(l.a1, l.a2, {0, 1, 0}, {0, 9, 0}, 1.0, 0.5, 1.0, eMatchMode3d);
    ExpectPoint(match.Match1(), l.dMatch, 0, 0);
    ExpectPoint(match.Keep1(), l.dKeep, 0, 0);
    ExpectPoint(match.Match2(), 0, -0.5, 0);
  }
}

TEST(Cad2LinesMatch, ParallelLinesJoinTheirNearestEnds) {
  const double a = 0.5 / 180.0 * kPi;
  for (const double dSign : {1.0, -1.0}) {  // opposed directions count alike
    const ZuPoint3d far(7.0 + std::cos(a), 1.0 + std::sin(a), 0), near(7, 1, 0);
    const ZuCad2LinesMatch match({0, 0, 0}, {6, 0, 0}, dSign > 0 ? near : far,
                                 dSign > 0 ? far : near, 3.0, 3.0, 1.0, eMatchMode3d);
    EXPECT_TRUE(match.IsValid() && match.IsParallel());
    ExpectPoint(match.Match1(), 6.5, 0, 0);  // no extension
    EXPECT_NEAR(match.Match2().x, 6.5, 0.01);
    ExpectPoint(match.Keep1(), 0, 0, 0);
    ExpectPoint(match.Keep2(), far.x, far.y, far.z);
    EXPECT_EQ(match.ValueDistance(), 2);
  }
  const ZuCad2LinesMatch skew({0, 0, 0}, {6, 0, 0}, {7, 1, 0}, {8, 1.01, 0}, 0, 0, 0.5,
                              eMatchMode3d);
  EXPECT_FALSE(skew.IsParallel());  // 0.57 degrees
}

// On a tie of the end distances the earlier pair in the order a1 b1, a1 b2, a2 b1, a2 b2 is taken.
TEST(Cad2LinesMatch, ParallelTiesTakeTheEarlierPair) {
  const ZuCad2LinesMatch match({0, 0, 0}, {4, 0, 0}, {0, 2, 0}, {4, 2, 0}, 0, 0, 1.0, eMatchMode3d);
  ExpectPoint(match.Match1(), 0, 0, 0);
  ExpectPoint(match.Match2(), 0, 2, 0);
  ExpectPoint(match.Keep1(), 4, 0, 0);
}

TEST(Cad2LinesMatch, ParallelMiddleOnTheFirstPointIsItsOwnFoot) {
  const ZuCad2LinesMatch match({0, 0, 0}, {-4, 0, 0}, {0, 0, 0}, {5, 0, 0}, 0, 0, 1.0,
                               eMatchMode3d);
  EXPECT_TRUE(match.IsParallel());
  ExpectPoint(match.Match1(), 0, 0, 0);
  ExpectPoint(match.Match2(), 0, 0, 0);
  EXPECT_EQ(match.ValueDistance(), 0);
}

TEST(Cad2LinesMatch, FlatModesTakeTheMeanOfTheFirstPoints) {
  RandomGeometry random(173);
  for (const eMatchMode mode : {eMatchModeXY, eMatchModeXZ, eMatchModeYZ}) {
    const int c = mode == eMatchModeXY ? 2 : mode == eMatchModeXZ ? 1 : 0;
    for (int i = 0; i < 20; ++i) {
      ZuPoint3d a1 = random.Point(5.0), a2 = random.Point(5.0);
      ZuPoint3d b1 = random.Point(5.0), b2 = random.Point(5.0);
      const ZuCad2LinesMatch match(a1, a2, b1, b2, 0.2, 0.1, 1.0, mode);
      ASSERT_TRUE(match.IsValid());
      EXPECT_EQ(match.Match1()[c], (a1[c] + b1[c]) * 0.5);
      EXPECT_EQ(match.Match2()[c], (a1[c] + b1[c]) * 0.5);
      EXPECT_EQ(match.Keep1()[c], a1[c]);
      EXPECT_EQ(match.Keep2()[c], b1[c]);
      a2[c] = 77.0;  // the heights of the second points do not count
      b2[c] = -55.0;
      const ZuCad2LinesMatch other(a1, a2, b1, b2, 0.2, 0.1, 1.0, mode);
      EXPECT_EQ(other.Match1().Distance(match.Match1()), 0.0);
      EXPECT_EQ(other.Keep2().Distance(match.Keep2()), 0.0);
    }
  }
}

TEST(Cad2LinesMatch, LineWithoutDirectionHasNoMatch) {
  const ZuPoint3d p(1, 2, 3);
  for (const eMatchMode mode : {eMatchMode3d, eMatchModeXY}) {
    const ZuCad2LinesMatch match(p, p, {0, 0, 0}, {1, 1, 1}, 1.0, 1.0, 1.0, mode);
    EXPECT_FALSE(match.IsValid());
    ExpectPoint(match.Match1(), 0, 0, 0);
    ExpectPoint(match.Keep2(), 0, 0, 0);  // no left-out coordinate either
  }
}

TEST(Cad2LinesMatch, GapIsRatedAgainstTheShorterTrimmedLine) {
  for (const double dGap : {0.09, 0.11}) {
    const ZuCad2LinesMatch match({-2, 0, 0}, {0, 0, 0}, {0, 4, dGap}, {0, 0, dGap}, 0, 0, 1,
                                 eMatchMode3d);
    EXPECT_NEAR(match.Distance(), dGap, 1e-15);
    EXPECT_EQ(match.ValueDistance(), dGap < 0.1 ? 1 : 2);
    ExpectPoint(match.MiddlePoint(), 0, 0, dGap / 2.0);
  }
}

}  // namespace
