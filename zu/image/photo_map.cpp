#include "zu/image/photo_map.h"

#include <algorithm>
#include <cmath>

#include "zu/image/image.h"
#include "zu/photo/photo_view.h"

namespace {

ZuBikoTransform Exact(const ZuPhoto& photo, eConvertBikoMode eMode) {
  ZuBikoTransform transform(&photo, eMode, false);
  transform.SetExact(true);
  return transform;
}

}  // namespace

ZuPhotoPixels::ZuPhotoPixels(const ZuPhoto& photo, bool bFlip) : m_bFlip(bFlip) {
  ZuRegion region(photo.GetDigiRegion());
  region.Sort();
  m_dLeft = region.Left();
  m_dTop = region.Bottom();
  m_dTurn = ZuTurnPixelY(photo, 0.0);
}

void ZuPhotoPixels::ToPhoto(double* x, double* y) const {
  *x += m_dLeft;
  *y += m_dTop;
  if (m_bFlip) *y = m_dTurn - *y;
}

void ZuPhotoPixels::FromPhoto(double* x, double* y) const {
  if (m_bFlip) *y = m_dTurn - *y;
  *x -= m_dLeft;
  *y -= m_dTop;
}

ZuPhotoToPhotoMap::ZuPhotoToPhotoMap(const ZuPhoto& result, const ZuPhoto& source, bool bFlip)
    : m_resultPixels(result, bFlip),
      m_sourcePixels(source, bFlip),
      m_toRay(Exact(result, eDigiToAdjusted)),
      m_fromRay(Exact(source, eAdjustedToDigi)) {}

bool ZuPhotoToPhotoMap::Map(double* x, double* y) const {
  double z = 0.0;
  m_resultPixels.ToPhoto(x, y);
  if (!m_toRay.Transform(x, y, &z)) return false;
  const double dScale = std::fabs(m_fromRay.GetPhoto()->GetCamera().m_dC) /
                        std::fabs(m_toRay.GetPhoto()->GetCamera().m_dC);
  *x *= dScale;
  *y *= dScale;
  if (!m_fromRay.Transform(x, y, &z)) return false;
  m_sourcePixels.FromPhoto(x, y);
  return true;
}

bool ZuPlaneRaster::SetRegion(const ZuRegion& region, double dPixel) {
  ZuRegion sorted(region);
  sorted.Sort();
  // A last pixel that the region only touches by rounding is none.
  constexpr double kTouched = 1e-6;
  const double dWidth = std::ceil(sorted.Width() / dPixel - kTouched);
  const double dHeight = std::ceil(sorted.Height() / dPixel - kTouched);
  const auto fits = [](double d) { return d >= 1.0 && d <= ZuImage::kMostPixels; };
  if (!(dPixel > 0.0) || !fits(dWidth) || !fits(dHeight)) return false;
  m_dLeft = sorted.Left();
  m_dTop = sorted.Top();
  m_dPixel = dPixel;
  m_iWidth = static_cast<int>(dWidth);
  m_iHeight = static_cast<int>(dHeight);
  return true;
}

ZuRegion ZuPlaneRaster::GetRegion() const {
  return ZuRegion(m_dLeft, m_dTop - m_iHeight * m_dPixel, m_dLeft + m_iWidth * m_dPixel, m_dTop);
}

void ZuPlaneRaster::ToPlane(double* x, double* y) const {
  *x = m_dLeft + (*x + 0.5) * m_dPixel;
  *y = m_dTop - (*y + 0.5) * m_dPixel;
}

void ZuPlaneRaster::ToObject(double x, double y, double* pdObject) const {
  const double* m = m_toObject.GetData();
  const double w = m[12] * x + m[13] * y + m[15];
  for (int i = 0; i < 3; ++i) pdObject[i] = (m[4 * i] * x + m[4 * i + 1] * y + m[4 * i + 3]) / w;
}

ZuPlaneToPhotoMap::ZuPlaneToPhotoMap(const ZuPlaneRaster& raster, const ZuPhoto& photo, bool bFlip)
    : m_raster(raster),
      m_pPhoto(&photo),
      m_pixels(photo, bFlip),
      m_toPixel(Exact(photo, eObjectToDigi)) {}

bool ZuPlaneToPhotoMap::Map(double* x, double* y) const {
  double adObject[3];
  m_raster.ToPlane(x, y);
  m_raster.ToObject(*x, *y, adObject);
  const double* R = m_pPhoto->GetRotAOR().GetData();
  const double* X0 = m_pPhoto->GetPosAOR().GetData();
  const double dDepth =
      R[2] * (adObject[0] - X0[0]) + R[5] * (adObject[1] - X0[1]) + R[8] * (adObject[2] - X0[2]);
  if (!(dDepth < 0.0) || !m_toPixel.Transform(adObject, adObject + 1, adObject + 2)) return false;
  *x = adObject[0];
  *y = adObject[1];
  m_pixels.FromPhoto(x, y);
  return true;
}

ZuZuspToPhotoMap::ZuZuspToPhotoMap(const ZuPlaneRaster& raster, const ZuZuspTrafo& trafo,
                                   const ZuPhoto& photo, bool bFlip)
    : m_raster(raster),
      m_bDistortion(trafo.CompensateDistortion()),
      m_camera(trafo.GetDistortCameraParam()),
      m_pixels(photo, bFlip),
      m_toPixel(Exact(photo, eBikoToDigi)) {
  int iError = 0;
  m_inverse = trafo.GetZuspMat();
  m_inverse.Invert(&iError);
  if (iError != 0) return;
  // The horizon of the image is where H2 . (x, y, 1) vanishes. The inverse gives the point times
  // 1 / that number, whose sign is taken from the middle of the image.
  ZuPoint middle = photo.GetDigiRegion().GetCenter();
  photo.ConvertBiko(&middle, eDigiToBiko);
  if (m_bDistortion) m_camera.AdjustExact(&middle.m_dX, &middle.m_dY);
  const double* H = trafo.GetZuspMat().GetData();
  const double w = H[6] * middle.m_dX + H[7] * middle.m_dY + H[8];
  if (std::isfinite(w) && w != 0.0) m_dSide = w > 0.0 ? 1.0 : -1.0;
}

bool ZuZuspToPhotoMap::Map(double* x, double* y) const {
  m_raster.ToPlane(x, y);
  const double* m = m_inverse.GetData();
  const double w = m[6] * *x + m[7] * *y + m[8];
  if (!(w * m_dSide > 0.0)) return false;
  const double X = (m[0] * *x + m[1] * *y + m[2]) / w, Y = (m[3] * *x + m[4] * *y + m[5]) / w;
  *x = X;
  *y = Y;
  if (m_bDistortion && m_camera.InvAdjustExact(x, y) != eCameraInverseOk) return false;
  double z = 0.0;
  if (!m_toPixel.Transform(x, y, &z)) return false;
  m_pixels.FromPhoto(x, y);
  return true;
}
