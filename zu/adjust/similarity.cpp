#include "zu/adjust/similarity.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>

#include "zu/adjust/internal/group_engine.h"
#include "zu/adjust/internal/similarity_model.h"
#include "zu/adjust/internal/similarity_points.h"
#include "zu/adjust/internal/snooping.h"

using zu::internal::CommonPoint;
using zu::internal::CommonPoints;
using zu::internal::EngineResult;
using zu::internal::GroupTester;
using zu::internal::Sigma;
using zu::internal::SimilarityModel;

namespace {

using RowMatrix = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
using Covariance7 = Eigen::Matrix<double, 7, 7, Eigen::RowMajor>;

// Standard deviation of a rotation [rad], and of the scale relative to itself, from which on the
// points are said not to decide it.
constexpr double kLargestSd = 0.5;

// Chance that sigma0 a posteriori is said not to fit although it does.
constexpr double kSigmaAlpha = 0.05;

// Standard deviation of a computed coordinate over the largest one [-].
constexpr double kRounding = 4.0 * std::numeric_limits<double>::epsilon();

constexpr double kSteep = 1e-8;  // cosine of the angle about x below which it is a right one [-]

class SimilarityRun {
 public:
  SimilarityRun(const CommonPoints& common, const ZuSimilarityOptions& options)
      : m_common(common), m_options(options), m_model(common.points, options) {}

  ZuSimilarityResult Run() {
    m_result.kind = m_options.kind;
    m_result.bSigmaGiven = m_common.bSigmaGiven;
    m_result.warnings = m_common.warnings;
    m_result.dOwnVariance = m_common.dOwnVariance;
    m_result.dOwnTargetVariance = m_common.dOwnTargetVariance;
    if (!m_common.strFault.empty()) {
      Fail(ZuAdjustStatus::NotFinite, m_common.strFault);
      return m_result;
    }
    const std::vector<char> start = Start();
    if (m_options.tests.bSnoop) {
      const auto snooped = zu::internal::Snoop(
          start, [this](const std::vector<char>& used, std::vector<zu::internal::SnoopTest>* pTests,
                        int* piRedundancy) {
            if (!Adjust(used)) return false;
            Test();
            for (std::size_t u = 0; u < used.size(); ++u) {
              (*pTests)[u] = {m_result.points[u].dTest, m_result.points[u].dLimit};
            }
            *piRedundancy = m_engine.iRedundancy;
            return true;
          });
      if (!snooped.bGood) return m_result;
      StoreSetAside(snooped);
    } else {
      if (!Adjust(start)) return m_result;
      Test();
      for (const ZuSimilarityPoint& p : m_result.points) {
        if (!p.bUsed) StoreSetAside(p, p.dTest, p.dLimit);
      }
    }
    Finish();
    return std::move(m_result);
  }

 private:
  // Of the coordinates [unit of the target].
  double Rounding() const {
    return kRounding * std::max(m_common.dTargetLargest, m_model.Scale() * m_common.dSourceLargest);
  }

  // Which points the adjustment begins with.
  std::vector<char> Start() const {
    std::vector<unsigned> aside = m_options.startAside;
    std::vector<char> start(m_common.points.size(), 1);
    if (aside.empty()) return start;
    std::sort(aside.begin(), aside.end());
    for (std::size_t u = 0; u < start.size(); ++u) {
      start[u] = !std::binary_search(aside.begin(), aside.end(), m_common.points[u].uId);
    }
    return start;
  }

  void Fail(ZuAdjustStatus status, const std::string& strReason) {
    m_result.status = status;
    m_result.strReason = strReason;
    m_result.points.clear();
  }
  void FailFree(const std::string& strFree) {
    Fail(ZuAdjustStatus::RankDefect, "the common points do not decide the " + strFree);
    m_result.strFreeDirection = strFree;
  }

