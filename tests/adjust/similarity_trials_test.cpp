#include <array>

#include "tests/adjust/similarity_sets.h"
#include "zu/adjust/internal/small_matrix.h"

namespace {

struct Configuration {
  const char* szName;
  int n;
  double dX, dY, dZ;
  double dScale, dFar;
  double dLargestSd;  // of a coordinate; the smallest is 1 mm
};

// Predicted and empirical variance of one figure.
struct Spread {
  double dEmpirical = 0.0, dPredicted = 0.0;

  void Add(double d, double dVariance) {
    dEmpirical += d * d;
    dPredicted += dVariance;
  }
};

constexpr double kAlpha = 0.01, kRareAlpha = 0.001;

class Trials {
 public:
  explicit Trials(const Configuration& c) : m_random(4711) {
    m_exact = ExactSet(m_random, c.n, c.dX, c.dY, c.dZ, c.dScale, c.dFar);
    m_options.tests.dAlpha = kAlpha;
    for (auto* pList : {&m_exact.source, &m_exact.target}) {
      for (ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) {
        for (double* pd : {&p->m_dDX, &p->m_dDY, &p->m_dDZ}) {
          *pd = 0.001 + (c.dLargestSd - 0.001) * 0.5 * (m_random.Value(1.0) + 1.0);
        }
      }
    }
    m_carried = ZuPoint(99, m_exact.truth.m_vSource[1] + 3.0, m_exact.truth.m_vSource[2] - 2.0,
                        m_exact.truth.m_vSource[3] + 1.0);
    m_carried.m_dDX = m_carried.m_dDY = m_carried.m_dDZ = 0.001;
  }

  void Run(int iRuns) {
    for (m_iRun = 0; m_iRun < iRuns; ++m_iRun) {
      SimilaritySet set = m_exact;
      for (auto* pList : {&set.source, &set.target}) {
        for (ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) {
          Disturb(m_random, p->m_dDX, p->m_dDY, p->m_dDZ, p);
        }
      }
      const ZuSimilarityResult result = ZuAdjustSimilarity(set.target, set.source, m_options);
      ASSERT_TRUE(result.IsGood()) << result.strReason;
      AddParameters(result);
      AddTests(result);
      AddCarried(result, set);
      AddError(result, &set);
    }
  }

  // Alarms that came over those that were to come.
  void AddRareAlarms(double* pdCame, double* pdExpected) const {
    *pdCame += m_iRareAlarms;
    *pdExpected += kRareAlpha * m_iTests;
  }

  void Check(double dTolerance) const {
    for (std::size_t i = 0; i < m_spreads.size(); ++i) {
      const Spread& s = m_spreads[i];
      EXPECT_NEAR(std::sqrt(s.dEmpirical / s.dPredicted), 1.0, dTolerance) << "figure " << i;
    }
    EXPECT_NEAR(m_iInside / (1.0 * m_iRun), 0.95, dTolerance / 3.0);
    EXPECT_NEAR(m_iAlarms / (kAlpha * m_iTests), 1.0, 3.0 * dTolerance);
    EXPECT_NEAR(m_iFound / (1.0 * m_iRun), 0.8, 0.67 * dTolerance);
  }

 private:
  void AddParameters(const ZuSimilarityResult& r) {
    const ZuVector& xs = r.trafo.m_vSource;
    const ZuPoint xt = Transformed(m_exact.truth, ZuPoint(1, xs[1], xs[2], xs[3]));
    const ZuMatrix turn = m_exact.truth.m_mRot.Transpose() * r.trafo.m_mRot;
    const double ad[] = {r.trafo.m_vTarget[1] - xt.m_dX,  r.trafo.m_vTarget[2] - xt.m_dY,
                         r.trafo.m_vTarget[3] - xt.m_dZ,  r.trafo.m_dScale - m_exact.truth.m_dScale,
                         0.5 * (turn[3][2] - turn[2][3]), 0.5 * (turn[1][3] - turn[3][1]),
                         0.5 * (turn[2][1] - turn[1][2])};
    for (std::size_t i = 0; i < 7; ++i) m_spreads[i].Add(ad[i], r.adCovariance[8 * i]);
  }

  void AddTests(const ZuSimilarityResult& r) {
    double dRedundancy = 0.0;
    for (const ZuSimilarityPoint& p : r.points) {
      dRedundancy += p.Redundancy();
      for (int k = 0; k < 3; ++k) {
        if (p.adRedundancy[k] < 1e-6) continue;
        ++m_iTests;
        m_iAlarms += std::fabs(p.adW[k]) > r.dTestLimit;
        m_iRareAlarms += std::fabs(p.adW[k]) > m_dRareLimit;
      }
    }
    EXPECT_NEAR(dRedundancy, r.iRedundancy, 1e-9);
  }

