// Positions from one system to another on the same ellipsoid.
//
//   geographic, transverse  --Convert-->  geocentric, local      and the other way round
//
// A change of the ellipsoid is a change of datum, which needs points known in both: ZuTrafo3d.
//
// The grid is that of Krueger's series in the third flattening to its sixth order (C. F. F. Karney,
// "Transverse Mercator with an accuracy of a few nanometers", Journal of Geodesy 85, 2011), foot
// points on the ellipsoid are found in closed form (H. Vermeille, "Direct transformation from
// geocentric coordinates to geodetic coordinates", Journal of Geodesy 76, 2002). There and back
// differs by less than 0.1 micrometre where the status is good.
#pragma once

#include <memory>

#include "zu/geo/ellipsoid.h"
#include "zu/geo/export.h"
#include "zu/geo/position_system.h"

enum eZuPositionStatus : int {
  eZuPositionOk = 0,
  eZuPositionNotFinite = 1,      // a coordinate is not finite
  eZuPositionOutside = 2,        // no place of the system that it is told in
  eZuPositionOutsideTarget = 3,  // the target system does not reach there
  eZuPositionNearCentre = 4,     // so near the centre of the earth that it has no foot point
  eZuPositionBadSystem = 5,      // system or ellipsoid is not valid, a zone not known
};

// "" for good, else what is wrong.
ZU_GEO_API const char* ZuPositionStatusText(eZuPositionStatus eStatus);

// A grid at a point.
struct ZuGridFigures {
  double m_dConvergence = 0.0;  // of grid north, clockwise from the meridian [rad]
  double m_dScale = 1.0;        // length in the grid over length on the ellipsoid [-]
};

// How far systems reach: latitudes to 90 and longitudes to 360 degrees; places from a / 64 to 100 a
// from the centre of the earth; grids to 30 degrees from their meridian; UTM from 80.5 degrees
// south to 84.5 north with eastings from 0 to 1000 km.
//
// Convert is const and keeps nothing: any number of threads.
class ZU_GEO_API ZuPositionConverter {
 public:
  ZuPositionConverter(const ZuEllipsoid& ellipsoid, const ZuPositionSystem& from,
                      const ZuPositionSystem& to);
  ~ZuPositionConverter();
  ZuPositionConverter(ZuPositionConverter&&) noexcept;
  ZuPositionConverter& operator=(ZuPositionConverter&&) noexcept;

  // eZuPositionBadSystem, which every Convert then gives, or good.
  eZuPositionStatus Status() const { return m_eStatus; }

  // Converts in place. Any status but good: x, y, z untouched. *pGrid, unless null, becomes the
  // figures of the target grid, of the source grid where the target is none, {0, 1} without grids.
  eZuPositionStatus Convert(double* x, double* y, double* z, ZuGridFigures* pGrid = nullptr) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> m_pImpl;
  eZuPositionStatus m_eStatus = eZuPositionBadSystem;
};

// The zone and half of UTM in which a position stands; `utm` is untouched unless the status is
// good.
ZU_GEO_API eZuPositionStatus ZuFindUtmZone(const ZuEllipsoid& ellipsoid,
                                           const ZuPositionSystem& from, double x, double y,
                                           double z, ZuPositionSystem* pUtm);
