#include "zu/adjust/plane_point_accuracy.h"

#include <algorithm>
#include <cmath>

#include "zu/adjust/internal/image_pixel.h"
#include "zu/photo/internal/camera_measured.h"
#include "zu/photo/photo_view.h"
#include "zu/project/project.h"

namespace {

constexpr size_t kPose = ZuCovariance::kOrientation;

static_assert(static_cast<int>(camera_measured::eC2) == static_cast<int>(ZuNetworkC2));

using Column = std::array<double, 3>;  // derivative of the point to one quantity

// Of mode 1: q = (m - h') (1 - d(|m - h|)), two principal points.
void VivaSlope(const ZuCamera& camera, double x, double y, ZuPlanePointChain::Corrected* p) {
  const double m[2] = {x - camera.m_dXh, y - camera.m_dYh};
  const double q[2] = {x - camera.m_dXhViva, y - camera.m_dYhViva};
  const double s = m[0] * m[0] + m[1] * m[1], r = std::sqrt(s);
  const double d = r > 0.0 ? camera_kernel::Radial2(camera, r) : 0.0;
  const double dCurve = 2.0 * camera.m_dA1 + 4.0 * camera.m_dA2 * s;  // d'(r) / r
  for (int i = 0; i < 2; ++i) {
    for (int k = 0; k < 2; ++k) {
      p->point[i][k] = (i == k ? 1.0 - d : 0.0) - q[i] * dCurve * m[k];
    }
  }
}

// Carries (x, y) from measured to corrected. False where the model is not one to one.
bool CorrectedPoint(const ZuCamera& camera, double* x, double* y, ZuPlanePointChain::Corrected* p) {
  const double mx = *x, my = *y;
  if (camera.AdjustExact(x, y) != eCameraInverseOk) return false;
  if (camera.m_iMode == eCameraModeViva) {
    VivaSlope(camera, mx, my, p);
    return true;
  }
  double ex, ey;
  camera_measured::Derivative m;
  if (!camera_measured::Measured(camera, *x, *y, &ex, &ey, &m)) return false;
  const double dDet = m.point[0][0] * m.point[1][1] - m.point[0][1] * m.point[1][0];
  p->point[0][0] = m.point[1][1] / dDet;
  p->point[0][1] = -m.point[0][1] / dDet;
  p->point[1][0] = -m.point[1][0] / dDet;
  p->point[1][1] = m.point[0][0] / dDet;
  for (int i = 0; i < 2; ++i) {
    for (int k = 0; k < ZuNetworkParameters; ++k) {
      p->parameter[i][k] =
          -(p->point[i][0] * m.parameter[0][k] + p->point[i][1] * m.parameter[1][k]);
    }
  }
  return true;
}

// Adds J C J' to the 3 x 3 pSum: J is 3 x n, C the n x n block of a matrix with uStride columns.
void AddProduct(const std::vector<Column>& J, const double* pC, size_t uStride, double* pSum) {
  for (size_t a = 0; a < J.size(); ++a) {
    for (size_t b = 0; b < J.size(); ++b) {
      const double c = pC[a * uStride + b];
      for (size_t i = 0; i < 3; ++i) {
        for (size_t k = 0; k < 3; ++k) pSum[3 * i + k] += J[a][i] * c * J[b][k];
      }
    }
  }
}

double Element(const ZuCovariance& covariance, int iRow, int iColumn) {
  return covariance.m_matrix[static_cast<size_t>((iRow - 1) * covariance.m_iColumns + iColumn - 1)];
}

double PositionSd(const double* pCov) { return std::sqrt(pCov[0] + pCov[4] + pCov[8]); }

}  // namespace

// Where the ray X0 + t w, w = R v, meets the plane. A change d of a point of the ray moves the
// meeting by d - w (n . d) / (n . w).
struct ZuPlanePointChain::Ray {
  const double* pNormal = nullptr;
  const ZuMatrix* pR = nullptr;
  double v[3] = {}, w[3] = {};
  double dCos = 0.0;  // n . w
  double t = 0.0, dLength = 0.0;

  Column Along(const Column& d) const {
    const double s = (pNormal[0] * d[0] + pNormal[1] * d[1] + pNormal[2] * d[2]) / dCos;
    return {d[0] - s * w[0], d[1] - s * w[1], d[2] - s * w[2]};
  }
  // Of a change of v.
  Column Turned(double e1, double e2, double e3) const {
    Column d;
    for (int i = 0; i < 3; ++i) {
      const double* const r = (*pR)[i + 1];
      d[static_cast<size_t>(i)] = t * (r[1] * e1 + r[2] * e2 + r[3] * e3);
    }
    return Along(d);
  }
};

ZuPlanePointChain::ZuPlanePointChain(const ZuProject& project, const ZuPhoto& photo,
                                     const ZuPlane& plane, const ZuPlaneFit* pFit,
                                     const ZuPlanePointOptions& options)
    : m_photo(photo),
      m_options(options),
      m_adNormal{plane.A(), plane.B(), plane.C()},
      m_dD(plane.D()),
      m_pFit(pFit != nullptr && pFit->fit.eStatus == ZuAdjustStatus::Good ? pFit : nullptr) {
  const double dLength = std::hypot(m_adNormal[0], m_adNormal[1], m_adNormal[2]);
  for (double& d : m_adNormal) d /= dLength;
  m_dD /= dLength;
  TakeCovariance(project);
}

