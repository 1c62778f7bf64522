// Running mean of points in space.
//
//   n values with the mean c, one more value v:  c' = (n c + v) / (n + 1)
//
// The mean is kept, not the sum: the order in which values come shows in the last digits.
#pragma once

#include "zu/export.h"
#include "zu/numerics/point3d.h"

class ZU_API ZuCenterPoint3d {
 public:
  ZuCenterPoint3d() = default;

  void Reset() { *this = ZuCenterPoint3d(); }

  void Add(double dX, double dY, double dZ);
  void Add(const ZuPoint3d& p) { Add(p.x, p.y, p.z); }
  // Merges another mean by the counts of both. Two empty ones give zeros.
  void Add(const ZuCenterPoint3d& other);

  // Takes a value out of the mean: c' = (n c - v) / (n - 1). Without a value left all is 0.
  void Subtract(double dX, double dY, double dZ);
  void Subtract(const ZuPoint3d& p) { Subtract(p.x, p.y, p.z); }

  ZuPoint3d Point() const { return ZuPoint3d(m_dX, m_dY, m_dZ); }
  int GetCount() const { return m_iCount; }
  double x() const { return m_dX; }
  double y() const { return m_dY; }
  double z() const { return m_dZ; }

 protected:
  double m_dX = 0.0;
  double m_dY = 0.0;
  double m_dZ = 0.0;
  int m_iCount = 0;
};

inline void ZuCenterPoint3d::Add(double dX, double dY, double dZ) {
  const double dOld = m_iCount;
  const double dNew = dOld + 1.0;
  m_dX = (dOld * m_dX + dX) / dNew;
  m_dY = (dOld * m_dY + dY) / dNew;
  m_dZ = (dOld * m_dZ + dZ) / dNew;
  ++m_iCount;
}
