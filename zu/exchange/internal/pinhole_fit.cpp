#include "zu/exchange/internal/pinhole_fit.h"

#include <Eigen/QR>
#include <algorithm>
#include <cmath>
#include <limits>

namespace zu::internal {

namespace {

constexpr int kFitSteps = 100;
constexpr int kFitTries = 12;  // of the damping, a step
constexpr double kFirstDamping = 1e-6, kMoreDamping = 10.0, kLessDamping = 0.1;
constexpr double kFitDone = 1e-6;  // relative fall of the sum of squares
constexpr double kFitSlopeStep = 1e-6;

std::vector<double*> ParametersOf(PinholeModel* pModel, unsigned uParameters) {
  std::vector<double*> parameters{&pModel->fx};
  if ((uParameters & kFitOneFocal) == 0) parameters.push_back(&pModel->fy);
  parameters.insert(parameters.end(), {&pModel->cx, &pModel->cy});
  if ((uParameters & kFitSkew) != 0) parameters.push_back(&pModel->skew);
  for (size_t i = 0; i < 3; ++i) {
    if ((uParameters & (kFitK1 << i)) != 0) parameters.push_back(&pModel->k[i]);
  }
  if ((uParameters & kFitRational) != 0) {
    for (size_t i = 3; i < 6; ++i) parameters.push_back(&pModel->k[i]);
  }
  if ((uParameters & kFitTangential) != 0) {
    parameters.insert(parameters.end(), {&pModel->p[0], &pModel->p[1]});
  }
  return parameters;
}

PinholeModel Tied(PinholeModel model, unsigned uParameters) {
  if ((uParameters & kFitOneFocal) != 0) model.fy = model.fx;
  return model;
}

Eigen::VectorXd Residuals(const std::vector<Sight>& sights, const PinholeModel& model) {
  Eigen::VectorXd v(2 * static_cast<Eigen::Index>(sights.size()));
  Eigen::Index i = 0;
  for (const Sight& sight : sights) {
    const ZuPixel p = model.Project(sight.n);
    v[i++] = sight.pixel.x - p.x;
    v[i++] = sight.pixel.y - p.y;
  }
  return v;
}

// pixel = scale n + offset along one axis.
void FitLine(const std::vector<Sight>& sights, bool bX, double* pdScale, double* pdOffset) {
  double n = 0.0, a = 0.0, b = 0.0, aa = 0.0, ab = 0.0;
  for (const Sight& sight : sights) {
    const double x = bX ? sight.n.x : sight.n.y, y = bX ? sight.pixel.x : sight.pixel.y;
    n += 1.0;
    a += x;
    b += y;
    aa += x * x;
    ab += x * y;
  }
  *pdScale = (n * ab - a * b) / (n * aa - a * a);
  *pdOffset = (b - *pdScale * a) / n;
}

Eigen::MatrixXd Slopes(const std::vector<Sight>& sights, PinholeModel model, unsigned uParameters) {
  const std::vector<double*> parameters = ParametersOf(&model, uParameters);
  Eigen::MatrixXd A(2 * static_cast<Eigen::Index>(sights.size()),
                    static_cast<Eigen::Index>(parameters.size()));
  Eigen::Index j = 0;
  for (double* pd : parameters) {
    const double d = *pd, h = kFitSlopeStep * std::max(1.0, std::fabs(d));
    *pd = d + h;
    const Eigen::VectorXd above = Residuals(sights, Tied(model, uParameters));
    *pd = d - h;
    A.col(j++) = (Residuals(sights, Tied(model, uParameters)) - above) / (2.0 * h);
    *pd = d;
  }
  return A;
}

// Lowers the sum of squares until it stays.
void Refine(const std::vector<Sight>& sights, unsigned uParameters, PinholeModel* pModel) {
  Eigen::VectorXd v = Residuals(sights, *pModel);
  double dDamping = kFirstDamping;
  for (int i = 0; i < kFitSteps && std::isfinite(v.squaredNorm()); ++i) {
    const Eigen::MatrixXd A = Slopes(sights, *pModel, uParameters);
    const Eigen::Index n = A.cols();
    Eigen::MatrixXd damped(A.rows() + n, n);
    Eigen::VectorXd right = Eigen::VectorXd::Zero(A.rows() + n);
    damped.topRows(A.rows()) = A;
    right.head(A.rows()) = v;
    const double dBefore = v.squaredNorm();
    bool bLower = false;
    for (int j = 0; j < kFitTries && !bLower; ++j) {
      damped.bottomRows(n) = (std::sqrt(dDamping) * A.colwise().norm()).asDiagonal();
      const Eigen::VectorXd step = damped.householderQr().solve(right);
      PinholeModel next = *pModel;
      Eigen::Index k = 0;
      for (double* pd : ParametersOf(&next, uParameters)) *pd += step[k++];
      next = Tied(next, uParameters);
      const Eigen::VectorXd vNext = Residuals(sights, next);
      bLower = vNext.squaredNorm() < dBefore;
      dDamping *= bLower ? kLessDamping : kMoreDamping;
      if (!bLower) continue;
      *pModel = next;
      v = vNext;
    }
    if (!bLower || v.squaredNorm() >= (1.0 - kFitDone) * dBefore) return;
  }
}

}  // namespace

PinholeFit FitPinhole(const std::vector<Sight>& sights, unsigned uParameters) {
  PinholeFit fit;
  if (sights.size() < ParametersOf(&fit.model, uParameters).size()) return fit;
  FitLine(sights, true, &fit.model.fx, &fit.model.cx);
  FitLine(sights, false, &fit.model.fy, &fit.model.cy);
  fit.model = Tied(fit.model, uParameters);
  // A polynomial first: a quotient from nothing goes astray.
  if ((uParameters & kFitRational) != 0) Refine(sights, uParameters & ~kFitRational, &fit.model);
  Refine(sights, uParameters, &fit.model);
  fit.bGood = fit.model.IsFinite();
  return fit;
}

LargestError FindLargestError(const std::vector<Sight>& sights, const PinholeModel& model) {
  LargestError largest;
  for (const Sight& sight : sights) {
    const ZuPixel p = model.Project(sight.n);
    const double d = std::hypot(p.x - sight.pixel.x, p.y - sight.pixel.y);
    if (d <= largest.dError) continue;
    largest = {std::isnan(d) ? std::numeric_limits<double>::infinity() : d, sight.pixel};
  }
  return largest;
}

std::vector<ZuPixel> PixelGrid(const ZuImageSize& size, int iAcross) {
  std::vector<ZuPixel> grid;
  for (int i = 0; i <= iAcross; ++i) {
    for (int j = 0; j <= iAcross; ++j) {
      grid.emplace_back((size.dWidth - 1.0) * j / iAcross, (size.dHeight - 1.0) * i / iAcross);
    }
  }
  return grid;
}

}  // namespace zu::internal
