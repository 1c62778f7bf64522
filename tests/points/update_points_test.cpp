// New coordinates applied to the points of a list.
#include "zu/points/update_points.h"

#include "tests/support/test.h"

namespace {

ZuPoint Told(unsigned uId, double x, double dSigma, const char* szName = "") {
  ZuPoint point(uId, x, 2.0, 3.0, 5);
  point.SetName(szName);
  point.m_dDX = point.m_dDY = point.m_dDZ = dSigma;
  return point;
}

// Id, coordinate x, accuracy and status of each new coordinate.
std::string Tell(const ZuUpdateResult& result) {
  std::string str;
  for (const ZuUpdatedPoint& p : result.m_Points) {
    const ZuPoint& q = p.m_pPoint != nullptr ? *p.m_pPoint : *p.m_pNew;
    str += Row{q.GetId(), q.m_dX, q.m_dDX, GetZuUpdateText(p.m_eStatus), p.m_bMoved}.str + "\n";
  }
  return str;
}

}  // namespace

TEST(UpdatePoints, EachModeAndEachStatus) {
  const Cases<eZuUpdateMode, bool, const char*> modes = {
      {eZuUpdateReplace, true,
       "1 10.5 0.25 changed 1\n2 20 0.5 same 0\n9 1 0 added 0\n1 10.5 0.25 double 0\n9 7 0 double "
       "0\n3 nan 0 not finite 0\n0 1 0 no id 0\n5 50.25 0 changed 0\n"},
      {eZuUpdateKeep, false,
       "1 10 0.5 kept 1\n2 20 0.25 same 0\n9 1 0 unknown 0\n1 10 0.5 double 0\n9 7 0 double "
       "0\n3 nan 0 not finite 0\n0 1 0 no id 0\n5 50 0 kept 0\n"}};
  for (const auto& [eMode, bAdd, szExpected] : modes) {
    ZuPointList points, news;
    for (const ZuPoint& p : {Told(1, 10, 0.5), Told(2, 20, 0.25), Told(3, NAN, 0),
                             Told(4, 40, 0, "A"), Told(5, 50, 0, "B")}) {
      points.Add(p);
    }
    for (const ZuPoint& p : {Told(1, 10.5, 0.25), Told(2, 20, 0.5), Told(9, 1, 0), Told(1, 99, 0),
                             Told(9, 7, 0), Told(3, 1, 0), Told(0, 1, 0), Told(4, 50.25, 0, "B")}) {
      news.Add(p);
    }
    ZuUpdateOptions options;
    options.m_eMode = eMode;
    options.m_bAdd = bAdd;
    options.m_dTolerance = 0.25;  // itself is not beyond
    EXPECT_EQ(Tell(ZuUpdatePoints(&points, news, options)), szExpected);
    EXPECT_EQ(points.Count(), bAdd ? 6 : 5);
  }
}

// Two observations of 10 and 5 (10 weighing a quarter): Mikhail and Ackermann's rule by hand.
TEST(UpdatePoints, TheMeanIsWeightedByBothAccuracies) {
  const Cases<double, double, double, double, double, double> cases = {
      // s old, s new, options' old and new; mean of 10 and 5, its accuracy
      {0.02, 0.01, 0, 0, 6.0, 0.02 / std::sqrt(5.0)},
      {0.01, 0.02, 9, 9, 9.0, 0.02 / std::sqrt(5.0)},
      {0, 0.01, 0.02, 0, 6.0, 0.02 / std::sqrt(5.0)},
      {0, 0, 0.01, 0.02, 9.0, 0.02 / std::sqrt(5.0)},
      {0, 0.01, 0, 0, 7.5, 0.0},
      {1e-300, 1e300, 0, 0, 10.0, 1e-300},
      {1e300, 1e-300, 0, 0, 5.0, 1e-300}};
  for (const auto& [dOld, dNew, dSigmaOld, dSigmaNew, dMean, dSigma] : cases) {
    ZuPointList points, news;
    points.Add(Told(1, 10, dOld));
    news.Add(Told(1, 5, dNew));
    ZuUpdateOptions options;
    options.m_eMode = eZuUpdateMean;
    options.m_dSigmaOld = dSigmaOld;
    options.m_dSigmaNew = dSigmaNew;
    const ZuUpdateResult result = ZuUpdatePoints(&points, news, options);
    EXPECT_NEAR(points.First()->m_dX, dMean, 1e-14);
    EXPECT_NEAR(points.First()->m_dDX, dSigma, 1e-15 * dSigma);
    EXPECT_ROW("5 0 " + Text(dSigma == 0.0), points.First()->m_sControl, result.Moved(),
               result.m_Points[0].m_bEqualWeights);
  }
}