  bool Adjust(const std::vector<char>& used) {
    m_result.status = ZuAdjustStatus::Good;
    m_result.strReason.clear();
    m_result.strFreeDirection.clear();
    const auto iUsed = std::count(used.begin(), used.end(), 1);
    if (3 * iUsed < m_model.Parameters()) {
      Fail(ZuAdjustStatus::TooFew, std::to_string(iUsed) + " common point" +
                                       (iUsed == 1 ? "" : "s") + " for " +
                                       std::to_string(m_model.Parameters()) + " parameters, " +
                                       std::to_string((m_model.Parameters() + 2) / 3) +
                                       (m_model.Parameters() > 3 ? " are needed" : " is needed"));
      return false;
    }
    switch (m_model.Start(used)) {
      case SimilarityModel::Defect::NotFinite:
        Fail(ZuAdjustStatus::NotFinite,
             "the coordinates are too large, or too far apart, to reckon with");
        return false;
      case SimilarityModel::Defect::OnePlace:
        FailFree(
            (m_options.kind == ZuSimilarityKind::Similarity ? "rotation and scale" : "rotation") +
            (" about " + zu::internal::LabelsOf(m_common.points, used)) +
            ", which lie in one place");
        return false;
      case SimilarityModel::Defect::Line:
        FailFree("rotation about the line through " +
                 zu::internal::LabelsOf(m_common.points, used));
        return false;
      case SimilarityModel::Defect::Vertical:
        FailFree("heading about the vertical through " +
                 zu::internal::LabelsOf(m_common.points, used));
        return false;
      case SimilarityModel::Defect::None:
        break;
    }
    m_engine = zu::internal::Adjust(m_model);
    switch (m_engine.status) {
      case ZuAdjustStatus::RankDefect:
        FailFree("rotation about the line through " +
                 zu::internal::LabelsOf(m_common.points, used));
        return false;
      case ZuAdjustStatus::NotConverged:
        Fail(m_engine.status, "no end after " + std::to_string(m_engine.iSteps) + " steps");
        return false;
      case ZuAdjustStatus::NotFinite:
      case ZuAdjustStatus::TooFew:
        Fail(m_engine.status, "the numbers of the common points are too far apart to reckon with");
        return false;
      case ZuAdjustStatus::Good:
        break;
    }
    m_sigma = zu::internal::ChooseSigma(m_engine, m_options.tests.sigmaKind, m_common.bSigmaGiven);
    // Points that agree to their last digits must not be tested against less than these.
    if (!m_common.bSigmaGiven && m_engine.iRedundancy > 0) {
      m_sigma.dSigma0 = std::max(m_sigma.dSigma0, Rounding());
    }
    StoreParameters();
    return CheckSds();
  }

  void StoreParameters() {
    const double dSigma2 = m_sigma.dSigma0 * m_sigma.dSigma0;
    const std::vector<int>& columns = m_model.Columns();
    const std::size_t u = columns.size();
    std::fill_n(m_result.adCovariance, 49, 0.0);
    m_model.StoreTo(&m_result.trafo);
    for (std::size_t i = 0; i < u; ++i) {
      for (std::size_t j = 0; j < u; ++j) {
        double d = dSigma2 * m_engine.covariance[i * u + j];
        if (columns[i] == 3) d *= m_model.Scale();  // of the scale itself
        if (columns[j] == 3) d *= m_model.Scale();
        m_result.adCovariance[7 * columns[i] + columns[j]] = d;
      }
    }
  }

  // Without standard deviations from the user and without redundancy their size means nothing.
  bool CheckSds() {
    const Eigen::Map<const Covariance7> covariance(m_result.adCovariance);
    const auto& trafo = m_result.trafo;
    if (!covariance.allFinite() || !(covariance.diagonal().minCoeff() >= 0.0) ||
        !std::isfinite(trafo.m_dScale) || !std::isfinite(m_sigma.dSigma0) ||
        !std::all_of(trafo.m_vTarget.GetData(), trafo.m_vTarget.GetData() + 3,
                     [](double d) { return std::isfinite(d); })) {
      Fail(ZuAdjustStatus::NotFinite,
           "the numbers of the common points are too far apart to reckon with");
      return false;
    }
    if (!m_common.bSigmaGiven && m_engine.iRedundancy < 1) return true;
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> turn(
        Eigen::Matrix3d(covariance.block<3, 3>(4, 4)), Eigen::EigenvaluesOnly);
    if (turn.eigenvalues()[2] > kLargestSd * kLargestSd) {
      FailFree("rotation, which their errors turn by half a radian and more");
      return false;
    }
    if (covariance(3, 3) > std::pow(kLargestSd * trafo.m_dScale, 2)) {
      FailFree("scale, which their errors change by half of it and more");
      return false;
    }
    return true;
  }

