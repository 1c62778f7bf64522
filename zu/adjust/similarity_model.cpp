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

  void Add(double w, const Vector3d& x, const Vector3d& y) {
    const double dX = x[0] * x[0] + x[1] * x[1], dY = y[0] * y[0] + y[1] * y[1];
    dWeight += w;
    dSource += w * (dX + x[2] * x[2]);
    dTarget += w * (dY + y[2] * y[2]);
    dSourceLevel += w * dX;
    dTargetLevel += w * dY;
  }
  void Scale(double w) {
    for (double* pd : {&dWeight, &dSource, &dTarget, &dSourceLevel, &dTargetLevel}) *pd *= w;
  }

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
  const CommonPoint* const pFirst = points.data();
  for (const CommonPoint& p : points) {
    m_bScalar = m_bScalar && p.iSourceCovariance < 0 && p.iTargetCovariance < 0 &&
                p.sx[0] == p.sx[1] && p.sx[0] == p.sx[2] && p.sy[0] == p.sy[1] &&
                p.sy[0] == p.sy[2];
    m_bEqual = m_bEqual && p.sx[0] == pFirst->sx[0] && p.sy[0] == pFirst->sy[0];
  }
  m_bEqual = m_bEqual && m_bScalar;
}

void SimilarityModel::CovarianceOf(const CommonPoint& p, double* pdSource, double* pdTarget) const {
  const auto fill = [](const double* pdSd, double* pd) {
    std::fill_n(pd, 9, 0.0);
    for (int k = 0; k < 3; ++k) pd[4 * k] = pdSd[k] * pdSd[k];
  };
  fill(p.sx, pdSource);
  fill(p.sy, pdTarget);
  const auto take = [](const ZuPointCovariance& covariance, double* pd) {
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) {
        pd[3 * i + j] = 0.5 * (covariance.ad[3 * i + j] + covariance.ad[3 * j + i]);
      }
    }
  };
  if (p.iSourceCovariance >= 0) {
    take(m_options.sourceCovariances[static_cast<std::size_t>(p.iSourceCovariance)], pdSource);
  }
  if (p.iTargetCovariance >= 0) {
    take(m_options.targetCovariances[static_cast<std::size_t>(p.iTargetCovariance)], pdTarget);
  }
}

// Three over the trace of the covariance of the misclosure, which no rotation changes.
double SimilarityModel::WeightOf(const CommonPoint& p, double dScale) const {
  if (m_bScalar) return 1.0 / (p.sy[0] * p.sy[0] + dScale * dScale * (p.sx[0] * p.sx[0]));
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

  const auto forUsed = [this](const auto& f) {
    for (std::size_t u = 0; u < m_points.size(); ++u) {
      if (m_used[u]) f(m_points[u]);
    }
  };
  Vector3d xs = Vector3d::Zero(), yc = Vector3d::Zero();
  double dWeight = 0.0;
  forUsed([&](const CommonPoint& p) {
    xs += Vector(p.x);
    yc += Vector(p.y);
    dWeight += 1.0;
  });
  xs /= dWeight;
  yc /= dWeight;
  if (!m_bEqual) {
    // A first scale, which the weights of the source need; weighted centres, relative to the plain.
    double dSource = 0.0, dTarget = 0.0;
    forUsed([&](const CommonPoint& p) {
      dSource += (Vector(p.x) - xs).squaredNorm();
      dTarget += (Vector(p.y) - yc).squaredNorm();
    });
    if (m_options.kind == ZuSimilarityKind::Similarity && dSource > 0.0 && dTarget > 0.0) {
      m_s = std::sqrt(dTarget / dSource);
    }
    Vector3d dxs = Vector3d::Zero(), dyc = Vector3d::Zero();
    dWeight = 0.0;
    forUsed([&](const CommonPoint& p) {
      const double w = WeightOf(p, m_s);
      dxs += w * (Vector(p.x) - xs);
      dyc += w * (Vector(p.y) - yc);
      dWeight += w;
    });
    xs += dxs / dWeight;
    yc += dyc / dWeight;
  }
  if (!xs.allFinite() || !yc.allFinite() || !std::isfinite(dWeight)) return Defect::NotFinite;
  std::copy_n(xs.data(), 3, m_xs);
  std::copy_n(yc.data(), 3, m_yc);

  Extents extents;
  Matrix3d moment = Matrix3d::Zero();
  forUsed([&](const CommonPoint& p) {
    const Vector3d x = Vector(p.x) - xs, y = Vector(p.y) - yc;
    const double w = m_bEqual ? 1.0 : WeightOf(p, m_s);
    moment += (w * y) * x.transpose();
    extents.Add(w, x, y);
    for (int k = 0; k < 3; ++k) {
      extents.dSourceLargest = std::max(extents.dSourceLargest, std::fabs(p.x[k]));
      extents.dTargetLargest = std::max(extents.dTargetLargest, std::fabs(p.y[k]));
    }
  });
  if (m_bEqual && dWeight > 0.0) {
    const double dRatio = extents.dTarget / extents.dSource;
    const double s = m_options.kind == ZuSimilarityKind::Similarity && dRatio > 0.0 ? dRatio : 1.0;
    const double w = WeightOf(m_points[0], std::sqrt(s));
    moment *= w;
    extents.Scale(w);
    dWeight *= w;
  }
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

void SimilarityModel::Step(const double* pdCorrection) {
  double ad[7] = {};
  for (std::size_t j = 0; j < m_columns.size(); ++j) ad[m_columns[j]] = pdCorrection[j];
  for (int k = 0; k < 3; ++k) m_t[k] += ad[k];
  m_s *= std::exp(ad[3]);
  const Matrix3d R = Rows(m_R) * Exp(Vector(ad + 4));
  Rows(m_R) = 0.5 * R * (3.0 * Matrix3d::Identity() - R.transpose() * R);
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
