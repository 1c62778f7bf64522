#include "tests/adjust/similarity_sets.h"

namespace {

using Kind = ZuSimilarityKind;

// Points i = 1 to n at (x, y, z)(i), in both systems unless the target is made otherwise.
using Place = std::function<ZuPoint(int i)>;

ZuPointList Points(int n, const Place& place) {
  ZuPointList points;
  for (int i = 1; i <= n; ++i) {
    ZuPoint p = place(i);
    if (p.GetId() == 0) p.SetId(static_cast<unsigned>(i));
    points.Add(p);
  }
  return points;
}

ZuPoint At(double x, double y, double z, unsigned uId = 0) { return ZuPoint(uId, x, y, z); }

// n points along a line in space, each at its own place within a share of the length beside it.
ZuPoint Narrow(int i, double dWidth) {
  const double t = 10.0 * i, a = dWidth * 10.0 * std::cos(2.4 * i),
               b = dWidth * 10.0 * std::sin(2.4 * i);
  return At(0.6 * t - 0.8 * a, 0.8 * t + 0.6 * a, b);
}

ZuPoint Spread(int i) { return At(std::cos(2.4 * i) * 9.0, std::sin(1.7 * i) * 9.0, i * i % 7); }

bool IsFinite(const ZuSimilarityResult& r) {
  bool bFinite = std::isfinite(r.trafo.m_dScale) && r.trafo.m_dScale > 0.0;
  for (double d : r.adCovariance) bFinite = bFinite && std::isfinite(d);
  for (int i = 0; i < 7; ++i) bFinite = bFinite && r.adCovariance[8 * i] >= 0.0;
  for (int i = 1; i <= 3; ++i) bFinite = bFinite && std::isfinite(r.trafo.m_vTarget[i]);
  for (const auto& p : r.points) {
    for (double d : p.adCarried) bFinite = bFinite && std::isfinite(d);
    for (double d : p.adResidualSd) bFinite = bFinite && std::isfinite(d);
  }
  return bFinite;
}

}  // namespace

TEST(SimilarityHostile, EachDegenerateSetHasItsStatusAndSentence) {
  const double dNan = std::numeric_limits<double>::quiet_NaN();
  const ZuAdjustStatus good = ZuAdjustStatus::Good, few = ZuAdjustStatus::TooFew,
                       defect = ZuAdjustStatus::RankDefect, infinite = ZuAdjustStatus::NotFinite;
  const auto one = [](int) { return At(5.0, 6.0, 7.0); };
  const auto narrow = [](double d) { return [d](int i) { return Narrow(i, d); }; };
  for (const auto& [szName, kind, n, source, target, status, szWords] :
       Cases<const char*, Kind, int, Place, Place, ZuAdjustStatus, const char*>{
           {"one", Kind::Similarity, 1, Spread, Spread, few, "1 common point for 7"},
           {"two", Kind::Similarity, 2, Spread, Spread, few, "2 common points for 7"},
           {"two, rigid", Kind::Rigid, 2, Spread, Spread, defect, "line through points 1 and 2"},
           {"two, levelled", Kind::Levelled, 2, Spread, Spread, good, ""},
           {"one, levelled", Kind::Levelled, 1, Spread, Spread, few, "2 are needed"},
           {"one, shifted", Kind::Shift, 1, Spread, Spread, good, ""},
           {"none", Kind::Shift, 0, Spread, Spread, few, "0 common points"},
           {"one place", Kind::Similarity, 4, one, one, defect, "in one place"},
           {"onto one place", Kind::Similarity, 4, Spread, one, defect, "in one place"},
           {"collinear", Kind::Similarity, 3, narrow(0.0), narrow(0.0), defect,
            "rotation about the line through points 1, 2 and 3"},
           {"onto a line", Kind::Similarity, 5, Spread, narrow(0.0), defect,
            "points 1, 2, 3 and 2 more"},
           {"vertical", Kind::Levelled, 3, [](int i) { return At(1.0, 2.0, i); },
            [](int i) { return At(1.0, 2.0, i); }, defect, "heading about the vertical"},
           {"1:1e-3", Kind::Similarity, 6, narrow(1e-3), narrow(1e-3), good, ""},
           {"1:1e-5", Kind::Similarity, 6, narrow(1e-5), narrow(1e-5), good, ""},
           {"1:1e-7", Kind::Similarity, 6, narrow(1e-7), narrow(1e-7), defect, "rotation about"},
           {"1:1e-9", Kind::Similarity, 6, narrow(1e-9), narrow(1e-9), defect, "rotation about"},
           {"flat", Kind::Similarity, 4,
            [](int i) { return At(Spread(i).m_dX, Spread(i).m_dY, 0.0); },
            [](int i) { return At(Spread(i).m_dX, Spread(i).m_dY, 0.0); }, good, ""},
           {"not finite", Kind::Similarity, 4,
            [dNan](int i) { return i == 3 ? At(1.0, dNan, 2.0) : Spread(i); }, Spread, infinite,
            "point 3 of the source has a coordinate that is not finite"},
           {"equal ids", Kind::Similarity, 5, [](int i) { return At(i, i * i, 1.0, 7); },
            [](int i) { return At(i, i * i, 1.0, 7); }, few, "1 common point"},
           {"beyond range", Kind::Similarity, 4, [](int i) { return Spread(i) * 1e200; }, Spread,
            infinite, "too"},
       }) {
    SCOPED_TRACE(szName);
    ZuSimilarityOptions options;
    options.kind = kind;
    const ZuSimilarityResult r = ZuAdjustSimilarity(Points(n, target), Points(n, source), options);
    EXPECT_EQ(r.status, status) << r.strReason;
    EXPECT_NE(r.strReason.find(szWords), std::string::npos) << r.strReason;
    EXPECT_EQ(r.strReason.empty(), r.IsGood());
    EXPECT_EQ(r.strFreeDirection.empty(), status != defect);
  }
  const ZuSimilarityResult mirrored = ZuAdjustSimilarity(
      Points(9, [](int i) { return At(Spread(i).m_dY, Spread(i).m_dX, Spread(i).m_dZ); }),
      Points(9, Spread), {});
  ASSERT_FALSE(mirrored.IsGood() && mirrored.warnings.empty());
}

