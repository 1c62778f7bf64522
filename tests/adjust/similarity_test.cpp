#include "zu/adjust/similarity.h"

#include "tests/adjust/similarity_sets.h"
#include "zu/transform/trafo3d.h"

namespace {

ZuPointList Stations(const char* szFile) {
  const eZuPointRWMask columns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                    eZuPointRWEnd};
  return ZuPointList(String((ZU_SOURCE_DIR "/samples/datum/" + std::string(szFile)).c_str()),
                     TZuFormatTable<eZuPointRWMask>(columns));
}

}  // namespace

// With equal weights of the target, and at scale 1 of both sides, the closed form is the answer.
TEST(Similarity, EqualsTheClosedFormOfEqualWeights) {
  RandomGeometry random(17);
  for (int i = 0; i < 300; ++i) {
    const double dExtent = std::pow(10.0, random.Index(7) - 2);
    SimilaritySet set = ExactSet(random, 3 + random.Index(20), dExtent, dExtent, dExtent,
                                 i % 2 == 0 ? 1.0 : 3.5, 10.0 * dExtent);
    for (ZuPoint* p = set.target.First(); p != nullptr; p = p->Next()) {
      Disturb(random, 1e-3 * dExtent, 1e-3 * dExtent, 1e-3 * dExtent, p);
    }
    ZuTrafo3d closed;
    ASSERT_TRUE(closed.CalcByControlPoints(&set.target, &set.source, 3, false));
    ZuSimilarityOptions options;
    options.dSigmaTarget = i % 3 == 0 ? 0.0 : 0.002 * dExtent;
    const ZuSimilarityResult similar = ZuAdjustSimilarity(set.target, set.source, options);
    ASSERT_TRUE(similar.IsGood()) << similar.strReason;
    EXPECT_LT(Apart(similar.trafo, closed, set.source), 1e-9 * dExtent * closed.m_dScale) << i;

    EXPECT_LT(OffOrthogonal(similar.trafo.m_mRot), 1e-14);
    if (i % 2 == 1) continue;
    options.kind = ZuSimilarityKind::Rigid;
    options.dSigmaSource = options.dSigmaTarget;
    closed.m_dScale = 1.0;
    const ZuSimilarityResult rigid = ZuAdjustSimilarity(set.target, set.source, options);
    ASSERT_TRUE(rigid.IsGood()) << rigid.strReason;
    EXPECT_LT(Apart(rigid.trafo, closed, set.source), 1e-9 * dExtent) << i;
    EXPECT_LT(OffOrthogonal(rigid.trafo.m_mRot), 1e-14);
  }
}

// The seven stations of samples/datum, whose residuals and scale are published.
TEST(Similarity, GivesThePublishedFiguresOfTheSevenStations) {
  const ZuPointList local = Stations("local.coo"), wgs84 = Stations("wgs84.coo");
  const ZuSimilarityResult result = ZuAdjustSimilarity(wgs84, local, {});
  ASSERT_TRUE(result.IsGood()) << result.strReason;
  EXPECT_NEAR(result.trafo.m_dScale, 1.0000055825198515, 1e-15 * 10);
  const double adExpected[][3] = {{0.0940, 0.1351, 0.1402},    {0.0588, -0.0497, 0.0137},
                                  {-0.0399, -0.0879, -0.0081}, {0.0202, -0.0220, -0.0874},
                                  {-0.0919, 0.0139, -0.0055},  {-0.0118, 0.0065, -0.0546},
                                  {-0.0294, 0.0041, 0.0017}};
  double dSquares = 0.0, dRedundancy = 0.0;
  for (std::size_t i = 0; i < 7; ++i) {
    for (int k = 0; k < 3; ++k) {
      EXPECT_NEAR(result.points[i].adResidual[k], adExpected[i][k], 5.1e-5) << i + 1;
      dSquares += std::pow(result.points[i].adResidual[k], 2);
    }
    dRedundancy += result.points[i].Redundancy();
  }
  EXPECT_EQ(result.iRedundancy, 14);
  EXPECT_NEAR(dRedundancy, 14.0, 1e-9);
  EXPECT_NEAR(result.dSigma0, std::sqrt(dSquares / 14.0), 1e-8);
  EXPECT_EQ(result.sigmaKind, ZuSigmaKind::APosteriori);
}

// A prediction without the point is the residual of a run that does not have it.
TEST(Similarity, LeavesOneOutAsARunWithoutIt) {
  RandomGeometry random(5);
  SimilaritySet set = ExactSet(random, 8, 20.0, 10.0, 3.0, 1.01, 100.0);
  for (ZuPoint* p = set.target.First(); p != nullptr; p = p->Next()) {
    Disturb(random, 0.01, 0.01, 0.02, p);
    p->m_dDX = p->m_dDY = 0.01;
    p->m_dDZ = 0.02;
  }
  for (const ZuSimilarityKind kind :
       {ZuSimilarityKind::Similarity, ZuSimilarityKind::Rigid, ZuSimilarityKind::Shift}) {
    ZuSimilarityOptions options;
    options.kind = kind;
    const ZuSimilarityResult all = ZuAdjustSimilarity(set.target, set.source, options);
    for (unsigned u = 1; u <= 8; ++u) {
      ZuPointList others(set.source);
      delete others.Subtract(others.Find(u));
      const ZuSimilarityResult rest = ZuAdjustSimilarity(set.target, others, options);
      ASSERT_TRUE(all.IsGood() && rest.IsGood());
      const ZuPoint e = *set.target.Find(u) - Transformed(rest.trafo, *set.source.Find(u));
      const double adE[] = {e.m_dX, e.m_dY, e.m_dZ};
      const double dLength = std::hypot(adE[0], adE[1], adE[2]);
      for (int k = 0; k < 3; ++k) {
        EXPECT_NEAR(all.Find(u)->adLeaveOneOut[k], adE[k], 2e-3 * dLength) << u;
      }
    }
  }
}