void ZuPlanePointChain::TakeCovariance(const ZuProject& project) {
  const ZuCovariance* p = project.Covariances().OfPhoto(m_photo.GetId());
  m_bOrientation = p != nullptr;
  if (p == nullptr) p = project.Covariances().OfCamera(m_photo.GetCamera().GetId());
  if (p == nullptr || !p->Fault()[0].empty()) {
    m_bOrientation = false;
    return;
  }
  const int iPose = m_bOrientation ? ZuCovariance::kOrientation : 0;
  std::vector<int> rows;  // of the block, 1 based; 0: known exactly
  for (int i = 1; i <= ZuCovariance::kOrientation; ++i) rows.push_back(m_bOrientation ? i : 0);
  for (size_t i = 0; i < p->m_parameters.size(); ++i) {
    for (int k = 0; k < ZuNetworkParameters; ++k) {
      if (p->m_parameters[i] != ZuNetworkParameterName(k)) continue;
      m_parameters.push_back(k);
      rows.push_back(iPose + static_cast<int>(i) + 1);
    }
  }
  for (const int i : rows) {
    for (const int k : rows) m_cov.push_back(i > 0 && k > 0 ? Element(*p, i, k) : 0.0);
  }
}

double ZuPlanePointChain::OrientationSd(int iAxis) const {
  const size_t i = static_cast<size_t>(iAxis), uRows = kPose + m_parameters.size();
  return m_cov.empty() ? 0.0 : std::sqrt(m_cov[i * (uRows + 1)]);
}

std::vector<std::string> ZuPlanePointChain::Parameters() const {
  std::vector<std::string> names;
  for (const int k : m_parameters) names.emplace_back(ZuNetworkParameterName(k));
  return names;
}

// Of the height n . x + d at a point of the plane, formed about the centre of the fit: the
// covariance of normal and D alone loses its digits far from the origin.
double ZuPlanePointChain::PlaneVariance(const double* pPoint) const {
  if (m_pFit == nullptr) return 0.0;
  const double *const q = m_pFit->adCov, *const c = m_pFit->adCentre;
  double dVariance = m_pFit->dHeightSd * m_pFit->dHeightSd;
  for (int i = 0; i < 3; ++i) {
    double dWithHeight = q[4 * i + 3], dTurned = 0.0;
    for (int k = 0; k < 3; ++k) {
      dWithHeight += q[4 * i + k] * c[k];
      dTurned += q[4 * i + k] * (pPoint[k] - c[k]);
    }
    dVariance += (pPoint[i] - c[i]) * (dTurned + 2.0 * dWithHeight);
  }
  return std::max(dVariance, 0.0);
}

// The way to the corrected point, and what the pixel makes uncertain there.
bool ZuPlanePointChain::Correct(const ZuPoint& pixel, Corrected* pSlope,
                                ZuPlanePointAccuracy* p) const {
  double x = pixel.m_dX;
  double y = m_options.bFlip ? ZuTurnPixelY(m_photo, pixel.m_dY) : pixel.m_dY;
  p->adPre[0] = x;
  p->adPre[1] = y;
  m_photo.GetReseauPreTrafo().Transform(&p->adPre[0], &p->adPre[1]);
  const auto slope = zu::internal::PixelToImage(m_photo, &x, &y);
  const bool bOwn = pixel.m_dDX > 0.0 && pixel.m_dDY > 0.0;
  if (bOwn || m_options.bSigmaInPixels) {
    p->adPixelSd[0] = bOwn ? pixel.m_dDX : m_options.dSigma;
    p->adPixelSd[1] = bOwn ? pixel.m_dDY : m_options.dSigma;
    const auto c = zu::internal::ImageCovariance(slope, p->adPixelSd[0], p->adPixelSd[1]);
    std::copy(c.begin(), c.end(), p->adImageCov);
  } else {
    p->adImageCov[0] = p->adImageCov[2] = m_options.dSigma * m_options.dSigma;
  }
  p->adImage[0] = x;
  p->adImage[1] = y;
  if (!CorrectedPoint(m_photo.GetCamera(), &x, &y, pSlope)) return false;
  p->adAdjusted[0] = x;
  p->adAdjusted[1] = y;
  for (int i = 0; i < 3; ++i) {  // xx, xy, yy
    const double *const r = pSlope->point[i / 2], *const s = pSlope->point[(i + 1) / 2];
    const double* const c = p->adImageCov;
    p->adPixelCov[i] = r[0] * (c[0] * s[0] + c[1] * s[1]) + r[1] * (c[1] * s[0] + c[2] * s[1]);
    p->adAdjustedCov[i] = p->adPixelCov[i];
  }
  return true;
}

