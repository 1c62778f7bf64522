#include "zu/image/rectify.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "zu/photo/photo_view.h"

namespace {

constexpr int kBorderSteps = 16;  // of each side of the image

class Box {
 public:
  void Add(double x, double y) {
    m_dLeft = std::min(m_dLeft, x);
    m_dRight = std::max(m_dRight, x);
    m_dBottom = std::min(m_dBottom, y);
    m_dTop = std::max(m_dTop, y);
  }
  ZuRegion Region() const { return ZuRegion(m_dLeft, m_dBottom, m_dRight, m_dTop); }
  bool IsFinite() const { return std::isfinite(m_dRight - m_dLeft + m_dTop - m_dBottom); }

 private:
  static constexpr double kFar = std::numeric_limits<double>::infinity();
  double m_dLeft = kFar, m_dRight = -kFar, m_dBottom = kFar, m_dTop = -kFar;
};

// Pixels along the border of the image, as the photo's transformations count them.
std::vector<ZuPoint> BorderOf(const ZuPhoto& photo, bool bFlip) {
  const ZuRegion& region = photo.GetDigiRegion();
  const double dWidth = std::fabs(region.Width()), dHeight = std::fabs(region.Height());
  const ZuPhotoPixels pixels(photo, bFlip);
  std::vector<ZuPoint> border;
  for (int k = 0; k < 4 * kBorderSteps; ++k) {
    const double f = static_cast<double>(k % kBorderSteps) / kBorderSteps;
    const int iSide = k / kBorderSteps;
    double x = iSide == 0   ? f * dWidth
               : iSide == 2 ? (1.0 - f) * dWidth
               : iSide == 1 ? dWidth
                            : 0.0;
    double y = iSide == 1   ? f * dHeight
               : iSide == 3 ? (1.0 - f) * dHeight
               : iSide == 2 ? dHeight
                            : 0.0;
    pixels.ToPhoto(&x, &y);
    border.emplace_back(0, x, y);
  }
  return border;
}

}  // namespace

bool ZuPhotoFootprint(const ZuPhoto& photo, const ZuPlane& plane, const ZuMatrix& toObject,
                      bool bFlip, ZuRegion* pRegion) {
  ZuPhoto copy(photo);
  ZuBikoTransform toRay(&photo, eDigiToAdjusted, false);
  toRay.SetExact(true);
  int iError = 0;
  ZuMatrix fromObject(toObject);
  fromObject.Invert(&iError);
  Box box;
  for (ZuPoint pixel : BorderOf(photo, bFlip)) {
    ZuPoint object;
    if (iError != 0 || !toRay.Transform(&pixel) || !copy.CalcSip(&object, plane, &pixel) ||
        !ZuIsBeforeCamera(photo, object)) {
      return false;
    }
    fromObject.PTrans3D(&object.m_dX, &object.m_dY, &object.m_dZ);
    box.Add(object.m_dX, object.m_dY);
  }
  if (!box.IsFinite()) return false;
  *pRegion = box.Region();
  return true;
}

bool ZuZuspFootprint(const ZuPhoto& photo, const ZuZuspTrafo& trafo, ZuRegion* pRegion) {
  std::vector<ZuPoint> points;
  for (const ZuPolygon* pPolygon : {&trafo.GetRegion(), &trafo.GetBikoList()}) {
    if (!points.empty()) break;
    for (const ZuPoint* p = pPolygon->First(); p != nullptr; p = p->Next()) points.push_back(*p);
  }
  if (points.empty() && photo.GetDigiRegion().Width() != 0.0) {
    points = BorderOf(photo, false);
    for (ZuPoint& p : points) photo.ConvertBiko(&p, eDigiToBiko);
  }
  const double* H = trafo.GetZuspMat().GetData();
  double dSide = 0.0;
  Box box;
  for (ZuPoint& p : points) {
    if (trafo.CompensateDistortion() &&
        trafo.GetDistortCameraParam().AdjustExact(&p.m_dX, &p.m_dY) != eCameraInverseOk) {
      return false;
    }
    const double w = H[6] * p.m_dX + H[7] * p.m_dY + H[8];
    if (dSide == 0.0) dSide = w;
    if (!(w * dSide > 0.0)) return false;
    box.Add((H[0] * p.m_dX + H[1] * p.m_dY + H[2]) / w, (H[3] * p.m_dX + H[4] * p.m_dY + H[5]) / w);
  }
  if (points.empty() || !box.IsFinite()) return false;
  *pRegion = box.Region();
  return true;
}

ZuOrthoPhoto ZuMakeOrthoPhoto(unsigned uId, const std::string& strName,
                              const ZuPlaneRaster& raster) {
  ZuOrthoPhoto photo(uId);
  photo.SetName(strName.c_str());
  photo.SetDigiRegion(ZuRegion(-0.5, -0.5, raster.m_iWidth - 0.5, raster.m_iHeight - 0.5));
  photo.SetObjectRegion(raster.GetRegion());
  const double dPixels = 1.0 * raster.m_iWidth * raster.m_iHeight;
  photo.SetStatPixel(static_cast<int>(std::min(dPixels, 1.0 * std::numeric_limits<int>::max())));
  auto* pPlane = new ZuZuspPlaneInfo();
  photo.ZuspPlaneList().Add(pPlane);
  const double d = raster.m_dPixel;
  const double adMap[] = {d,   0.0, raster.m_dLeft + 0.5 * d, 0.0, -d, raster.m_dTop - 0.5 * d, 0.0,
                          0.0, 1.0};
  pPlane->GetTrafo().SetId(1);
  pPlane->GetTrafo().SetActive(true);
  pPlane->GetTrafo().SetZuspMat(ZuMatrix(adMap, 3, 3));
  pPlane->GetTrafo().SetTransMat(raster.m_toObject);
  return photo;
}

bool ZuPixelScaleAt(const ZuPixelMap& map, double x, double y, double* pdLong, double* pdShort) {
  double adX[4] = {x - 0.5, x + 0.5, x, x}, adY[4] = {y, y, y - 0.5, y + 0.5};
  for (int i = 0; i < 4; ++i) {
    if (!map.Map(adX + i, adY + i)) return false;
  }
  const double a = adX[1] - adX[0], b = adX[3] - adX[2], c = adY[1] - adY[0], d = adY[3] - adY[2];
  // Half axes of the ellipse that the source shows of a circle.
  const double dSum = std::hypot(a + d, c - b), dDifference = std::hypot(a - d, c + b);
  *pdLong = 2.0 / std::fabs(dSum - dDifference);
  *pdShort = 2.0 / (dSum + dDifference);
  return std::isfinite(*pdLong);
}
