// The adjustment of 21 photos of a calibration sheet against results that were made elsewhere.
#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/support/test.h"
#include "zu/adjust/network_project.h"
#include "zu/adjust/orientation_project.h"
#include "zu/points/point_list.h"
#include "zu/project/project.h"

namespace {

using Json = nlohmann::json;

std::string Sample(const std::string& strName) {
  return ZU_SOURCE_DIR "/samples/network/" + strName;
}

ZuPointList ReadCoordinates(const Json& name) {
  static eZuPointRWMask columns[] = {eZuPointRWId, eZuPointRWX,  eZuPointRWY,  eZuPointRWZ,
                                     eZuPointRWDX, eZuPointRWDY, eZuPointRWDZ, eZuPointRWEnd};
  ZuPointList points;
  if (name.is_string()) {
    points.ReadFile(Sample(name).c_str(), TZuFormatTable<eZuPointRWMask>(columns));
  }
  return points;
}

class Network : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    m_case = Json::parse(std::ifstream(Sample("expected.json")))["cases"][GetParam()];
    const Json& input = m_case["input"];
    ZuProject project;
    ASSERT_TRUE(project.Read(Sample(input["project"]).c_str()));
    ZuNetworkInput options;
    for (const std::string name : input["estimated"]) {
      for (int k = 0; k < ZuNetworkParameters; ++k) {
        if (name == ZuNetworkParameterName(k)) options.uEstimate |= 1U << k;
      }
    }
    m_made = ZuMakeNetwork(project, ReadCoordinates(input["control"]),
                           ReadCoordinates(input["approx"]), options);
    m_options.eDatum =
        input["datum"] == "control" ? ZuNetworkDatum::Control : ZuNetworkDatum::Inner;
    m_result = m_made.network.Adjust(m_options);
    ASSERT_EQ(m_result.status, ZuAdjustStatus::Good) << m_result.strText;
  }

  int PointOf(unsigned uId) const {
    const auto& points = m_made.network.points;
    return static_cast<int>(
        std::find_if(points.begin(), points.end(), [&](const auto& p) { return p.uId == uId; }) -
        points.begin());
  }
  static void Near(double dValue, double dExpected, double dSd, double dExpectedSd,
                   const std::string& strWhat) {
    EXPECT_NEAR(dValue, dExpected, 1e-3 * dExpectedSd) << strWhat;
    EXPECT_NEAR(dSd, dExpectedSd, 1e-4 * dExpectedSd) << "sd of " << strWhat;
  }

  Json m_case;
  ZuNetworkOfProject m_made;
  ZuNetworkOptions m_options;
  ZuNetworkResult m_result;
};

TEST_P(Network, MeetsTheResultsOfTheSample) {
  EXPECT_NEAR(m_result.dSigma0, m_case["sigma0"], 1e-6);
  EXPECT_EQ(m_result.iRedundancy, m_case["redundancy"]);
  EXPECT_EQ(m_result.iUnknowns, m_case["unknowns"]);
  EXPECT_EQ(m_result.iObservations, m_case["observations"]);
  EXPECT_EQ(m_result.iDefect, m_case["defect"]);
  const Json& camera = m_case["cameras"][0];
  std::vector<ZuNetworkUnknown> unknowns;
  for (const std::string name : camera["parameters"]) {
    for (int k = 0; k < ZuNetworkParameters; ++k) {
      if (name != ZuNetworkParameterName(k)) continue;
      unknowns.push_back({ZuNetworkUnknown::Camera, 0, k});
      Near(ZuNetworkParameterValue(m_result.cameras[0], k), camera["values"][name],
           m_result.cameraSd[0][static_cast<size_t>(k)], camera["sd"][name], name);
    }
  }
  const std::vector<double> q = m_result.Covariance(unknowns);
  const size_t n = unknowns.size();
  for (size_t i = 0; i < n; ++i) {
    for (size_t k = 0; k < n; ++k) {
      EXPECT_NEAR(q[n * i + k] / std::sqrt(q[n * i + i] * q[n * k + k]),
                  camera["correlation"][i][k], 1e-4);
    }
  }
  for (size_t i = 0; i < m_result.photos.size(); ++i) {
    const Json& photo = m_case["photos"][i];
    ASSERT_EQ(m_result.photos[i].uId, photo["id"]);
    for (size_t k = 0; k < 3; ++k) {
      const std::string strWhat = "photo " + std::to_string(i);
      Near(m_result.photos[i].adPosition[k], photo["position"][k], m_result.photoSd[i][k],
           photo["sd_position"][k], strWhat);
      const char* const names[] = {"a", "b", "c"};
      Near(m_result.photoAngles[i][k], photo["angles"][names[k]], m_result.photoAnglesSd[i][k],
           photo["sd_angles"][names[k]], strWhat);
      const double dSd = photo["sd_rotation"][k];
      EXPECT_NEAR(m_result.photoSd[i][3 + k], dSd, 1e-4 * dSd) << strWhat;
    }
  }
  for (const Json& point : m_case["points"]) {
    const size_t i = static_cast<size_t>(PointOf(point["id"]));
    const double sd[3] = {point["sx"], point["sy"], point["sz"]};
    const char* const names[] = {"x", "y", "z"};
    for (size_t k = 0; k < 3; ++k) {
      Near(m_result.points[i][k], point[names[k]], std::sqrt(m_result.pointCovariance[i][k]), sd[k],
           "point " + point["id"].dump());
      EXPECT_NEAR(m_result.pointCovariance[i][3 + k], point["cov"][k],
                  1e-4 * sd[k == 2 ? 1 : 0] * sd[k == 0 ? 1 : 2]);
    }
    EXPECT_EQ(m_result.pointRays[i], point["rays"]);
  }
  for (const Json& d : m_case["distances"]) {
    const double dSd = d["sd"];
    EXPECT_NEAR(m_result.DistanceSd(PointOf(d["a"]), PointOf(d["b"])), dSd, 1e-4 * dSd);
  }
}

