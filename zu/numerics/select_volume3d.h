// Volume that selects points: a pyramid from an eye point, bounded by four side planes.
//
// The viewer that draws the pyramid fills planes, points and eye; the library only tests.
#pragma once

#include "zu/export.h"
#include "zu/numerics/point3d.h"
#include "zu/points/point.h"
#include "zu/rectify/plane.h"

class ZU_API Zu3dSelectVolume {
 public:
  enum eMode : int { eModeStopped = 0, eModePyramid = 1 };

  void StartPyramid() { m_iMode = eModePyramid; }
  void Stop() { m_iMode = eModeStopped; }
  bool IsModePyramid() const { return m_iMode == eModePyramid; }
  bool IsRunning() const { return m_iMode != eModeStopped; }

  // The point relative to the eye lies on the positive side of all four planes or on them, by
  // ZuPlane::FastDist. False in any mode but the pyramid.
  bool IsInSelectRange(double dX, double dY, double dZ) const;
  bool IsInSelectRange(const ZuPoint3d& p) const { return IsInSelectRange(p.x, p.y, p.z); }

  // Side plane i of 0 to 3, in coordinates relative to the eye, of unit normal.
  const ZuPlane& GetPlane(int i) const { return m_Planes[i]; }
  ZuPlane& GetPlane(int i) { return m_Planes[i]; }
  // Points of the viewer, i of 0 to 5; the library does not read them.
  ZuPoint& GetScreenPoint(int i) { return m_ScreenPoints[i]; }
  ZuPoint& GetObjectPoint(int i) { return m_ObjectPoints[i]; }
  const ZuPoint3d& GetEye() const { return m_pEye; }
  void SetEye(const ZuPoint3d& eye) { m_pEye = eye; }

 protected:
  int m_iMode = eModeStopped;
  ZuPlane m_Planes[4];
  ZuPoint m_ScreenPoints[6];
  ZuPoint m_ObjectPoints[6];
  ZuPoint3d m_pEye;
};
