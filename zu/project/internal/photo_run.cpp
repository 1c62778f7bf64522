#include "zu/project/internal/photo_run.h"

#include <cmath>

#include "zu/photo/photo_view.h"

namespace zu::internal {

const char* RefusalText(eZuMeasureRefusal eWhy) {
  switch (eWhy) {
    case eZuMeasureOutsideImage:
      return "it lies outside the image";
    case eZuMeasureNotOneToOne:
      return "it lies where the camera's model is not one to one";
    case eZuMeasureParallel:
      return "its ray is parallel to the plane";
    case eZuMeasureBehindCamera:
      return "its ray meets the plane behind the camera";
    default:
      return "it is measured twice";
  }
}

PhotoRun::PhotoRun(ZuPhoto& photo, const ZuPlane& plane, bool bFlip, bool bExact)
    : m_photo(photo),
      m_plane(plane),
      m_bFlip(bFlip),
      m_bExact(bExact),
      m_dReach(ZuValidImageRadius(photo)),
      m_project(&photo, eObjectToAdjusted, false) {
  m_project.SetExact(bExact);
}

bool PhotoRun::Meet(const ZuPoint& pixel, const ZuPoint* pKnown, ZuMeasuredPoint* pPoint,
                    eZuMeasureRefusal* peWhy) {
  ZuPoint turned(pixel);
  if (m_bFlip) turned.m_dY = ZuTurnPixelY(m_photo, pixel.m_dY);
  *peWhy = eZuMeasureOutsideImage;
  if (!ZuIsInImage(m_photo, turned.m_dX, turned.m_dY)) return false;
  ZuPoint adjusted(turned), object;
  *peWhy = eZuMeasureNotOneToOne;
  if (!Adjust(&adjusted)) return false;
  *peWhy = eZuMeasureParallel;
  if (!m_photo.CalcSip(&object, m_plane, &adjusted) || !std::isfinite(object.m_dX) ||
      !std::isfinite(object.m_dY) || !std::isfinite(object.m_dZ)) {
    return false;
  }
  *peWhy = eZuMeasureBehindCamera;
  if (!ZuIsBeforeCamera(m_photo, object)) return false;
  pPoint->m_uId = pixel.GetId();
  pPoint->m_dPixelX = pixel.m_dX;
  pPoint->m_dPixelY = pixel.m_dY;
  pPoint->m_dPixelSdX = pixel.m_dDX;
  pPoint->m_dPixelSdY = pixel.m_dDY;
  pPoint->m_dX = object.m_dX;
  pPoint->m_dY = object.m_dY;
  pPoint->m_dZ = object.m_dZ;
  if (pKnown != nullptr) Compare(*pKnown, turned, adjusted, pPoint);
  return true;
}

bool PhotoRun::Adjust(ZuPoint* p) const {
  m_photo.ConvertBiko(p, eDigiToBiko);
  const ZuCamera& camera = m_photo.GetCamera();
  if (m_bExact) return camera.AdjustExact(&p->m_dX, &p->m_dY) == eCameraInverseOk;
  if (std::hypot(p->m_dX - camera.m_dXh, p->m_dY - camera.m_dYh) > m_dReach) return false;
  m_photo.ConvertBiko(p, eBikoToAdjusted);
  return true;
}

// The difference in the image is short: carried to pixels by the derivative at the measured place.
void PhotoRun::Compare(const ZuPoint& known, const ZuPoint& pixel, const ZuPoint& adjusted,
                       ZuMeasuredPoint* p) const {
  p->m_bChecked = true;
  p->m_dDX = p->m_dX - known.m_dX;
  p->m_dDY = p->m_dY - known.m_dY;
  p->m_dDZ = p->m_dZ - known.m_dZ;
  ZuPoint image(known);
  m_project.Transform(&image);
  const ZuPoint u = Slope(pixel, 0.5, 0.0), v = Slope(pixel, 0.0, 0.5);
  const double ex = adjusted.m_dX - image.m_dX, ey = adjusted.m_dY - image.m_dY;
  const double dDet = u.m_dX * v.m_dY - u.m_dY * v.m_dX;
  p->m_dResPixelX = (ex * v.m_dY - ey * v.m_dX) / dDet;
  p->m_dResPixelY = (u.m_dX * ey - u.m_dY * ex) / dDet * (m_bFlip ? -1.0 : 1.0);
}

// The adjusted point's change from the pixel less (dx, dy) to the pixel plus (dx, dy); where one of
// these lies beyond the camera's model, twice the change to the other.
ZuPoint PhotoRun::Slope(const ZuPoint& pixel, double dx, double dy) const {
  ZuPoint ends[2] = {pixel, pixel};
  double dFactor = 1.0;
  for (const int i : {0, 1}) {
    ends[i].m_dX += i == 0 ? -dx : dx;
    ends[i].m_dY += i == 0 ? -dy : dy;
    if (Adjust(&ends[i])) continue;
    ends[i] = pixel;
    Adjust(&ends[i]);
    dFactor = 2.0;
  }
  ZuPoint change = ends[1] - ends[0];
  change.m_dX *= dFactor;
  change.m_dY *= dFactor;
  return change;
}

}  // namespace zu::internal