TEST_P(Network, TestsItsObservationsAsTheSampleDoes) {
  std::vector<size_t> order(m_result.imageTests.size());
  double dLeast = 1.0, dSum = 0.0;
  const auto largest = [&](size_t i) {
    const double* w = m_result.imageTests[i].adW;
    return std::max(std::fabs(w[0]), std::fabs(w[1]));
  };
  for (size_t i = 0; i < order.size(); ++i) {
    order[i] = i;
    for (int k = 0; k < 2; ++k) {
      dLeast = std::min(dLeast, m_result.imageTests[i].adR[k]);
      dSum += m_result.imageTests[i].adR[k] / static_cast<double>(2 * order.size());
    }
  }
  EXPECT_NEAR(dLeast, m_case["redundancy_numbers"]["min"], 1e-6);
  EXPECT_NEAR(dSum, m_case["redundancy_numbers"]["mean"], 1e-6);
  std::sort(order.begin(), order.end(),
            [&](size_t a, size_t b) { return largest(a) > largest(b); });
  for (size_t n = 0; n < 10; ++n) {
    const Json& expected = m_case["largest_residuals"][n];
    const ZuNetworkImagePoint& image = m_made.network.images[order[n]];
    const ZuNetworkTest& test = m_result.imageTests[order[n]];
    const auto px = ZuToPixels(m_made.pixels[order[n]], test.adV);
    EXPECT_EQ(m_made.network.photos[static_cast<size_t>(image.iPhoto)].uId, expected["photo"]);
    EXPECT_EQ(m_made.network.points[static_cast<size_t>(image.iPoint)].uId, expected["id"]);
    EXPECT_NEAR(px[0], expected["vx"], 1e-5);
    EXPECT_NEAR(px[1], expected["vy"], 1e-5);
    EXPECT_NEAR(test.adV[0], expected["vx_mm"], 1e-8);
    EXPECT_NEAR(test.adV[1], expected["vy_mm"], 1e-8);
    EXPECT_NEAR(test.adR[0], expected["rx"], 1e-6);
    EXPECT_NEAR(test.adR[1], expected["ry"], 1e-6);
    EXPECT_NEAR(test.adW[0], expected["wx"], 1e-4);
    EXPECT_NEAR(test.adW[1], expected["wy"], 1e-4);
  }
  for (size_t n = 0; n < m_case["control"].size(); ++n) {
    const Json& expected = m_case["control"][n];
    const size_t k = n % 3;
    const ZuNetworkTest& test = m_result.controlTests[static_cast<size_t>(PointOf(expected["id"]))];
    EXPECT_NEAR(test.adV[k], expected["v"], 1e-8);
    EXPECT_NEAR(test.adR[k], expected["r"], 1e-6);
    EXPECT_NEAR(test.adW[k], expected["w"], 1e-4);
  }
}

// From the pixels and four control points alone.
TEST_P(Network, IsReachedWithoutOrientations) {
  const Json& input = m_case["input"];
  ZuProject project;
  ASSERT_TRUE(project.Read(Sample(input["project"]).c_str()));
  for (ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
    p->SetHasAOR(false);
    p->SetRotAOR(0.0, 0.0, 0.0);
    p->SetPosAOR(0.0, 0.0, 0.0);
  }
  const ZuProjectOrientation found =
      ZuOrientProject(&project, ReadCoordinates("control_fixed.coo"), {});
  ASSERT_EQ(found.CountGood(), 21);
  ZuNetworkOfProject made = ZuMakeNetwork(project, ReadCoordinates(input["control"]),
                                          ReadCoordinates(input["approx"]), {});
  made.network.cameras[0].adSd = m_made.network.cameras[0].adSd;
  m_options.bStatistics = false;
  const ZuNetworkResult result = made.network.Adjust(m_options);
  ASSERT_EQ(result.status, ZuAdjustStatus::Good) << result.strText;
  EXPECT_NEAR(result.dSigma0, m_case["sigma0"], 1e-6);
  for (size_t i = 0; i < result.photos.size(); ++i) {
    for (size_t k = 0; k < 3; ++k) {
      EXPECT_NEAR(result.photos[i].adPosition[k], m_result.photos[i].adPosition[k],
                  1e-4 * m_result.photoSd[i][k]);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Sample, Network,
                         testing::Values("fixed", "weighted", "free", "fixed_r0", "fixed_all",
                                         "fixed_radial"),
                         [](const auto& at) { return std::string(at.param); });

}  // namespace
