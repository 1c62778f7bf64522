// The plane of a construction: points of space go into it, and what is constructed comes back.
//
//   ZuCadPlane plane;
//   if (ZuCadPlane::Through(a, b, c, &plane)) ...   // origin a, x axis to b, c at a positive y
//   ZuPoint2d p = plane.ToPlane(q, &dHeight);
//   ZuPoint3d r = plane.ToSpace(p);
#pragma once

#include "zu/export.h"
#include "zu/numerics/frame3d.h"
#include "zu/numerics/point2d.h"

class ZuPlane;

class ZU_API ZuCadPlane {
 public:
  // The plane z = 0 with x and y of space.
  ZuCadPlane() = default;
  // x and y along v1 and v2 of the frame, which must be of unit length and perpendicular.
  explicit ZuCadPlane(const ZuFrame3d& frame) : m_frame(frame) {}

  // Coordinates x, y of space at the height z = dHeight; x, z at y = dHeight, seen along +y, so
  // that heights count along -y; y, z at x = dHeight.
  static ZuCadPlane XY(double dHeight);
  static ZuCadPlane XZ(double dHeight);
  static ZuCadPlane YZ(double dHeight);
  // x and y as ZuMakePlaneFrame has them: those of a map in a level plane, upright in any other.
  // False, *pPlane untouched: a plane without normal, or not finite.
  static bool Of(const ZuPlane& plane, ZuCadPlane* pPlane);
  // A local system: origin a, x axis to b, and c at a positive y. False, *pPlane untouched: the
  // points stand in a line (to 1e-10 of their distances), or are not finite.
  static bool Through(const ZuPoint3d& a, const ZuPoint3d& b, const ZuPoint3d& c,
                      ZuCadPlane* pPlane);

  // The foot of p, in coordinates of the plane; its height over it where wanted.
  ZuPoint2d ToPlane(const ZuPoint3d& p, double* pdHeight = nullptr) const;
  ZuPoint3d ToSpace(const ZuPoint2d& p, double dHeight = 0.0) const;

  const ZuFrame3d& GetFrame() const { return m_frame; }

 protected:
  ZuFrame3d m_frame;
};
