// Ring of points with a kept bounding box. The last point is not repeated as the first.
#pragma once

#include <iosfwd>

#include "zu/export.h"
#include "zu/foundation/link.h"
#include "zu/points/point_list.h"

class ZuReaderObject;
class ZuRegion;

// What a polygon reads for each point and how it tests: the flat modes by box and ring, the others
// by the box in space alone. Other values read nothing and enclose nothing.
enum ELPolygonMode : int {
  eLPolygonXY = 0,     // X, Y
  eLPolygonIdXY = 1,   // id, X, Y
  eLPolygonXYZ = 2,    // X, Y, Z
  eLPolygonIdXYZ = 3,  // id, X, Y, Z
};

class ZU_API ZuPolygon : public LinkHdl {
 public:
  explicit ZuPolygon(ELPolygonMode eMode);
  ZuPolygon(ZuPointList* pPoints, ELPolygonMode eMode);
  // The rectangle between two corners.
  ZuPolygon(const ZuPoint& p1, const ZuPoint& p2, ELPolygonMode eMode);
  // The rectangle of a region, mode 0.
  explicit ZuPolygon(const ZuRegion& region);
  ZuPolygon(const ZuPolygon& polygon) = default;
  // Takes over mode, box and points.
  ZuPolygon& operator=(const ZuPolygon& polygon) = default;
  virtual ~ZuPolygon() = default;

  // Append copies and widen the box; always true. Null adds nothing.
  bool AddPoint(const ZuPoint& point);
  bool AddPoint(const ZuPointList* pPoints);

  // Widen the box by a point, or set it anew from all points.
  void UpdateMinMax(const ZuPoint& point);
  void UpdateMinMax();

  int Count() const { return m_points.Count(); }
  ZuPoint* First() const { return m_points.First(); }
  ELPolygonMode GetMode() const { return m_eMode; }
  void SetMode(ELPolygonMode eMode) { m_eMode = eMode; }
  const ZuPointList& GetPoints() const { return m_points; }
  ZuPointList& GetPoints() { return m_points; }
  const ZuPoint& GetMin() const { return m_ptMin; }
  const ZuPoint& GetMax() const { return m_ptMax; }

  // Extents of the box in X, Y, Z and their product.
  double Width() const { return m_ptMax.m_dX - m_ptMin.m_dX; }
  double Height() const { return m_ptMax.m_dY - m_ptMin.m_dY; }
  double Deep() const { return m_ptMax.m_dZ - m_ptMin.m_dZ; }
  double Boxvol() const { return Width() * Height() * Deep(); }
  // The box in X, Y.
  ZuRegion GetRegion() const;
  // The mean of all points, id 0.
  ZuPoint Center() const;

  // Inside the box or on it: in X, Y for the modes 0 and 1, in X, Y, Z for 2 and 3; false for
  // others.
  bool IsInBox(const ZuPoint& point) const;

  // Inside the polygon. Modes 2 and 3: IsInBox. Modes 0 and 1: IsInBox and an odd number of edges
  // that a level segment from the point to far right of the box meets. Linear in the points;
  // allocates nothing.
  //
  // Required: touching counts as meeting, a segment through a vertex meets both of its edges, and
  // nothing corrects that count. Stored areas were cut by it; away from edges and vertex levels it
  // is the common inside test. An empty ring is inside wherever its box is.
  bool Overlap(const ZuPoint& point) const { return Overlap(&point); }
  bool Overlap(const ZuPoint* pPoint) const;

  // Area of the closed ring in X, Y, never negative; -1 below 3 points.
  //
  // Required: the argument is not read. The ring is always closed.
  double Area(bool bClosed) const;

  // Length of the edges in space, with the closing one when bClosed; -1 below 2 points. There is no
  // closing edge for 2 points nor where the last point repeats the first.
  double Length(bool bClosed) const;

  // Replaces the points by the rows that stand at the token in hand, in the columns of the mode;
  // returns 1. Two rows are the corners of a rectangle, numbered from 1.
  int Read(ZuReaderObject* pObject);
  // Required: writes nothing and returns the stream; polygons are read by the library and written
  // by their records.
  std::ostream& Write(std::ostream& os) const;
  // Writes the points in the columns of the mode, one a line, as Read takes them to the last bit.
  // Two points come back as a rectangle, and what is in no column as 0.
  std::ostream& Export(std::ostream& os) const;
  void DbgPrintf(const char* szTitle, bool bPoints) const;

 protected:
  void MakePolygon(const ZuPoint& p1, const ZuPoint& p2);

  ELPolygonMode m_eMode;
  ZuPoint m_ptMin;
  ZuPoint m_ptMax;
  ZuPointList m_points;
};
