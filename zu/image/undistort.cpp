#include "zu/image/undistort.h"

#include <algorithm>
#include <cmath>

#include "zu/image/image.h"
#include "zu/image/photo_map.h"

namespace {

constexpr int kBorderSteps = 64;  // of each side of the image, looked at for the whole extent

// What a camera leaves of the image point that it corrects: the point that it reduces to.
ZuCamera WithoutDistortion(const ZuCamera& camera) {
  ZuCamera plain(camera.GetId(), camera.m_dC, 0.0, 0.0, 0.0, 0.0, camera.m_dR0,
                 camera.GetName().chars());
  if (camera.m_iMode == eCameraModeZuvo || camera.m_iMode == eCameraModeCap) {
    plain.m_dXh = camera.m_dXh;
    plain.m_dYh = camera.m_dYh;
  } else if (camera.m_iMode == eCameraModeViva) {
    plain.m_dXh = camera.m_dXhViva;
    plain.m_dYh = camera.m_dYhViva;
  }
  return plain;
}

// The affine transformation that has the values and derivatives of `trafo` at (x, y).
ZuTrafo2d AffineAt(const ZuTrafo2d& trafo, double x, double y, double dStep) {
  const auto at = [&](double dx, double dy) {
    ZuPoint p(0, x + dx, y + dy);
    trafo.Transform(&p);
    return p;
  };
  const ZuPoint p0 = at(0.0, 0.0), left = at(-dStep, 0.0), right = at(dStep, 0.0);
  const ZuPoint low = at(0.0, -dStep), high = at(0.0, dStep);
  ZuMatrix m(3, 3);
  m.SetIdent();
  m[1][1] = (right.m_dX - left.m_dX) / (2.0 * dStep);
  m[1][2] = (high.m_dX - low.m_dX) / (2.0 * dStep);
  m[2][1] = (right.m_dY - left.m_dY) / (2.0 * dStep);
  m[2][2] = (high.m_dY - low.m_dY) / (2.0 * dStep);
  m[1][3] = p0.m_dX - m[1][1] * x - m[1][2] * y;
  m[2][3] = p0.m_dY - m[2][1] * x - m[2][2] * y;
  ZuTrafo2d affine;
  affine.SetFromMatrix(m, eZuTrafo2DAffin);
  return affine;
}

// The pre-transformation takes pixels that count from (x, y) of the ones before. False for a type
// that cannot.
bool MovePixels(double x, double y, ZuPhoto* pPhoto) {
  ZuTrafo2d pre(pPhoto->GetReseauPreTrafo());
  if (pre.GetType() == eZuTrafo2DNone) pre.SetIdent();
  if (pre.GetType() != eZuTrafo2DHelmert && pre.GetType() != eZuTrafo2DAffin) return false;
  ZuMatrix matrix(3, 3), shift(3, 3);
  pre.BuildMatrix(&matrix);
  shift.SetIdent();
  shift[1][3] = x;
  shift[2][3] = y;
  pre.SetFromMatrix(matrix * shift, pre.GetType());
  pPhoto->SetReseauPreTrafo(pre);
  return true;
}

// Grows the region of *pResult to what the border of the source needs.
bool Grow(const ZuPhoto& photo, bool bFlip, ZuPhoto* pResult) {
  const ZuPhotoToPhotoMap back(photo, *pResult, bFlip);  // from the source to the result
  ZuRegion region(photo.GetDigiRegion());
  region.Sort();
  double dLeft = 0.0, dTop = 0.0, dRight = region.Width(), dBottom = region.Height();
  for (int k = 0; k <= kBorderSteps; ++k) {
    const double u = (region.Width() + 1.0) * k / kBorderSteps - 0.5;
    const double v = (region.Height() + 1.0) * k / kBorderSteps - 0.5;
    const double aadBorder[4][2] = {
        {u, -0.5}, {u, region.Height() + 0.5}, {-0.5, v}, {region.Width() + 0.5, v}};
    for (const auto& border : aadBorder) {
      double x = border[0], y = border[1];
      if (!back.Map(&x, &y)) return false;
      dLeft = std::min(dLeft, std::floor(x + 0.5));
      dTop = std::min(dTop, std::floor(y + 0.5));
      dRight = std::max(dRight, std::ceil(x - 0.5));
      dBottom = std::max(dBottom, std::ceil(y - 0.5));
    }
  }
  if (dRight - dLeft >= ZuImage::kMostPixels || dBottom - dTop >= ZuImage::kMostPixels)
    return false;
  // y that counts up starts at the lowest row.
  const double dShiftY = bFlip ? region.Height() - dBottom : dTop;
  if (!MovePixels(dLeft, dShiftY, pResult)) return false;
  pResult->SetDigiRegion(ZuRegion(region.Left(), region.Bottom(), region.Left() + dRight - dLeft,
                                  region.Bottom() + dBottom - dTop));
  return true;
}

}  // namespace

bool ZuMakeUndistortedPhoto(const ZuPhoto& photo, eZuUndistortExtent eExtent, bool bFlip,
                            ZuPhoto* pResult) {
  const ZuRegion& region = photo.GetDigiRegion();
  if (region.Width() == 0.0 || region.Height() == 0.0 || !photo.GetCamera().IsValid()) return false;
  *pResult = photo;
  pResult->SetName(photo.GetName());
  ZuPoint middle = region.GetCenter();
  if (photo.GetReseauMainTrafo().GetType() == eZuTrafo2DPolynomial) {
    photo.ConvertBiko(&middle, eDigiToPre);
    pResult->SetReseauMainTrafo(
        AffineAt(photo.GetReseauMainTrafo(), middle.m_dX, middle.m_dY, 0.01 * region.Width()));
    pResult->SetPolyInvTrafo(ZuTrafo2d());
    middle = region.GetCenter();
  }
  pResult->SetCamera(WithoutDistortion(photo.GetCamera()));
  ZuBikoTransform toRay(&photo, eDigiToAdjusted, false);
  toRay.SetExact(true);
  if (!toRay.Transform(&middle)) return false;
  if (eExtent == eZuUndistortWhole && !Grow(photo, bFlip, pResult)) return false;
  // Its domain is the new image.
  pResult->CalcBikoRegionFromDigiRegion();
  pResult->GetCamera().m_dRMax = 0.0;
  pResult->SetCamera(nullptr);
  const ZuRegion& biko = pResult->GetBikoRegion();
  for (const double d : {biko.Left(), biko.Right(), biko.Bottom(), biko.Top()}) {
    pResult->GetCamera().m_dRMax = std::max(pResult->GetCamera().m_dRMax, 1.1 * std::fabs(d));
  }
  return true;
}
