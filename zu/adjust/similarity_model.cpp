#include "zu/adjust/internal/similarity_model.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace zu::internal {
namespace {

using Eigen::Matrix3d;
using Eigen::Vector3d;
using RowMatrix = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;

// Extent over the largest coordinate up to which points lie in one place [-]: rounding.
constexpr double kRounding = 8.0 * std::numeric_limits<double>::epsilon();

// Squares that a reflection leaves over those of the best rotation, where the lists mirror each
// other, and the least share of the extent, squared, that the rotation then leaves [-].
constexpr double kMirrored = 0.01, kNoFit = 1e-8;

Eigen::Map<const RowMatrix> Rows(const double* pd) { return Eigen::Map<const RowMatrix>(pd); }
Eigen::Map<RowMatrix> Rows(double* pd) { return Eigen::Map<RowMatrix>(pd); }
Vector3d Vector(const double* pd) { return Vector3d(pd[0], pd[1], pd[2]); }

Matrix3d Cross(const Vector3d& w) {
  Matrix3d m;
  m << 0.0, -w[2], w[1], w[2], 0.0, -w[0], -w[1], w[0], 0.0;
  return m;
}

// The rotation by a vector (O. Rodrigues).
Matrix3d Exp(const Vector3d& w) {
  const double dAngle = w.norm();
  const double dHalf = 0.5 * dAngle;
  const double a = dAngle > 0.0 ? std::sin(dAngle) / dAngle : 1.0;
  const double b = dHalf > 0.0 ? 0.5 * std::pow(std::sin(dHalf) / dHalf, 2) : 0.5;
  const Matrix3d cross = Cross(w);
  return Matrix3d::Identity() + a * cross + b * cross * cross;
}

std::vector<int> ColumnsOf(ZuSimilarityKind kind) {
  switch (kind) {
    case ZuSimilarityKind::Rigid:
      return {0, 1, 2, 4, 5, 6};
    case ZuSimilarityKind::Levelled:
      return {0, 1, 2, 6};
    case ZuSimilarityKind::Shift:
      return {0, 1, 2};
    case ZuSimilarityKind::Similarity:
      break;
  }
  return {0, 1, 2, 3, 4, 5, 6};
}

// Squared extents of the points used and the largest coordinate of each side.
struct Extents {
  double dSource = 0.0, dTarget = 0.0;                // weighted sums of squares
  double dSourceLargest = 0.0, dTargetLargest = 0.0;  // |coordinate|
  double dWeight = 0.0;
  double dSourceLevel = 0.0, dTargetLevel = 0.0;  // of x and y alone

  // The square of the rounding of the coordinates over the extent.
  double SourceRounding() const { return Rounding(dSourceLargest, dSource); }
  double TargetRounding() const { return Rounding(dTargetLargest, dTarget); }
  double Rounding(double dLargest, double dSquares) const {
    const double d = kRounding * dLargest;
    return dSquares > 0.0 ? d * d * dWeight / dSquares : std::numeric_limits<double>::infinity();
  }
};

}  // namespace

SimilarityModel::SimilarityModel(const std::vector<CommonPoint>& points,
                                 const ZuSimilarityOptions& options)
    : m_points(points),
      m_options(options),
      m_columns(ColumnsOf(options.kind)),
      m_used(points.size(), 1) {
  Rows(m_R).setIdentity();
}

void SimilarityModel::CovarianceOf(const CommonPoint& p, double* pdSource, double* pdTarget) const {
  const auto fill = [](const double* pdSd, double* pd) {
    std::fill_n(pd, 9, 0.0);
    for (int k = 0; k < 3; ++k) pd[4 * k] = pdSd[k] * pdSd[k];
  };
  fill(p.sx, pdSource);
  fill(p.sy, pdTarget);
  if (p.iSourceCovariance >= 0) {
    std::copy_n(m_options.sourceCovariances[static_cast<std::size_t>(p.iSourceCovariance)].ad, 9,
                pdSource);
  }
  if (p.iTargetCovariance >= 0) {
    std::copy_n(m_options.targetCovariances[static_cast<std::size_t>(p.iTargetCovariance)].ad, 9,
                pdTarget);
  }
}

// Three over the trace of the covariance of the misclosure, which no rotation changes.
double SimilarityModel::WeightOf(const CommonPoint& p, double dScale) const {
  double adSource[9], adTarget[9];
  CovarianceOf(p, adSource, adTarget);
  const double dSource = adSource[0] + adSource[4] + adSource[8];
  const double dTarget = adTarget[0] + adTarget[4] + adTarget[8];
  return 3.0 / (dTarget + dScale * dScale * dSource);
}

