// Axis-parallel rectangle between two points; only X and Y count.
//
// Sorted, the first point holds the minima (left, bottom) and the second the maxima (right, top). A
// copied or combined region may be unsorted; Sort puts it right.
#pragma once

#include <iosfwd>

#include "zu/export.h"
#include "zu/foundation/link.h"
#include "zu/points/point.h"
#include "zu/points/units.h"

class ZuReaderObject;

class ZU_API ZuRegion : public LinkHdl {
 public:
  // (0, 0, 0, 0).
  ZuRegion() = default;
  // Sorted.
  ZuRegion(const ZuPoint& p1, const ZuPoint& p2);
  ZuRegion(double x1, double y1, double x2, double y2);
  // As it stands, not sorted.
  ZuRegion(const ZuRegion& region) = default;
  ZuRegion& operator=(const ZuRegion& region) = default;

  // Exact on the four numbers.
  bool operator==(const ZuRegion& region) const;

  double Left() const { return m_ptLL.m_dX; }
  double Bottom() const { return m_ptLL.m_dY; }
  double Right() const { return m_ptUR.m_dX; }
  double Top() const { return m_ptUR.m_dY; }
  double& Left() { return m_ptLL.m_dX; }
  double& Bottom() { return m_ptLL.m_dY; }
  double& Right() { return m_ptUR.m_dX; }
  double& Top() { return m_ptUR.m_dY; }

  // Right - left, top - bottom and their product, negative where an axis is unsorted.
  double Width() const { return Right() - Left(); }
  double Height() const { return Top() - Bottom(); }
  double Area() const { return Width() * Height(); }

  ZuPoint GetUL() const;
  ZuPoint GetLR() const;
  ZuPoint GetLL() const { return m_ptLL; }
  ZuPoint GetUR() const { return m_ptUR; }
  ZuPoint GetCenter() const;

  // Left, bottom, right, top.
  void Get(double& x1, double& y1, double& x2, double& y2) const;
  void Set(const ZuRegion& region);
  // As given, not sorted.
  void Set(double x1, double y1, double x2, double y2);

  // Exchanges coordinates so that the minima stand in the first point.
  void Sort();

  // The common rectangle, sorted, as a new region.
  //
  // Required: an axis in which the regions are apart is 0 to 0, also where this one ends exactly at
  // the other's start: callers ask for a width or height of 0.
  ZuRegion Intersect(const ZuRegion& region) const;

  // The rectangle around both, as a new region.
  //
  // Required: the maxima stand in the first point and the minima in the second, and it is not
  // sorted. Callers that need it sorted call Sort.
  ZuRegion Union(const ZuRegion& region) const;

  // Both regions, sorted, have a point in common; touching counts.
  bool Overlap(const ZuRegion& region) const { return Overlap(&region); }
  bool Overlap(const ZuRegion* pRegion) const;
  // The point lies inside or on the edge, also of an unsorted region.
  bool Overlap(const ZuPoint& point) const { return Overlap(&point); }
  bool Overlap(const ZuPoint* pPoint) const;

  // Corner by corner, not sorted.
  ZuRegion operator+(const ZuRegion& region) const;
  ZuRegion operator-(const ZuRegion& region) const;
  // Grows and shrinks on all four sides.
  ZuRegion& operator+=(double d);
  ZuRegion& operator-=(double d);

  // Reads "x1 y1 x2 y2" from the token in hand on; returns 1. Not sorted.
  int Read(ZuReaderObject* pObject);
  // Required: writes nothing and returns the stream; regions are read by the library and written by
  // their records.
  std::ostream& Write(std::ostream& os) const;
  // Writes "x1 y1 x2 y2" as Read takes it to the last bit.
  std::ostream& Export(std::ostream& os) const;
  void DbgPrintf(const char* szTitle = nullptr) const;

 protected:
  ZuPoint m_ptLL;
  ZuPoint m_ptUR;
};

// Multiplies both points by GetUnitFactor(from) / GetUnitFactor(to).
ZU_API void ConvertUnit(ZuRegion* pRegion, eZuUnit from, eZuUnit to);