bool ZuPlanePointChain::Meet(Ray* pRay, ZuPlanePointAccuracy* p) const {
  const ZuMatrix& R = m_photo.GetRotAOR();
  const ZuVector& X0 = m_photo.GetPosAOR();
  Ray& ray = *pRay;
  ray = {
      m_adNormal, &R, {p->adAdjusted[0], p->adAdjusted[1], -std::fabs(m_photo.GetCamera().m_dC)}};
  double dHeight = m_dD;
  for (int i = 0; i < 3; ++i) {
    for (int k = 0; k < 3; ++k) ray.w[i] += R[i + 1][k + 1] * ray.v[k];
    ray.dCos += m_adNormal[i] * ray.w[i];
    dHeight += m_adNormal[i] * X0[i + 1];
  }
  ray.t = -dHeight / ray.dCos;
  ray.dLength = std::hypot(ray.w[0], ray.w[1], ray.w[2]);
  if (!(ray.t > 0.0) || !std::isfinite(ray.t * ray.dLength)) return false;
  for (int i = 0; i < 3; ++i) {
    p->adPoint[i] = X0[i + 1] + ray.t * ray.w[i];
    p->adDirection[i] = ray.w[i] / ray.dLength;
  }
  p->dDistance = ray.t * ray.dLength;
  p->dIncidence = std::asin(std::min(1.0, std::fabs(ray.dCos) / ray.dLength));
  return true;
}

void ZuPlanePointChain::AddPixel(const Ray& ray, ZuPlanePointAccuracy* p) const {
  const double* const c = p->adPixelCov;
  const double adCov[4] = {c[0], c[1], c[1], c[2]};
  AddProduct({ray.Turned(1.0, 0.0, 0.0), ray.Turned(0.0, 1.0, 0.0)}, adCov, 2, p->adCov);
  p->dPixel = PositionSd(p->adCov);
}

void ZuPlanePointChain::AddPose(const Ray& ray, const Corrected& slope,
                                ZuPlanePointAccuracy* p) const {
  if (m_cov.empty()) return;
  const double* const v = ray.v;
  std::vector<Column> pose, parameters;
  for (const auto& e : {Column{1.0, 0.0, 0.0}, Column{0.0, 1.0, 0.0}, Column{0.0, 0.0, 1.0}}) {
    pose.push_back(ray.Along(e));
  }
  pose.push_back(ray.Turned(0.0, -v[2], v[1]));  // R exp[w]: v moves by e x v
  pose.push_back(ray.Turned(v[2], 0.0, -v[0]));
  pose.push_back(ray.Turned(-v[1], v[0], 0.0));
  const size_t uRows = kPose + m_parameters.size();
  const double* const pCamera = m_cov.data() + kPose * (uRows + 1);  // its block
  for (size_t i = 0; i < m_parameters.size(); ++i) {
    const double *const px = slope.parameter[0], *const py = slope.parameter[1];
    const int iRow = m_parameters[i];
    parameters.push_back(ray.Turned(px[iRow], py[iRow], 0.0));
    for (size_t k = 0; k < m_parameters.size(); ++k) {
      const double c = pCamera[i * uRows + k];
      const int iColumn = m_parameters[k];
      p->adAdjustedCov[0] += px[iRow] * c * px[iColumn];
      p->adAdjustedCov[1] += px[iRow] * c * py[iColumn];
      p->adAdjustedCov[2] += py[iRow] * c * py[iColumn];
    }
  }
  double adPose[9] = {}, adCamera[9] = {}, adBoth[9] = {};
  AddProduct(pose, m_cov.data(), uRows, adPose);
  AddProduct(parameters, pCamera, uRows, adCamera);
  pose.insert(pose.end(), parameters.begin(), parameters.end());
  AddProduct(pose, m_cov.data(), uRows, adBoth);
  p->dOrientation = PositionSd(adPose);
  p->dCamera = PositionSd(adCamera);
  p->dPose = PositionSd(adBoth);
  for (int i = 0; i < 9; ++i) p->adCov[i] += adBoth[i];
}

void ZuPlanePointChain::AddPlane(const Ray& ray, ZuPlanePointAccuracy* p) const {
  const double dVariance = PlaneVariance(p->adPoint);
  p->dPlaneSd = std::sqrt(dVariance);
  p->dPlane = p->dPlaneSd * ray.dLength / std::fabs(ray.dCos);
  for (int i = 0; i < 3; ++i) {
    for (int k = 0; k < 3; ++k) {
      p->adCov[3 * i + k] += dVariance * ray.w[i] * ray.w[k] / (ray.dCos * ray.dCos);
    }
  }
}

bool ZuPlanePointChain::Of(const ZuPoint& pixel, ZuPlanePointAccuracy* pAccuracy) const {
  *pAccuracy = {};
  Corrected slope;
  Ray ray;
  if (!Correct(pixel, &slope, pAccuracy) || !Meet(&ray, pAccuracy)) return false;
  AddPixel(ray, pAccuracy);
  AddPose(ray, slope, pAccuracy);
  AddPlane(ray, pAccuracy);
  return std::isfinite(PositionSd(pAccuracy->adCov));
}
