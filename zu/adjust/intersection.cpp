#include "zu/adjust/intersection.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <tuple>

#include "zu/adjust/internal/group_engine.h"
#include "zu/adjust/internal/image_ray.h"
#include "zu/adjust/internal/snooping.h"
#include "zu/photo/camera.h"

namespace zu::internal {

namespace {

using Vec = Eigen::Vector3d;

constexpr double kHalfPi = 1.5707963267948966;

struct Ray {
  const ZuCamera* pCamera;
  Pose pose;
  double m[2], Q[3];  // measured [mm], variances xx, xy, yy
  std::array<double, 36> covariance;
  Vec direction;  // object space
};

bool MakeRay(const ZuIntersectionRay& from, double dSigma, Ray* p) {
  if (from.pCamera == nullptr) return false;
  p->pCamera = from.pCamera;
  double dSum = 0.0;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      p->pose.R[static_cast<size_t>(3 * i + j)] = from.pose.rotation[i + 1][j + 1];
      dSum += from.pose.rotation[i + 1][j + 1];
    }
    p->pose.X0[static_cast<size_t>(i)] = from.pose.position[i + 1];
    dSum += from.pose.position[i + 1];
  }
  const ZuImageObservation& image = from.image;
  p->m[0] = image.x;
  p->m[1] = image.y;
  const bool bTold = image.dVarianceX > 0.0 && image.dVarianceY > 0.0;
  p->Q[0] = bTold ? image.dVarianceX : dSigma * dSigma;
  p->Q[1] = bTold ? image.dCovariance : 0.0;
  p->Q[2] = bTold ? image.dVarianceY : dSigma * dSigma;
  p->covariance = from.pose.covariance;
  for (const double d : p->covariance) dSum += d;
  double v[3];
  if (!std::isfinite(dSum) || !ImageDirection(*p->pCamera, p->m[0], p->m[1], v)) return false;
  const auto d = Direction(p->pose, v);
  p->direction = Vec(d[0], d[1], d[2]);
  return true;
}

class PointFit : public GroupModel {
 public:
  int Parameters() const override { return 3; }
  int Groups() const override { return static_cast<int>(rays.size()); }
  bool IsUsed(int iGroup) const override { return used[static_cast<size_t>(iGroup)] != 0; }
  void Step(const double* pdCorrection) override { point += Eigen::Map<const Vec>(pdCorrection); }

  void Linearize(int iGroup, GroupEquation* q) const override {
    const Ray& ray = rays[static_cast<size_t>(iGroup)];
    q->m = 2;
    double m[2];
    ImageSlope slope{};
    const bool bSeen = Project(*ray.pCamera, ray.pose, point.data(), m, &slope);
    q->M[0] = ray.Q[0];
    q->M[1] = q->M[2] = ray.Q[1];
    q->M[3] = ray.Q[2];
    for (int i = 0; i < 2; ++i) {
      q->w[i] = bSeen ? m[i] - ray.m[i] : std::numeric_limits<double>::quiet_NaN();
      for (int j = 0; j < 3; ++j) q->A[static_cast<size_t>(3 * i + j)] = slope.point[i][j];
      for (int j = 0; j < 2; ++j) {
        for (int k = 0; k < 36; ++k) {
          q->M[2 * i + j] +=
              slope.pose[i][k / 6] * ray.covariance[static_cast<size_t>(k)] * slope.pose[j][k % 6];
        }
      }
    }
  }

  // To where the rays used come closest to each other; false for parallel ones.
  bool Start() {
    Eigen::Matrix3d N = Eigen::Matrix3d::Zero();
    Vec h = Vec::Zero(), centre = Vec::Zero();
    double dCount = 0.0;
    for (size_t i = 0; i < rays.size(); ++i) {
      if (!used[i]) continue;
      centre += Eigen::Map<const Vec>(rays[i].pose.X0.data());
      dCount += 1.0;
    }
    centre /= dCount;
    for (size_t i = 0; i < rays.size(); ++i) {
      if (!used[i]) continue;
      const Eigen::Matrix3d across =
          Eigen::Matrix3d::Identity() - rays[i].direction * rays[i].direction.transpose();
      N += across;
      h += across * (Eigen::Map<const Vec>(rays[i].pose.X0.data()) - centre);
    }
    point = centre + N.ldlt().solve(h);
    return point.allFinite();
  }

  double LargestAngle() const {
    double dAngle = 0.0;
    for (size_t i = 0; i < rays.size(); ++i) {
      for (size_t j = 0; used[i] && j < i; ++j) {
        if (!used[j]) continue;
        const double a = std::atan2(rays[i].direction.cross(rays[j].direction).norm(),
                                    std::fabs(rays[i].direction.dot(rays[j].direction)));
        dAngle = std::max(dAngle, std::min(a, kHalfPi));
      }
    }
    return dAngle;
  }

  // Index of the first ray used that has the point behind it; -1: none.
  int Behind() const {
    for (size_t i = 0; i < rays.size(); ++i) {
      if (used[i] && !(ToImage(rays[i].pose, point.data())[2] < 0.0)) return static_cast<int>(i);
    }
    return -1;
  }

  std::vector<Ray> rays;
  std::vector<char> used;
  Vec point = Vec::Zero();
};

