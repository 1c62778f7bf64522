// Views of photos: axes, distances, the field of view, rescaling.
#include <cmath>

#include "zu/photo/photo.h"
#include "zu/rectify/calc_plane.h"

namespace {

// Length of the sum of two unit axes above which they look in the same direction, and from which an
// object point counts as before the camera [-].
constexpr double kSameDirection = 1.42;
constexpr double kInView = 1.0;

ZuVector Axis(const ZuMatrix& rotation) { return (rotation * ZuVector(0.0, 0.0, 1.0)).Normalize(); }

double SquaredLength(const ZuVector& a, double x, double y, double z) {
  const double dx = a[1] - x, dy = a[2] - y, dz = a[3] - z;
  return dx * dx + dy * dy + dz * dz;
}

ZuPlane PlaneThrough(std::initializer_list<const ZuPoint*> points) {
  ZuPointList list;
  for (const ZuPoint* p : points) list.Add(*p);
  ZuCalcPlane calc;
  calc.CalcPlaneFromFilteredPoints(&list, true, false);
  return calc.GetPlane();
}

ZuMatrix Scaling(double fx, double fy) {
  ZuMatrix scaling(3, 3);
  scaling.SetIdent();
  scaling[1][1] = fx;
  scaling[2][2] = fy;
  return scaling;
}

}  // namespace

bool ZuPhoto::IsLookingInSameDirection(const ZuPhoto& other) const {
  return (Axis(m_RotAOR) + Axis(other.m_RotAOR)).Abs() > kSameDirection;
}

double ZuPhoto::Distance2(const ZuPhoto& other) const {
  return SquaredLength(m_PosAOR, other.m_PosAOR[1], other.m_PosAOR[2], other.m_PosAOR[3]);
}

double ZuPhoto::Distance2(const ZuPoint& point) const {
  return SquaredLength(m_PosAOR, point.m_dX, point.m_dY, point.m_dZ);
}

double ZuPhoto::Distance(const ZuPhoto& other) const { return std::sqrt(Distance2(other)); }

double ZuPhoto::Distance(const ZuPoint& point) const { return std::sqrt(Distance2(point)); }

bool ZuPhoto::CalcFieldOfViewPlanes() {
  if (m_bFieldOfViewValid) return true;
  if (!m_bOriented) return false;
  const ZuRegion region(GetBikoRegion());
  const double x1 = region.Left(), y1 = region.Bottom(), x2 = region.Right(), y2 = region.Top();
  auto& corner = m_FovCorners.Own();
  auto& plane = m_FovPlanes.Own();
  const struct { double u, v; } corners[4] = {{x1, y1}, {x2, y1}, {x2, y2}, {x1, y2}};
  for (size_t i = 0; i < 4; ++i) {
    // On the negative side of the projection centre, where the film lies.
    const ZuVector film =
        m_PosAOR - m_RotAOR * ZuVector(corners[i].u, corners[i].v, -m_Camera.m_dC);
    corner[i] = ZuPoint(static_cast<unsigned int>(i) + 1, film[1], film[2], film[3]);
  }
  corner[4] = ZuPoint(5, m_PosAOR[1], m_PosAOR[2], m_PosAOR[3]);
  const ZuPoint* p = corner.data();
  for (size_t i = 0; i < 4; ++i) plane[i] = PlaneThrough({p + 4, p + i, p + (i + 1) % 4});
  plane[4] = PlaneThrough({p, p + 1, p + 2, p + 3});
  m_bFieldOfViewValid = true;
  return true;
}

bool ZuPhoto::IsInPhotoView(const ZuPoint& point, bool bCheckDirection) const {
  if (!IsActive() || !m_bOriented) return false;
  if (IsRound()) return IsInRoundView(point);
  ZuPoint image(point);
  ConvertBiko(&image, eObjectToBiko);
  ZuRegion region(GetBikoRegion());
  region.Sort();
  if (!region.Overlap(image)) return false;
  if (!bCheckDirection) return true;
  // Rejects the mirror image of a point behind the camera.
  ZuVector b = m_PosAOR - ZuVector(point.m_dX, point.m_dY, point.m_dZ);
  return (Axis(m_RotAOR) + b.Normalize()).Abs() >= kInView;
}

bool ZuPhoto::RescaleTo(double dFactor) {
  if (dFactor == 0.0) return false;
  m_dPixelSize = 0.0;
  m_dScale *= dFactor;
  m_DigiRegion.Set(m_DigiRegion.Left() * dFactor, m_DigiRegion.Bottom() * dFactor,
                   m_DigiRegion.Right() * dFactor, m_DigiRegion.Top() * dFactor);
  ZuMatrix pre(3, 3);
  m_PreTrafo->BuildMatrix(&pre);
  m_PreTrafo.Own().SetFromMatrix(pre * Scaling(1.0 / dFactor, 1.0 / dFactor), eZuTrafo2DHelmert);
  return true;
}

bool ZuPhoto::RescaleTo(double fx, double fy) {
  if (m_MainTrafo->GetType() == eZuTrafo2DPolynomial) return false;
  ConvertList(&m_ImoList, eBikoToDigi);
  m_dPixelSize = 0.0;
  const ZuRegion region(GetBikoRegion());
  m_BikoRegion.Own().Set(region.Left() * fx, region.Bottom() * fy, region.Right() * fx,
                         region.Top() * fy);
  ZuMatrix main(3, 3);
  m_MainTrafo->BuildMatrix(&main);
  m_MainTrafo.Own().SetFromMatrix(Scaling(fx, fy) * main, m_MainTrafo->GetType());
  GetPixelSize();
  ConvertList(&m_ImoList, eDigiToBiko);
  return true;
}