  void Test() {
    const GroupTester tester(m_engine, m_sigma, m_options.tests, m_model.Groups());
    m_bFinite = m_model.Test(m_engine, tester, &m_result.points);
  }

  void StoreSetAside(const ZuSimilarityPoint& point, double dTest, double dLimit) {
    ZuSetAside entry;
    entry.uId = point.uId;
    entry.dTest = dTest;
    entry.dLimit = dLimit;
    std::copy_n(point.adResidual, 3, entry.adError);
    m_result.setAside.push_back(entry);
  }

  void StoreSetAside(const zu::internal::SnoopResult& snooped) {
    for (const zu::internal::SetAside& aside : snooped.setAside) {
      StoreSetAside(m_result.points[static_cast<std::size_t>(aside.iGroup)], aside.dTest,
                    aside.dLimit);
    }
    if (snooped.bLimited) {
      m_result.warnings.push_back(
          "points beyond the limit of the test stay: half are aside, or the rest would decide "
          "nothing");
    }
  }

  void Finish() {
    m_result.iSteps = m_engine.iSteps;
    m_result.dCondition = m_engine.dCondition;
    m_result.iRedundancy = m_engine.iRedundancy;
    m_result.dSigma0 = m_sigma.dSigma0;
    m_result.sigmaKind = m_sigma.kind;
    m_result.dSigmaPosteriori = m_engine.iRedundancy > 0 ? m_engine.SigmaPosteriori() : 0.0;
    const double dAlpha = ZuTestAlpha(m_options.tests, m_model.Groups());
    m_result.dTestLimit = m_sigma.kind == ZuSigmaKind::APriori
                              ? ZuNormalLimit(dAlpha)
                              : ZuTauLimit(dAlpha, m_engine.iRedundancy);
    double dLow = 0.0, dHigh = 0.0;
    ZuSigmaBounds(kSigmaAlpha, m_engine.iRedundancy, &dLow, &dHigh);
    const double dRatio = m_result.dSigmaPosteriori * m_result.dSigmaPosteriori;
    m_result.bSigmaFits = !m_common.bSigmaGiven || (dRatio >= dLow && dRatio <= dHigh);
    for (const ZuSimilarityPoint& p : m_result.points) {
      if (p.bUsed && !p.bControlled) m_result.notControlled.push_back(p.uId);
    }
    if (m_model.IsMirrored()) {
      m_result.warnings.push_back("mirrored: a reflection fits the common points far better");
    }
    if (m_engine.iRedundancy == 0) {
      m_result.warnings.push_back("no redundancy: nothing is checked, sigma0 is a priori");
    }
    if (!m_bFinite) {
      Fail(ZuAdjustStatus::NotFinite,
           "the numbers of the common points are too far apart to reckon with");
    }
  }

  const CommonPoints& m_common;
  const ZuSimilarityOptions& m_options;
  SimilarityModel m_model;
  EngineResult m_engine;
  Sigma m_sigma;
  ZuSimilarityResult m_result;
  bool m_bFinite = true;  // of the points
};

RowMatrix RotationOf(const ZuTrafo3dData& trafo) {
  return Eigen::Map<const RowMatrix>(trafo.m_mRot.GetData());
}

}  // namespace

const ZuSimilarityPoint* ZuSimilarityResult::Find(unsigned uId) const {
  const auto it = std::lower_bound(points.begin(), points.end(), uId,
                                   [](const auto& p, unsigned u) { return p.uId < u; });
  return it != points.end() && it->uId == uId ? &*it : nullptr;
}

