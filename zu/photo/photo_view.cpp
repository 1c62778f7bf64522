#include "zu/photo/photo_view.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "zu/photo/internal/camera_kernel.h"
#include "zu/photo/photo.h"

namespace {

constexpr double kFlat = 1e-9;    // area over the product of the sides of a singular figure
constexpr double kBorder = 1e-9;  // rounding of a point on the border [mm]

}  // namespace

bool ZuIsBeforeCamera(const ZuPhoto& photo, const ZuPoint& object) {
  if (photo.IsRound()) return true;
  const double* R = photo.GetRotAOR().GetData();
  const double* X0 = photo.GetPosAOR().GetData();
  const double dDepth =
      R[2] * (object.m_dX - X0[0]) + R[5] * (object.m_dY - X0[1]) + R[8] * (object.m_dZ - X0[2]);
  return dDepth < 0.0;
}

bool ZuIsInImage(const ZuPhoto& photo, double x, double y) {
  ZuRegion region(photo.GetDigiRegion());
  region.Sort();
  if (region.Width() == 0.0 && region.Height() == 0.0) return true;
  return x >= region.Left() - 0.5 && x <= region.Right() + 0.5 && y >= region.Bottom() - 0.5 &&
         y <= region.Top() + 0.5;
}

double ZuTurnPixelY(const ZuPhoto& photo, double y) {
  return photo.GetDigiRegion().Height() + 1.0 - y;
}

bool ZuMapsPixels(const ZuPhoto& photo) {
  const ZuRegion& region = photo.GetDigiRegion();
  const double dWidth = region.Width() != 0.0 ? region.Width() : 1.0;
  const double dHeight = region.Height() != 0.0 ? region.Height() : 1.0;
  const auto biko = [&](double x, double y) {
    ZuPoint p(0, x, y);
    photo.ConvertBiko(&p, eDigiToBiko);
    return p;
  };
  const ZuPoint origin = biko(region.Left(), region.Bottom());
  const ZuPoint u = biko(region.Left() + dWidth, region.Bottom()) - origin;
  const ZuPoint v = biko(region.Left(), region.Bottom() + dHeight) - origin;
  const double dArea = std::fabs(u.m_dX * v.m_dY - u.m_dY * v.m_dX);
  return dArea > kFlat * std::hypot(u.m_dX, u.m_dY) * std::hypot(v.m_dX, v.m_dY);
}

double ZuValidImageRadius(const ZuPhoto& photo) {
  const ZuCamera& camera = photo.GetCamera();
  const ZuRegion& biko = photo.GetBikoRegion();
  double dCorner = 0.0;
  for (const double x : {biko.Left(), biko.Right()}) {
    for (const double y : {biko.Bottom(), biko.Top()}) {
      dCorner = std::max(dCorner, std::hypot(x - camera.m_dXh, y - camera.m_dYh));
    }
  }
  constexpr double kEverywhere = std::numeric_limits<double>::infinity();
  if (camera.m_iMode == eCameraModePinhole || !(dCorner > 0.0)) return kEverywhere;
  const double dValid = camera.GetValidRadius(dCorner);
  return dValid < dCorner ? dValid : kEverywhere;
}

bool ZuIsInCameraDomain(const ZuCamera& camera, double x, double y) {
  const double dHalfWidth = camera_kernel::HalfWidth(camera);
  if (!(std::fabs(x) <= dHalfWidth + kBorder) || !(std::fabs(y) <= dHalfWidth + kBorder)) {
    return false;
  }
  const double dCorner =
      std::hypot(dHalfWidth + std::fabs(camera.m_dXh), dHalfWidth + std::fabs(camera.m_dYh));
  return std::hypot(x - camera.m_dXh, y - camera.m_dYh) <=
         camera.GetValidRadius(dCorner + kBorder) + kBorder;
}
