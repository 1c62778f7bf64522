// Networks with known truth: figures against trials, errors that were planted, what stays free.
#include "zu/adjust/network.h"

#include "tests/adjust/made_network.h"
#include "zu/adjust/error_ellipsoid.h"

namespace {

const std::initializer_list<int> kCalibration = {ZuNetworkC,  ZuNetworkXh, ZuNetworkYh, ZuNetworkA1,
                                                 ZuNetworkA2, ZuNetworkC1, ZuNetworkC2};

double Worst(const ZuNetworkResult& result, const MadeNetwork& made) {
  double dWorst = 0.0;
  for (size_t i = 0; i < made.truth.size(); ++i) {
    for (size_t k = 0; k < 3; ++k) {
      dWorst = std::max(dWorst, std::fabs(result.points[i][k] - made.truth[i][k]));
    }
  }
  return dWorst;
}

// About an image axis, from one rotation to a neighbouring one: of R'S.
double SmallTurn(const std::array<double, 9>& r, const std::array<double, 9>& s, size_t k) {
  const size_t a = (k + 1) % 3, b = (k + 2) % 3;
  double d = 0.0;
  for (size_t i = 0; i < 9; i += 3) d += r[i + b] * s[i + a] - r[i + a] * s[i + b];
  return 0.5 * d;
}

bool Contains(const std::string& strText, const std::string& strWord) {
  return strText.find(strWord) != std::string::npos;
}

// ZU_TRIALS runs (40): errors over predicted standard deviations have a mean square of 1.
TEST(Network, PredictsTheErrorsOfTrials) {
  const char* szTrials = std::getenv("ZU_TRIALS");
  const int iTrials = szTrials != nullptr ? std::atoi(szTrials) : 40;
  double dPoints = 0.0, dPhotos = 0.0, dRotations = 0.0, dCamera = 0.0;
  for (int i = 0; i < iTrials; ++i) {
    MadeNetwork made(MadeNetwork::Convergent, 12, 1000 + static_cast<unsigned>(i));
    const ZuNetwork truth = made.network;
    made.Estimate(kCalibration);
    made.Control(0.0002);
    ZuNetworkOptions options;
    options.test.sigmaKind = ZuSigmaKind::APriori;
    const ZuNetworkResult result = made.network.Adjust(options);
    ASSERT_EQ(result.status, ZuAdjustStatus::Good) << result.strText;
    const auto ratio = [](double dError, double dSd) { return dError * dError / (dSd * dSd); };
    for (size_t n = 0; n < made.truth.size(); ++n) {
      for (size_t k = 0; k < 3; ++k) {
        dPoints +=
            ratio(result.points[n][k] - made.truth[n][k], std::sqrt(result.pointCovariance[n][k])) /
            static_cast<double>(3 * made.truth.size() * static_cast<size_t>(iTrials));
      }
    }
    for (size_t n = 0; n < truth.photos.size(); ++n) {
      for (size_t k = 0; k < 3; ++k) {
        dPhotos += ratio(result.photos[n].adPosition[k] - truth.photos[n].adPosition[k],
                         result.photoSd[n][k]) /
                   static_cast<double>(3 * truth.photos.size() * static_cast<size_t>(iTrials));
        dRotations += ratio(SmallTurn(truth.photos[n].adRotation, result.photos[n].adRotation, k),
                            result.photoSd[n][3 + k]) /
                      static_cast<double>(3 * truth.photos.size() * static_cast<size_t>(iTrials));
      }
    }
    for (const int k : kCalibration) {
      dCamera += ratio(ZuNetworkParameterValue(result.cameras[0], k) -
                           ZuNetworkParameterValue(truth.cameras[0].camera, k),
                       result.cameraSd[0][static_cast<size_t>(k)]) /
                 static_cast<double>(kCalibration.size() * static_cast<size_t>(iTrials));
    }
  }
  const double dTolerance = iTrials >= 1000 ? 0.03 : 0.15;
  EXPECT_NEAR(std::sqrt(dPoints), 1.0, dTolerance);
  EXPECT_NEAR(std::sqrt(dPhotos), 1.0, dTolerance);
  EXPECT_NEAR(std::sqrt(dRotations), 1.0, dTolerance);
  EXPECT_NEAR(std::sqrt(dCamera), 1.0, dTolerance);
}

TEST(Network, SetsPlantedErrorsAside) {
  MadeNetwork made(MadeNetwork::Convergent, 56, 7);
  made.Estimate(kCalibration);
  made.Control(0.0002);
  ASSERT_GE(made.network.images.size(), 2000U);
  std::vector<size_t> planted = {11, 450, 833, 1278, 1902};
  for (const size_t i : planted) made.network.images[i].x += 20.0 * 0.0005;
  made.network.points[30].adGiven[2] += 20.0 * 0.0002;
  made.network.images[600].iPoint = (made.network.images[600].iPoint + 9) % 36;
  for (size_t i = 0; i < made.network.images.size(); ++i) {  // the true one of that number leaves
    if (i != 600 && made.network.images[i].iPhoto == made.network.images[600].iPhoto &&
        made.network.images[i].iPoint == made.network.images[600].iPoint) {
      made.network.images.erase(made.network.images.begin() + static_cast<std::ptrdiff_t>(i));
      break;
    }
  }
  ZuNetworkOptions options;
  options.test.bSnoop = true;
  options.test.sigmaKind = ZuSigmaKind::APriori;
  const ZuNetworkResult result = made.network.Adjust(options);
  ASSERT_EQ(result.status, ZuAdjustStatus::Good) << result.strText;
  EXPECT_LE(result.setAside.size(), 7U + 6U);  // 0.1 % of 2,000 false alarms
  int iImages = 0, iControl = 0;
  for (const ZuNetworkSetAside& aside : result.setAside) {
    iControl += aside.eKind == ZuNetworkKind::Control && aside.iIndex == 30;
    iImages += aside.eKind == ZuNetworkKind::Image && aside.dTest > 60.0;
  }
  EXPECT_EQ(iImages, 6);
  EXPECT_EQ(iControl, 1);
  for (const ZuNetworkTest& test : result.imageTests) {
    EXPECT_TRUE(!test.bUsed || test.dTest <= test.dLimit);
  }
  EXPECT_LT(Worst(result, made), 0.002);
}

// Control a hundred times weaker than the images: the whole network turns, and does not bend.
TEST(Network, ConvergesInFewStepsUnderWeakControl) {
  MadeNetwork made(MadeNetwork::Convergent, 24, 3, 0.00005);
  made.Estimate(kCalibration);
  made.Control(0.01);
  const ZuNetworkResult result = made.network.Adjust({});
  ASSERT_EQ(result.status, ZuAdjustStatus::Good) << result.strText;
  EXPECT_LE(result.iSteps, 8);
}

TEST(Network, ConvergesFromFarOrTellsWhyNot) {
  int iGood = 0;
  for (unsigned uSeed = 1; uSeed <= 10; ++uSeed) {
    MadeNetwork made(MadeNetwork::Convergent, 12, uSeed);
    made.Control(0.0);
    made.Disturb(0.3, 0.35);
    const ZuNetworkResult result = made.network.Adjust({});
    if (result.status != ZuAdjustStatus::Good) {
      EXPECT_FALSE(result.strText.empty());
      continue;
    }
    ++iGood;
    EXPECT_LT(Worst(result, made), 0.002);
  }
  EXPECT_GE(iGood, 9);
}

// Exact observations of every kind, near a million: the truth comes back, the frame by what is
// given.
TEST(Network, KeepsEveryKindOfObservation) {
  for (const bool bControl : {false, true}) {
    MadeNetwork made(MadeNetwork::Convergent, 8, 3, 0.0);
    const double dFar[3] = {1e6, 2e6, 500.0};
    for (auto& p : made.truth) {
      for (size_t k = 0; k < 3; ++k) p[k] += dFar[k];
    }
    for (ZuNetworkPoint& point : made.network.points) {
      for (size_t k = 0; k < 3; ++k) point.adPosition[k] += dFar[k];
    }
    for (ZuNetworkPhoto& photo : made.network.photos) {
      for (size_t k = 0; k < 3; ++k) photo.adPosition[k] += dFar[k];
    }
    const auto length = [&](size_t a, size_t b) {
      double d = 0.0;
      for (size_t k = 0; k < 3; ++k) d = std::hypot(d, made.truth[a][k] - made.truth[b][k]);
      return d;
    };
    made.network.distances = {{0, 35, length(0, 35), 1e-5}, {5, 30, length(5, 30), 1e-5}};
    if (bControl) {
      made.Control(1e-5);
      for (size_t i = 0; i < made.truth.size(); ++i) {
        made.network.points[i].adGiven = made.truth[i];
      }
    }
    made.network.differences = {{7, 14, 2, made.truth[14][2] - made.truth[7][2], 1e-5}};
    // A row of the grid lies in a plane y = const.
    made.network.planes = {{{2, 8, 14, 20, 26, 32}, 1e-5}};
    if (bControl) {
      made.network.photos[2].adMeasured = made.network.photos[2].adPosition;
      made.network.photos[2].adMeasuredSd = {1e-4, 0.0, 1e-4};
    }
    made.Estimate({ZuNetworkC, ZuNetworkXh});
    made.network.cameras[0].adSd[ZuNetworkYh] = 0.01;
    ZuNetworkOptions options;
    options.eDatum = bControl ? ZuNetworkDatum::Control : ZuNetworkDatum::Inner;
    const ZuNetworkResult result = made.network.Adjust(options);
    ASSERT_EQ(result.status, ZuAdjustStatus::Good) << result.strText;
    EXPECT_EQ(result.iDefect,
              bControl ? 0 : 5);  // a height difference holds the tilt about one axis
    EXPECT_LT(Worst(result, made), 1e-8);
    EXPECT_LT(result.dSigma0, 1e-4);
    double dRedundancy = 0.0;
    const auto add = [&](const std::vector<ZuNetworkTest>& tests) {
      for (const ZuNetworkTest& t : tests) dRedundancy += t.adR[0] + t.adR[1] + t.adR[2];
    };
    add(result.imageTests);
    add(result.controlTests);
    add(result.centreTests);
    add(result.distanceTests);
    add(result.differenceTests);
    add(result.planeTests[0]);
    // The rest is the share of the observed parameter.
    EXPECT_LT(dRedundancy, result.iRedundancy + 1e-6);
    EXPECT_GT(dRedundancy, result.iRedundancy - 1.0);
  }
}

// Control of different accuracy along its axes is, in a frame turned by 45 degrees, control with
// covariances.
TEST(Network, KeepsTheCovarianceOfControl) {
  MadeNetwork made(MadeNetwork::Convergent, 8, 11);
  made.Estimate({ZuNetworkC});
  made.Control(0.0002);
  ZuNetwork turned = made.network;
  const double s = std::sqrt(0.5), a2 = 0.0001 * 0.0001, b2 = 0.0006 * 0.0006;
  const auto turn = [s](double* x, double* y) {
    const double dX = s * (*x - *y), dY = s * (*x + *y);
    *x = dX;
    *y = dY;
  };
  for (size_t i = 0; i < turned.points.size(); ++i) {
    ZuNetworkPoint& point = turned.points[i];
    turn(&point.adPosition[0], &point.adPosition[1]);
    turn(&point.adGiven[0], &point.adGiven[1]);
    made.network.points[i].adGivenSd = {0.0001, 0.0006, 0.0002};
    point.adGivenSd = {std::sqrt((a2 + b2) / 2.0), std::sqrt((a2 + b2) / 2.0), 0.0002};
    point.adGivenCovariance = {(a2 - b2) / 2.0, 0.0, 0.0};
  }
  for (ZuNetworkPhoto& photo : turned.photos) {
    turn(&photo.adPosition[0], &photo.adPosition[1]);
    for (size_t k = 0; k < 3; ++k) turn(&photo.adRotation[k], &photo.adRotation[3 + k]);
  }
  const ZuNetworkResult one = made.network.Adjust({}), other = turned.Adjust({});
  ASSERT_EQ(other.status, ZuAdjustStatus::Good) << other.strText;
  EXPECT_NEAR(other.dSigma0, one.dSigma0, 1e-9);
  for (size_t i = 0; i < one.points.size(); ++i) {
    std::array<double, 3> expected = one.points[i];
    turn(&expected[0], &expected[1]);
    for (size_t k = 0; k < 3; ++k) EXPECT_NEAR(other.points[i][k], expected[k], 1e-8);
    // The ellipsoid turns with the frame.
    const auto e = ZuMakeErrorEllipsoid(one.pointCovariance[i], one.iRedundancy);
    const auto f = ZuMakeErrorEllipsoid(other.pointCovariance[i], other.iRedundancy);
    for (size_t k = 0; k < 3; ++k) EXPECT_NEAR(f.adAxes[k] / e.adAxes[k], 1.0, 1e-5);
    EXPECT_GE(e.adAxes[0], e.adAxes[1]);
  }
  turned.points[0].adGivenCovariance[1] = 1.0;
  EXPECT_TRUE(Contains(turned.Adjust({}).strText, "point 101: the covariance"));
}

// 2.80 standard deviations hold 95 % of a ball.
TEST(Network, EllipsoidsLieAlongTheirAxes) {
  const double c = std::cos(0.3), s = std::sin(0.3), x2 = 4.0, y2 = 1.0, z2 = 0.25;
  const auto e = ZuMakeErrorEllipsoid(
      {c * c * x2 + s * s * y2, s * s * x2 + c * c * y2, z2, c * s * (x2 - y2), 0.0, 0.0}, 0);
  const double expected[] = {5.590967, 2.795483, 1.397742};
  for (size_t k = 0; k < 3; ++k) EXPECT_NEAR(e.adAxes[k], expected[k], 1e-6);
  EXPECT_NEAR(e.adDirections[0][1] / e.adDirections[0][0], s / c, 1e-12);
  EXPECT_EQ(std::fabs(e.adDirections[2][2]), 1.0);
}

TEST(Network, TellsWhatStaysFree) {
  const auto text = [](MadeNetwork::Kind eKind, std::initializer_list<int> parameters, int iPoints,
                       ZuNetworkDatum eDatum) {
    MadeNetwork made(eKind, 9, 5);
    made.Estimate(parameters);
    for (int i = 0; i < iPoints; ++i) {
      ZuNetworkPoint& point = made.network.points[static_cast<size_t>(7 * i)];
      point.iControl = 7;
      point.adGiven = point.adPosition;
    }
    ZuNetworkOptions options;
    options.eDatum = eDatum;
    const ZuNetworkResult result = made.network.Adjust(options);
    EXPECT_EQ(result.status, ZuAdjustStatus::RankDefect) << result.dLeastEigenvalue;
    return result.strText;
  };
  const auto inner = ZuNetworkDatum::Inner, control = ZuNetworkDatum::Control;
  EXPECT_TRUE(Contains(text(MadeNetwork::Parallel, {ZuNetworkC}, 0, inner),
                       "camera constant against distance"));
  EXPECT_TRUE(Contains(text(MadeNetwork::ParallelFlat, {ZuNetworkC}, 0, inner),
                       "camera constant against distance"));
  EXPECT_TRUE(Contains(text(MadeNetwork::Parallel, {ZuNetworkXh, ZuNetworkYh}, 0, inner),
                       "principal point"));
  EXPECT_TRUE(Contains(text(MadeNetwork::Convergent, {}, 0, control), "shift, rotation and scale"));
  EXPECT_TRUE(Contains(text(MadeNetwork::Convergent, {}, 2, control),
                       "rotation about the line through points 101, 108"));
}

TEST(Network, NamesPhotoAndPointOfWhatIsWrong) {
  const double dNaN = std::numeric_limits<double>::quiet_NaN();
  for (const auto& [szWhat, eStatus, damage] :
       Cases<const char*, ZuAdjustStatus, std::function<void(ZuNetwork&)>>{
           {"photo 1, point 104", ZuAdjustStatus::NotFinite,
            [&](ZuNetwork& n) { n.images[3].x = dNaN; }},
           {"photo 1, point 104", ZuAdjustStatus::NotFinite,
            [](ZuNetwork& n) { n.images[3].sxx = 0.0; }},
           {"point 105", ZuAdjustStatus::NotFinite,
            [&](ZuNetwork& n) { n.points[4].adPosition[1] = dNaN; }},
           {"photo 3", ZuAdjustStatus::NotFinite,
            [](ZuNetwork& n) { n.photos[2].adRotation[0] = 7.0; }},
           {"belongs to no photo", ZuAdjustStatus::NotFinite,
            [](ZuNetwork& n) { n.images[0].iPhoto = 99; }},
           {"mode 1", ZuAdjustStatus::NotFinite,
            [](ZuNetwork& n) { n.cameras[0].camera.m_iMode = eCameraModeViva; }},
           {"no photo with three", ZuAdjustStatus::TooFew, [](ZuNetwork& n) { n.images.clear(); }},
           {"photo 1, point 104: measured twice", ZuAdjustStatus::Good,
            [](ZuNetwork& n) { n.images.push_back(n.images[3]); }},
           {"photo 99: no point", ZuAdjustStatus::Good,
            [](ZuNetwork& n) { n.photos.emplace_back().uId = 99; }},
           {"point 99: measured in no photo", ZuAdjustStatus::Good,
            [](ZuNetwork& n) { n.points.emplace_back().uId = 99; }}}) {
    MadeNetwork made(MadeNetwork::Convergent, 8, 2);
    made.Control(0.0);
    damage(made.network);
    const ZuNetworkResult result = made.network.Adjust({});
    EXPECT_EQ(result.status, eStatus) << szWhat << ": " << result.strText;
    std::string strAll = result.strText;
    for (const std::string& strText : result.warnings) strAll += "\n" + strText;
    EXPECT_TRUE(Contains(strAll, szWhat)) << strAll;
  }
}

}  // namespace