// R exp[w] with R = Ry(b) Rx(a) Rz(c): w = Rz' Rx' ey db + Rz' ex da + ez dc.
bool ZuSimilarityResult::Angles(double* pdAngles, double* pdCovariance,
                                double* pdDerivatives) const {
  ZuMatrix rotation(trafo.m_mRot);
  rotation.GetRotAngles(&pdAngles[0], &pdAngles[1], &pdAngles[2]);
  const double sa = std::sin(pdAngles[0]), ca = std::cos(pdAngles[0]);
  const double sc = std::sin(pdAngles[2]), cc = std::cos(pdAngles[2]);
  Eigen::Map<RowMatrix> covariance(pdCovariance);
  covariance.setZero();
  if (pdDerivatives != nullptr) std::fill_n(pdDerivatives, 9, 0.0);
  if (std::fabs(ca) < kSteep) return false;
  Eigen::Matrix3d perAngle;  // columns: dw by a, b, c
  perAngle << cc, ca * sc, 0.0, -sc, ca * cc, 0.0, 0.0, -sa, 1.0;
  const Eigen::Matrix3d J = perAngle.inverse();
  if (pdDerivatives != nullptr) Eigen::Map<RowMatrix>{pdDerivatives} = J;
  const Eigen::Map<const Covariance7> all(adCovariance);
  covariance = J * all.block<3, 3>(4, 4) * J.transpose();
  return true;
}

void ZuSimilarityResult::CarriedCovariance(const ZuPoint& source, const double* pdOwn,
                                           double* pdCovariance) const {
  const RowMatrix R = RotationOf(trafo);
  const Eigen::Vector3d x(source.m_dX - trafo.m_vSource[1], source.m_dY - trafo.m_vSource[2],
                          source.m_dZ - trafo.m_vSource[3]);
  const Eigen::Vector3d z = R * x;
  Eigen::Matrix<double, 3, 7> J;
  J.leftCols<3>().setIdentity();
  J.col(3) = z;
  for (int k = 0; k < 3; ++k) J.col(4 + k) = trafo.m_dScale * R.col(k).cross(z);
  Eigen::Map<RowMatrix> covariance(pdCovariance);
  covariance = J * Eigen::Map<const Covariance7>(adCovariance) * J.transpose();
  if (pdOwn != nullptr) {
    const double d = dSigma0 * trafo.m_dScale;
    covariance += d * d * (R * Eigen::Map<const RowMatrix>(pdOwn) * R.transpose());
  }
}

void ZuSimilarityResult::Carry(ZuPointList* pPoints) const {
  const RowMatrix R = RotationOf(trafo);
  for (ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next()) {
    double adOwn[9] = {}, adCarried[9];
    const double adSd[] = {p->m_dDX, p->m_dDY, p->m_dDZ};
    for (int k = 0; k < 3; ++k) {
      adOwn[4 * k] = adSd[k] != 0.0 ? adSd[k] * adSd[k] : dOwnVariance;
    }
    const ZuSimilarityPoint* const pCommon = p->GetId() != 0 ? Find(p->GetId()) : nullptr;
    if (pCommon != nullptr) {
      std::copy_n(pCommon->adCarried, 9, adCarried);
    } else {
      CarriedCovariance(*p, adOwn, adCarried);
    }
    const Eigen::Vector3d x(p->m_dX - trafo.m_vSource[1], p->m_dY - trafo.m_vSource[2],
                            p->m_dZ - trafo.m_vSource[3]);
    const Eigen::Vector3d y = trafo.m_dScale * (R * x);
    p->m_dX = y[0] + trafo.m_vTarget[1];
    p->m_dY = y[1] + trafo.m_vTarget[2];
    p->m_dZ = y[2] + trafo.m_vTarget[3];
    p->m_dDX = std::sqrt(std::max(adCarried[0], 0.0));
    p->m_dDY = std::sqrt(std::max(adCarried[4], 0.0));
    p->m_dDZ = std::sqrt(std::max(adCarried[8], 0.0));
  }
}

ZuSimilarityResult ZuAdjustSimilarity(const ZuSortHelper<ZuPoint>& target,
                                      const ZuPointList& source,
                                      const ZuSimilarityOptions& options) {
  const CommonPoints common = zu::internal::FindCommonPoints(target, source, options);
  return SimilarityRun(common, options).Run();
}

ZuSimilarityResult ZuAdjustSimilarity(const ZuPointList& target, const ZuPointList& source,
                                      const ZuSimilarityOptions& options) {
  return ZuAdjustSimilarity(ZuSortHelper<ZuPoint>(&target), source, options);
}