// Whatever the numbers: a good result is one in all its figures.
TEST(SimilarityHostile, NoGoodResultHoldsANumberThatIsNotFinite) {
  RandomGeometry random(2026);
  int iGood = 0;
  const auto value = [&random](double dScale) {
    switch (random.Index(12)) {
      case 0:
        return std::pow(10.0, random.Value(300.0));
      case 1:
        return random.Index(40) == 0 ? std::numeric_limits<double>::quiet_NaN() : 0.0;
      case 2:
        return 1.0;
      default:
        return random.Value(dScale);
    }
  };
  const int iSets = AreLongTrials() ? 100000 : Runs(15000);
  for (int i = 0; i < iSets; ++i) {
    const double dScale = i % 2 == 0 ? 100.0 : std::pow(10.0, random.Value(300.0));
    ZuPointList source, target;
    const int n = random.Index(7);
    for (int k = 1; k <= n; ++k) {
      ZuPoint p(static_cast<unsigned>(k), value(dScale), value(dScale), value(dScale));
      if (random.Index(6) == 0 && !source.IsEmpty()) p = *source.First();
      p.SetId(static_cast<unsigned>(k));
      ZuPoint q = random.Index(3) == 0 ? At(value(dScale), value(dScale), value(dScale)) : p;
      q.SetId(p.GetId());
      if (random.Index(4) == 0) p.m_dDX = q.m_dDZ = std::fabs(value(1.0));
      source.Add(p);
      target.Add(q);
    }
    ZuSimilarityOptions options;
    options.kind = static_cast<Kind>(random.Index(4));
    options.tests.bSnoop = random.Index(4) == 0;
    const ZuSimilarityResult r = ZuAdjustSimilarity(target, source, options);
    ASSERT_EQ(r.strReason.empty(), r.IsGood()) << i;
    if (!r.IsGood()) continue;
    ++iGood;
    ASSERT_TRUE(IsFinite(r)) << i;
    ASSERT_LT(OffOrthogonal(r.trafo.m_mRot), 1e-9) << i;
  }
  EXPECT_GT(iGood, iSets / 10);
}