class Intersection {
 public:
  Intersection(const std::vector<ZuIntersectionRay>& rays, const ZuIntersectionOptions& options)
      : m_options(options) {
    m_order.resize(rays.size());
    std::iota(m_order.begin(), m_order.end(), size_t{0});
    std::sort(m_order.begin(), m_order.end(), [&](size_t i, size_t j) {
      const ZuImageObservation &a = rays[i].image, &b = rays[j].image;
      return std::tie(a.uId, a.x, a.y) < std::tie(b.uId, b.x, b.y);
    });
    m_result.tests.resize(rays.size());
    std::vector<size_t> usable;
    for (const size_t i : m_order) {
      ZuPointTest& test = m_result.tests[i];
      test.uId = rays[i].image.uId;
      test.iDimension = 2;
      test.bUsed = false;
      test.dTest = std::numeric_limits<double>::infinity();
      Ray ray;
      if (!MakeRay(rays[i], options.dSigma, &ray)) continue;
      m_fit.rays.push_back(ray);
      usable.push_back(i);
    }
    m_order = usable;
    m_fit.used.assign(usable.size(), 1);
  }

  ZuIntersectionResult Run() {
    const size_t n = m_fit.rays.size();
    if (n < 2) {
      Refuse(ZuAdjustStatus::TooFew,
             std::to_string(n) + (n == 1 ? " ray" : " rays") + ": two or more would be right");
      return m_result;
    }
    EngineResult result;
    if (!m_options.tests.bSnoop || n < 3) {
      result = Once();
    } else {
      Snoop(static_cast<int>(n),
            [&](const std::vector<char>& used, std::vector<SnoopTest>* pTests, int* piRedundancy) {
              m_fit.used = used;
              result = Once();
              *piRedundancy = result.iRedundancy;
              if (result.status != ZuAdjustStatus::Good) return false;
              const auto tests = TestGroups(m_fit, TesterOf(result));
              pTests->resize(n);
              for (size_t i = 0; i < n; ++i) (*pTests)[i] = {tests[i].dTest, tests[i].dLimit};
              return true;
            });
    }
    Store(result);
    return m_result;
  }

 private:
  void Refuse(ZuAdjustStatus status, const std::string& strWhy) {
    m_result.status = status;
    m_result.strWhy = strWhy;
  }

  EngineResult Once() {
    EngineResult result;
    m_result.strWhy.clear();
    m_result.dAngle = m_fit.LargestAngle();
    if (!(m_result.dAngle >= m_options.dLeastAngle) || !m_fit.Start()) {
      m_result.strWhy =
          "the rays are parallel to each other: photos from places further apart would be right";
      result.status = ZuAdjustStatus::RankDefect;
      return result;
    }
    if (m_fit.Behind() < 0) result = Adjust(m_fit);
    const int iBehind = m_fit.Behind();
    if (iBehind >= 0 || !m_fit.point.allFinite()) {
      m_result.strWhy =
          "the rays meet behind photo " +
          std::to_string(m_result.tests[m_order[static_cast<size_t>(std::max(iBehind, 0))]].uId) +
          ": they do not belong to one point, or an orientation is wrong";
      result = EngineResult();
      result.status = ZuAdjustStatus::NotConverged;
    }
    return result;
  }

  GroupTester TesterOf(const EngineResult& result) const {
    return GroupTester(result,
                       ChooseSigma(result, m_options.tests.sigmaKind, m_options.bSigmaGiven),
                       m_options.tests, static_cast<int>(m_fit.rays.size()));
  }

  void Store(const EngineResult& result) {
    m_result.iRedundancy = result.iRedundancy;
    if (result.status != ZuAdjustStatus::Good) {
      Refuse(result.status, !m_result.strWhy.empty()
                                ? m_result.strWhy
                                : std::string("the adjustment of the point ended with ") +
                                      ZuAdjustStatusText(result.status));
      return;
    }
    const Sigma sigma = ChooseSigma(result, m_options.tests.sigmaKind, m_options.bSigmaGiven);
    m_result.status = ZuAdjustStatus::Good;
    m_result.dSigma0 = sigma.dSigma0;
    m_result.sigmaKind = sigma.kind;
    for (int i = 0; i < 3; ++i) m_result.position[i + 1] = m_fit.point[i];
    for (size_t i = 0; i < 9; ++i) {
      m_result.covariance[i] = sigma.dSigma0 * sigma.dSigma0 * result.covariance[i];
    }
    const auto tests = TestGroups(m_fit, TesterOf(result));
    for (size_t i = 0; i < m_order.size(); ++i) {
      ZuPointTest& test = m_result.tests[m_order[i]];
      const unsigned uId = test.uId;
      test = tests[i];
      test.uId = uId;
      m_result.iRays += test.bUsed;
    }
  }

  const ZuIntersectionOptions& m_options;
  PointFit m_fit;
  std::vector<size_t> m_order;  // of the rays of the fit, in the caller's list
  ZuIntersectionResult m_result;
};

}  // namespace

}  // namespace zu::internal

ZuIntersectionResult ZuIntersectRays(const std::vector<ZuIntersectionRay>& rays,
                                     const ZuIntersectionOptions& options) {
  return zu::internal::Intersection(rays, options).Run();
}