// Equal accuracies by axis have sums of their own: the same figures come from whole covariances.
TEST(Similarity, TellsTheSameFromSdsAndFromCovariances) {
  RandomGeometry random(21);
  for (const auto& [kind, dSource, dStep] :
       Cases<ZuSimilarityKind, double, double>{{ZuSimilarityKind::Similarity, 0.0, 0.0},
                                               {ZuSimilarityKind::Similarity, 0.02, 0.0},
                                               {ZuSimilarityKind::Similarity, 0.02, 0.003},
                                               {ZuSimilarityKind::Rigid, 0.01, 0.001},
                                               {ZuSimilarityKind::Levelled, 0.01, 0.001},
                                               {ZuSimilarityKind::Shift, 0.01, 0.001}}) {
    SimilaritySet set = ExactSet(random, 13, 20.0, 10.0, 3.0, 1.0, 100.0);
    if (kind >= ZuSimilarityKind::Levelled) set.target = set.source;
    ZuSimilarityOptions sds, whole;
    sds.kind = whole.kind = kind;
    sds.startAside = whole.startAside = {4};
    sds.tests.bSnoop = whole.tests.bSnoop = true;
    for (ZuPoint *p = set.source.First(), *q = set.target.First(); p != nullptr;
         p = p->Next(), q = q->Next()) {
      q->m_dDX = q->m_dDY = q->m_dDZ = 0.01 + dStep * q->GetId();
      p->m_dDX = p->m_dDY = p->m_dDZ = dSource;
      Disturb(random, q->m_dDX, q->m_dDY, q->m_dDZ, q);
      const double v = q->m_dDX * q->m_dDX, w = dSource * dSource;
      whole.targetCovariances.push_back({q->GetId(), {v, 0, 0, 0, v, 0, 0, 0, v}});
      if (w > 0.0) whole.sourceCovariances.push_back({q->GetId(), {w, 0, 0, 0, w, 0, 0, 0, w}});
    }
    set.target.Find(4u)->m_dX += 0.5;
    const ZuSimilarityResult a = ZuAdjustSimilarity(set.target, set.source, sds);
    const ZuSimilarityResult b = ZuAdjustSimilarity(set.target, set.source, whole);
    ASSERT_TRUE(a.IsGood() && b.IsGood()) << a.strReason << b.strReason;
    ASSERT_EQ(a.setAside.size(), 1u);
    EXPECT_LT(Apart(a.trafo, b.trafo, set.source), 1e-12);
    const auto near = [](const double* pd, const double* pdOther, int n) {
      for (int i = 0; i < n; ++i) {
        EXPECT_NEAR(pd[i], pdOther[i], 1e-9 * std::fabs(pd[i]) + 1e-13) << i;
      }
    };
    near(a.adCovariance, b.adCovariance, 49);
    for (std::size_t i = 0; i < a.points.size(); ++i) {
      const ZuSimilarityPoint &p = a.points[i], &q = b.points[i];
      EXPECT_EQ(p.bUsed, q.bUsed);
      for (const auto pad : {&ZuPointTest::adResidual, &ZuPointTest::adResidualSd,
                             &ZuPointTest::adRedundancy, &ZuPointTest::adW, &ZuPointTest::adNabla,
                             &ZuPointTest::adEffect, &ZuPointTest::adLeaveOneOut}) {
        near(p.*pad, q.*pad, 3);
      }
      near(p.adSourceResidual, q.adSourceResidual, 3);
      near(p.adTargetResidual, q.adTargetResidual, 3);
      near(p.adCarried, q.adCarried, 9);
      EXPECT_NEAR(p.dTest, q.dTest, 1e-9 * p.dTest);
    }
  }
}

// The order of the lists changes nothing, and both gross errors are set aside whatever the start.
TEST(Similarity, SetsGrossErrorsAsideInAnyOrder) {
  RandomGeometry random(9);
  SimilaritySet set = ExactSet(random, 12, 20.0, 20.0, 5.0, 1.0, 1e6);
  for (ZuPoint* p = set.target.First(); p != nullptr; p = p->Next()) {
    Disturb(random, 0.002, 0.002, 0.002, p);
  }
  set.target.Find(4u)->m_dZ += 0.05;
  set.target.Find(9u)->m_dX -= 0.03;
  ZuSimilarityOptions options;
  options.dSigmaTarget = 0.002;
  options.tests.bSnoop = true;
  const ZuSimilarityResult result = ZuAdjustSimilarity(set.target, set.source, options);
  ASSERT_TRUE(result.IsGood()) << result.strReason;
  ASSERT_EQ(result.setAside.size(), 2u);
  EXPECT_EQ(result.setAside[0].uId, 4u);
  EXPECT_NEAR(result.setAside[0].adError[2], 0.05, 0.012);
  EXPECT_EQ(result.setAside[1].uId, 9u);

  ZuPointList reversed;
  for (const ZuPoint* p = set.source.Last(); p != nullptr; p = p->Previous()) reversed.Add(*p);
  const ZuSimilarityResult again = ZuAdjustSimilarity(set.target, reversed, options);
  EXPECT_EQ(Apart(result.trafo, again.trafo, set.source), 0.0);
  EXPECT_TRUE(std::equal(std::begin(result.adCovariance), std::end(result.adCovariance),
                         std::begin(again.adCovariance)));
}