  // The new point and a common one.
  void AddCarried(const ZuSimilarityResult& r, const SimilaritySet& set) {
    ZuPointList carried;
    carried.Add(m_carried);
    ZuPoint* const p = carried.First();
    Disturb(m_random, p->m_dDX, p->m_dDY, p->m_dDZ, p);
    double adCovariance[9], adInverse[9];
    const double v = 0.001 * 0.001;
    const double adOwn[] = {v, 0.0, 0.0, 0.0, v, 0.0, 0.0, 0.0, v};
    r.CarriedCovariance(*p, adOwn, adCovariance);
    carried.Add(*set.source.Find(1u));
    r.Carry(&carried);
    const ZuPoint truth[] = {Transformed(m_exact.truth, m_carried),
                             Transformed(m_exact.truth, *m_exact.source.Find(1u))};
    std::size_t i = 7;
    for (const ZuPoint& point : {*p, *p->Next()}) {
      const ZuPoint d = point - truth[i > 9];
      m_spreads[i++].Add(d.m_dX, point.m_dDX * point.m_dDX);
      m_spreads[i++].Add(d.m_dY, point.m_dDY * point.m_dDY);
      m_spreads[i++].Add(d.m_dZ, point.m_dDZ * point.m_dDZ);
    }
    const ZuPoint off = *p - truth[0];
    const double ad[] = {off.m_dX, off.m_dY, off.m_dZ};
    ASSERT_TRUE(zu::internal::InvertSpd(3, adCovariance, adInverse));
    double dSquare = 0.0;
    for (int k = 0; k < 9; ++k) dSquare += ad[k / 3] * adInverse[k] * ad[k % 3];
    m_iInside += std::sqrt(dSquare) <= ZuConfidenceRadius(0.95, 3);
  }

  // An error of the smallest size that is found, in the best controlled coordinate of point 2.
  void AddError(const ZuSimilarityResult& r, SimilaritySet* pSet) {
    const ZuSimilarityPoint& point = *r.Find(2);
    const auto iAxis =
        std::max_element(point.adRedundancy, point.adRedundancy + 3) - point.adRedundancy;
    ZuPoint* const p = pSet->target.Find(2u);
    double* const apd[] = {&p->m_dX, &p->m_dY, &p->m_dZ};
    *apd[iAxis] += point.adNabla[iAxis];
    const ZuSimilarityResult bent = ZuAdjustSimilarity(pSet->target, pSet->source, m_options);
    m_iFound += bent.IsGood() && std::fabs(bent.Find(2)->adW[iAxis]) > bent.dTestLimit;
  }

  RandomGeometry m_random;
  SimilaritySet m_exact;
  ZuPoint m_carried;
  ZuSimilarityOptions m_options;
  std::array<Spread, 13> m_spreads;  // parameters, the new point, the common point
  int m_iRun = 0, m_iInside = 0, m_iFound = 0;
  int m_iTests = 0, m_iAlarms = 0, m_iRareAlarms = 0;
  double m_dRareLimit = ZuNormalLimit(kRareAlpha);
};

}  // namespace

// Predicted standard deviations of parameters and carried points, ellipsoids, false alarms and the
// errors that are found are those of many runs.
TEST(SimilarityTrials, PredictionsAreWhatManyRunsGive) {
  const Configuration configurations[] = {
      {"well spread", 12, 10.0, 10.0, 10.0, 1.02, 100.0, 0.001},
      {"strip", 10, 50.0, 0.5, 0.5, 1.0, 100.0, 0.001},
      {"three points", 3, 10.0, 10.0, 10.0, 1.0, 10.0, 0.001},
      {"seven digits", 8, 20.0, 20.0, 5.0, 0.9996, 5e6, 0.001},
      {"weights of 1 to 100", 12, 10.0, 10.0, 10.0, 1.0, 100.0, 0.01},
  };
  const int iRuns = AreLongTrials() ? 10000 : Runs(1500);
  double dAlarms = 0.0, dExpected = 0.0;
  for (const Configuration& configuration : configurations) {
    SCOPED_TRACE(configuration.szName);
    Trials trials(configuration);
    trials.Run(iRuns);
    trials.Check(AreLongTrials() ? 0.03 : TrialTolerance(0.09, 1500));
    trials.AddRareAlarms(&dAlarms, &dExpected);
  }
  EXPECT_NEAR(dAlarms / dExpected, 1.0, AreLongTrials() ? 0.1 : TrialTolerance(0.35, 1500));
}