SimilarityModel::Defect SimilarityModel::Start(const std::vector<char>& used) {
  m_used = used;
  std::fill_n(m_t, 3, 0.0);
  Rows(m_R).setIdentity();
  m_s = 1.0;
  m_bMirrored = false;

  // A first scale, which the weights of the source need.
  Vector3d xs = Vector3d::Zero(), yc = Vector3d::Zero();
  double dCount = 0.0;
  const auto forUsed = [this](const auto& f) {
    for (std::size_t u = 0; u < m_points.size(); ++u) {
      if (m_used[u]) f(m_points[u]);
    }
  };
  forUsed([&](const CommonPoint& p) {
    xs += Vector(p.x);
    yc += Vector(p.y);
    dCount += 1.0;
  });
  xs /= dCount;
  yc /= dCount;
  if (m_options.kind == ZuSimilarityKind::Similarity) {
    double dSource = 0.0, dTarget = 0.0;
    forUsed([&](const CommonPoint& p) {
      dSource += (Vector(p.x) - xs).squaredNorm();
      dTarget += (Vector(p.y) - yc).squaredNorm();
    });
    if (dSource > 0.0 && dTarget > 0.0) m_s = std::sqrt(dTarget / dSource);
  }

  // Weighted centres, relative to the plain ones.
  Vector3d dxs = Vector3d::Zero(), dyc = Vector3d::Zero();
  double dWeight = 0.0;
  forUsed([&](const CommonPoint& p) {
    const double w = WeightOf(p, m_s);
    dxs += w * (Vector(p.x) - xs);
    dyc += w * (Vector(p.y) - yc);
    dWeight += w;
  });
  xs += dxs / dWeight;
  yc += dyc / dWeight;
  if (!xs.allFinite() || !yc.allFinite() || !std::isfinite(dWeight)) return Defect::NotFinite;
  std::copy_n(xs.data(), 3, m_xs);
  std::copy_n(yc.data(), 3, m_yc);

  Extents extents;
  Matrix3d moment = Matrix3d::Zero();
  forUsed([&](const CommonPoint& p) {
    const Vector3d x = Vector(p.x) - xs, y = Vector(p.y) - yc;
    const double w = WeightOf(p, m_s);
    moment += (w * y) * x.transpose();
    extents.dWeight += w;
    extents.dSource += w * x.squaredNorm();
    extents.dTarget += w * y.squaredNorm();
    extents.dSourceLevel += w * x.head<2>().squaredNorm();
    extents.dTargetLevel += w * y.head<2>().squaredNorm();
    for (int k = 0; k < 3; ++k) {
      extents.dSourceLargest = std::max(extents.dSourceLargest, std::fabs(p.x[k]));
      extents.dTargetLargest = std::max(extents.dTargetLargest, std::fabs(p.y[k]));
    }
  });
  if (!moment.allFinite() || !std::isfinite(extents.dSource + extents.dTarget)) {
    return Defect::NotFinite;
  }
  m_dShiftUnit = 1.0 / std::sqrt(dWeight);
  m_dTurnUnit = 1.0;
  if (m_options.kind == ZuSimilarityKind::Shift) return Defect::None;
  m_dSingular = std::max(kSingular, extents.SourceRounding());
  const double dTargetSingular = std::max(kSingular, extents.TargetRounding());
  if (!(m_dSingular < 1.0) || !(dTargetSingular < 1.0)) return Defect::OnePlace;

  if (m_options.kind == ZuSimilarityKind::Levelled) {
    const double a = moment(0, 0) + moment(1, 1), b = moment(1, 0) - moment(0, 1);
    const double dLevel = std::sqrt(extents.dSourceLevel * extents.dTargetLevel);
    if (!(extents.dSourceLevel > m_dSingular * extents.dSource) ||
        !(extents.dTargetLevel > dTargetSingular * extents.dTarget) ||
        !(std::hypot(a, b) > kSingular * dLevel)) {
      return Defect::Vertical;
    }
    m_dTurnUnit = 1.0 / std::sqrt(extents.dSourceLevel);
    Rows(m_R) = Exp(Vector3d(0.0, 0.0, std::atan2(b, a)));
    return Defect::None;
  }

  const Eigen::JacobiSVD<Matrix3d> svd(moment, Eigen::ComputeFullU | Eigen::ComputeFullV);
  if (svd.info() != Eigen::Success) return Defect::Line;  // products beyond the numbers
  const Vector3d& values = svd.singularValues();
  const double dSign = (svd.matrixU() * svd.matrixV().transpose()).determinant() < 0.0 ? -1.0 : 1.0;
  const Vector3d signs(1.0, 1.0, dSign);
  const double dTrace = values.dot(signs);
  if (!(values[1] + dSign * values[2] > std::max(m_dSingular, dTargetSingular) * values[0])) {
    return Defect::Line;
  }
  Rows(m_R) = svd.matrixU() * signs.asDiagonal() * svd.matrixV().transpose();
  m_s = m_options.kind == ZuSimilarityKind::Similarity ? dTrace / extents.dSource : 1.0;
  m_dTurnUnit = 1.0 / (m_s * std::sqrt(extents.dSource));

  const double dScale =
      m_options.kind == ZuSimilarityKind::Similarity ? values.sum() / extents.dSource : 1.0;
  const auto left = [&extents](double s, double dSum) {
    return extents.dTarget + s * s * extents.dSource - 2.0 * s * dSum;
  };
  const double dLeft = left(m_s, dTrace);
  m_bMirrored = dSign < 0.0 && dLeft > kNoFit * extents.dTarget &&
                left(dScale, values.sum()) <= kMirrored * dLeft;
  return std::isfinite(m_s) && m_s > 0.0 && Rows(m_R).allFinite() ? Defect::None
                                                                  : Defect::NotFinite;
}

