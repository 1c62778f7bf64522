// Saved transformations come back to the last bit, and what is none is refused.
#include "zu/exchange/transformation.h"

#include <cmath>
#include <sstream>

#include "tests/support/test.h"

namespace {

std::string Text(const ZuTransformation& t) {
  std::ostringstream os;
  ZuExportTransformation(os, t);
  return os.str();
}

// The first finding of a text; empty without one.
std::string FindingOf(const std::string& strText, ZuTransformation* p) {
  std::istringstream stream(strText);
  ZuFindingList findings;
  const bool bGood = ZuReadTransformation(stream, p, &findings, "T");
  EXPECT_EQ(bGood, findings.GetErrorCount() == 0);
  return findings.GetFindings().empty() ? "" : GetZuFindingLine(findings.GetFindings().front());
}

ZuTransformation Turned() {
  ZuTransformation t;
  t.kind = ZuTransformationKind::Similarity;
  const double adRotation[] = {0.36, 0.48, -0.8, -0.8, 0.6, 0.0, 0.48, 0.64, 0.6};
  t.similarity.m_mRot.Set(adRotation, 3, 3);
  t.similarity.m_dScale = 1.0 / 3.0;
  for (int i = 1; i <= 3; ++i) {
    t.similarity.m_vSource[i] = 1000.0 / 7.0 * i;
    t.similarity.m_vTarget[i] = -5.0 / i;
  }
  t.covariance.assign(49, 0.0);
  for (std::size_t i = 0; i < 7; ++i) {
    t.covariance[8 * i] = 1e-4 * static_cast<double>(i + 1);
    if (i > 0) t.covariance[8 * i - 1] = t.covariance[8 * i - 7] = 3e-5;
  }
  t.strUnit = "m";
  t.origin = {"zu transform", "0.1", "a \"b\".csv", "\xc3\xbc", {"--sigma", "1"}, {"P 1"}, {}};
  return t;
}

ZuTransformation InPlane(eZuTrafo2DType eType, std::vector<double> a) {
  ZuTransformation t;
  t.kind = ZuTransformationKind::Plane;
  t.ePlane = eType;
  t.coefficients = std::move(a);
  t.adSourceCentre[0] = 10.0 / 3.0;
  t.adTargetCentre[1] = 1e6 / 7.0;
  return t;
}

std::vector<ZuTransformation> All() {
  ZuTransformation affine;
  const double ad[] = {1, 0.5, 0, 1e6, 0.1, 2, 0, -7, 0, 0.3, 3, 0.1};
  std::copy_n(ad, 12, affine.affine.asDblArray());
  std::vector<double> polynom = {0.1, 1, 0.2, 1e-3, 2e-3, -1e-3, 1e-5, 0, 0, 2e-5,
                                 0.2, 0, 1.1, 0,    1e-3, 1e-3,  0,    0, 0, -1e-5};
  return {Turned(),
          affine,
          InPlane(eZuTrafo2DHelmert, {1, 0.8, 2, 0.6}),
          InPlane(eZuTrafo2DAffin, {1, 2, 0.3, 4, 0.5, 6}),
          InPlane(eZuTrafo2DProjektiv, {1, 0.1, 2, 0.2, 1.3, 4, 1e-3, 2e-3}),
          InPlane(eZuTrafo2DPolynomial, polynom)};
}

TEST(Transformation, ComesBackAndGoesBack) {
  for (const ZuTransformation& t : All()) {
    SCOPED_TRACE(Text(t));
    ZuTransformation again;
    EXPECT_EQ(FindingOf(Text(t), &again), "");
    EXPECT_EQ(Text(again), Text(t));
    ZuPointList points, copy;
    points.Add(ZuPoint(1, 3.0, -4.0, 5.0));
    copy.Add(*points.First());
    EXPECT_TRUE(t.Carry(&points).empty());
    EXPECT_TRUE(again.Carry(&copy).empty());
    EXPECT_EQ(points.First()->m_dX, copy.First()->m_dX);
    EXPECT_TRUE(again.Invert());
    for (ZuPoint* p : {copy.First()}) p->m_dDX = p->m_dDY = p->m_dDZ = 0.0;
    EXPECT_TRUE(again.Carry(&copy).empty());
    EXPECT_NEAR(copy.First()->m_dX, 3.0, 1e-9);
    EXPECT_NEAR(copy.First()->m_dY, -4.0, 1e-9);
    EXPECT_NEAR(copy.First()->m_dZ, 5.0, 1e-9);
    EXPECT_TRUE(again.Invert());
    for (std::size_t i = 0; i < t.covariance.size(); ++i) {
      EXPECT_NEAR(again.covariance[i], t.covariance[i], 1e-15);
    }
  }
}

// An error of the parameters moves points on the way back as the covariance says: by differences.
TEST(Transformation, CovarianceOfTheWayBack) {
  ZuTransformation t = Turned();
  const ZuPoint there(1, 2.0, 3.0, -1.0);
  const auto back = [&there](ZuTransformation moved) {
    moved.covariance.clear();
    EXPECT_TRUE(moved.Invert());
    ZuPointList points;
    points.Add(there);
    moved.Carry(&points);
    return *points.First();
  };
  const ZuPoint at = back(t);
  std::vector<double> byX;  // of x by each parameter
  for (int k = 0; k < 7; ++k) {
    constexpr double kStep = 1e-6;
    ZuTransformation moved = t;
    if (k < 3) moved.similarity.m_vTarget[k + 1] += kStep;
    if (k == 3) moved.similarity.m_dScale += kStep;
    if (k > 3) {
      ZuMatrix turn(3, 3);
      turn.SetIdent();
      const int i = (k - 3) % 3 + 1, j = (k - 2) % 3 + 1;
      turn[j][i] = kStep;
      turn[i][j] = -kStep;
      moved.similarity.m_mRot = moved.similarity.m_mRot * turn;
    }
    byX.push_back((back(moved).m_dX - at.m_dX) / kStep);
  }
  double dVariance = 0.0;
  for (std::size_t i = 0; i < 49; ++i) dVariance += byX[i / 7] * t.covariance[i] * byX[i % 7];
  ZuPointList points;
  points.Add(there);
  ASSERT_TRUE(t.Invert());
  t.Carry(&points);
  EXPECT_NEAR(points.First()->m_dDX, std::sqrt(dVariance), 1e-4 * std::sqrt(dVariance));
}

TEST(Transformation, RefusesWhatIsNone) {
  const std::string strGood = Text(Turned());
  const auto with = [&strGood](const char* szFrom, const char* szTo) {
    std::string strText = strGood;
    const std::size_t u = strText.find(szFrom);
    EXPECT_NE(u, std::string::npos) << szFrom;
    return strText.replace(u, std::string(szFrom).size(), szTo);
  };
  for (const auto& [strText, szTold] : Cases<std::string, const char*>{
           {"", "has 0 numbers"},
           {"1 0 0 7 0 1 0 0 0 0 1 0 0 0 1 1", "last row of the matrix is not 0 0 0 1"},
           {"1 0 0 0\n0 1 0 nan", "T:2:7: error: \"nan\" is no finite number"},
           {"1 0 0 5 0 1 0 0 0 0 1 0 0 0 0 1 1", "more than sixteen"},
           {"{", "is no JSON"},
           {"{}", "a file of --save"},
           {R"({"matrix": [[1,0,0,1e999],[0,1,0,0],[0,0,1,0]]})", "error"},
           {with("\"version\": 1", "\"version\": 2"), "version: is not known; 1"},
           {with("\"similarity\"", "\"similar\""), "kind: is not known"},
           {with("0.36", "0.35"), "rotation: is no rotation"},
           {with("\"scale\": 0.3", "\"scale\": -0.3"), "scale: is not above 0"},
           {with("\"scale\": 0.3", "\"scale\": 0.4"), "does not agree with scale"},
           {with("[0.0001,", "[-0.0001,"), "negative variance"},
           {with("3e-05", "4e-03"), "not that of a covariance"},
           {with("\"source_centre\": [", "\"source_centre\": [null,"), "list of 3 numbers"}}) {
    ZuTransformation t;
    t.dSourceSd = 77.0;
    EXPECT_NE(FindingOf(strText, &t).find(szTold), std::string::npos) << strText << "\n"
                                                                      << FindingOf(strText, &t);
    EXPECT_EQ(t.dSourceSd, 77.0);
  }
}

}  // namespace