double SimilarityModel::Unit(int j) const {
  return m_columns[static_cast<std::size_t>(j)] < 3 ? m_dShiftUnit : m_dTurnUnit;
}

void SimilarityModel::Linearize(int i, GroupEquation* pEquation) const {
  const CommonPoint& p = m_points[static_cast<std::size_t>(i)];
  const auto R = Rows(m_R);
  Vector3d x = Vector(p.x) - Vector(m_xs);
  Vector3d e;
  Misclosure(i, e.data());
  double adSource[9], adTarget[9];
  CovarianceOf(p, adSource, adTarget);
  const Matrix3d source = Rows(adSource);
  Matrix3d M = Rows(adTarget);
  if (!source.isZero(0.0)) {
    M += m_s * m_s * (R * source * R.transpose());
    M = (0.5 * (M + M.transpose())).eval();
    // The derivatives stand at the adjusted point.
    double adM[9], adInverse[9];
    Rows(adM) = M;
    if (InvertSpd(3, adM, adInverse)) {
      x += m_s * (source * (R.transpose() * (Rows(adInverse) * e)));
    }
  }
  const Vector3d z = m_s * (R * x);

  GroupEquation& q = *pEquation;
  q.m = 3;
  std::copy_n(e.data(), 3, q.w);
  Rows(q.M) = M;
  const int u = Parameters();
  for (int j = 0; j < u; ++j) {
    const int c = m_columns[static_cast<std::size_t>(j)];
    Vector3d a = Vector3d::Zero();
    if (c < 3) {
      a[c] = -1.0;
    } else if (c == 3) {
      a = -z;
    } else {
      a = z.cross(R.col(c - 4));
    }
    for (int k = 0; k < 3; ++k) q.A[static_cast<std::size_t>(k * u + j)] = a[k];
  }
}

void SimilarityModel::Misclosure(int i, double* pdE) const {
  const CommonPoint& p = m_points[static_cast<std::size_t>(i)];
  const Vector3d e =
      Vector(p.y) - Vector(m_yc) - Vector(m_t) - m_s * (Rows(m_R) * (Vector(p.x) - Vector(m_xs)));
  std::copy_n(e.data(), 3, pdE);
}

void SimilarityModel::Step(const double* pdCorrection) {
  double ad[7] = {};
  for (std::size_t j = 0; j < m_columns.size(); ++j) ad[m_columns[j]] = pdCorrection[j];
  for (int k = 0; k < 3; ++k) m_t[k] += ad[k];
  m_s *= std::exp(ad[3]);
  const Matrix3d R = Rows(m_R) * Exp(Vector(ad + 4));
  Rows(m_R) = 0.5 * R * (3.0 * Matrix3d::Identity() - R.transpose() * R);
}

void SimilarityModel::Complete(int i, const double* pdAQA, double dSigma0,
                               ZuSimilarityPoint* pPoint) const {
  const CommonPoint& p = m_points[static_cast<std::size_t>(i)];
  const auto R = Rows(m_R);
  double adSource[9], adTarget[9];
  CovarianceOf(p, adSource, adTarget);
  const Matrix3d C = m_s * m_s * (R * Rows(adSource) * R.transpose());
  const Matrix3d M = Rows(adTarget) + C;
  const Matrix3d inverse = M.inverse();
  const Vector3d correlate = inverse * Vector(pPoint->adResidual);
  Matrix3d carried = Rows(pdAQA) + C;
  if (pPoint->bUsed) {
    const Matrix3d share = Rows(pdAQA) * inverse * C;
    carried -= share + share.transpose();
    const Vector3d vx = m_s * (Rows(adSource) * (R.transpose() * correlate));
    const Vector3d vy = -(Rows(adTarget) * correlate);
    std::copy_n(vx.data(), 3, pPoint->adSourceResidual);
    std::copy_n(vy.data(), 3, pPoint->adTargetResidual);
  }
  Rows(pPoint->adCarried) = dSigma0 * dSigma0 * 0.5 * (carried + carried.transpose());
}

void SimilarityModel::StoreTo(ZuTrafo3dData* pTrafo) const {
  for (int i = 0; i < 3; ++i) {
    pTrafo->m_vSource[i + 1] = m_xs[i];
    pTrafo->m_vTarget[i + 1] = m_yc[i] + m_t[i];
    for (int j = 0; j < 3; ++j) pTrafo->m_mRot[i + 1][j + 1] = m_R[3 * i + j];
  }
  pTrafo->m_dScale = m_s;
}

}  // namespace zu::internal
