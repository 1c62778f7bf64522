// Systems in which a position on the earth is told by three numbers:
//
//   kind         x                 y                  z
//   geographic   latitude          longitude          height above the ellipsoid [m]
//   geocentric   X                 Y                  Z, towards the north pole [m]
//   transverse   easting [m]       northing [m]       height above the ellipsoid [m]
//   local        east [m]          north [m]          up, along the normal of the origin [m]
//
// Longitudes count from Greenwich, positive to the east. A transverse Mercator grid is UTM, a strip
// after Gauss and Krueger, or any other. The ellipsoid is told beside the system.
#pragma once

#include <string>
#include <string_view>

#include "zu/geo/export.h"
#include "zu/numerics/angle.h"

enum eZuPositionKind : int {
  eZuPositionGeographic = 1,
  eZuPositionGeocentric = 2,
  eZuPositionTransverse = 3,
  eZuPositionLocal = 4,
};

struct ZU_GEO_API ZuPositionSystem {
  static constexpr int kZoneToFind = -1;

  eZuPositionKind m_eKind = eZuPositionGeographic;
  eZuAngleUnit m_eUnit = eZuAngleUnitDegree;  // of latitude and longitude of geographic positions

  // Of a transverse grid. The degrees are what definitions are told in.
  double m_dMeridian = 0.0;  // central meridian [degrees]
  double m_dParallel = 0.0;  // latitude of northing 0 less the false one [degrees]
  double m_dScale = 1.0;     // on the central meridian [-]
  double m_dEasting = 0.0;   // false easting [m]
  double m_dNorthing = 0.0;  // false northing [m]
  int m_iZone = 0;           // of UTM: 1 to 60 or kZoneToFind; 0 for other grids
  bool m_bSouth = false;     // the southern half of a zone of UTM

  // Origin of a local system.
  double m_dOriginLatitude = 0.0;   // [degrees]
  double m_dOriginLongitude = 0.0;  // [degrees]
  double m_dOriginHeight = 0.0;     // above the ellipsoid [m]

  static ZuPositionSystem Geographic(eZuAngleUnit eUnit = eZuAngleUnitDegree);
  static ZuPositionSystem Geocentric();
  // Zone 1 to 60: meridian 6 zone - 183, scale 0.9996, easting 500 km, northing 10000 km in the
  // south (NGA, The Universal Grids, 2014).
  static ZuPositionSystem Utm(int iZone, bool bSouth);
  // UTM of a zone that ZuFindUtmZone finds.
  static ZuPositionSystem Utm();
  // A strip of 3 degrees: meridian 3 strip, scale 1, easting 500 km with the strip before it.
  static ZuPositionSystem GaussKrueger(int iStrip);
  static ZuPositionSystem Local(double dLatitude, double dLongitude, double dHeight);

  // Finite, latitudes to 90 and longitudes to 360 degrees, a scale from 0.5 to 2, shifts below
  // 1e9 m, an origin from 1000 km below to 1000 km above the ellipsoid, and a zone that is known.
  bool IsValid() const;
};

// Reads a system as a user tells it; angles of definitions are in degrees:
//
//   geographic[:deg|gon|rad]   geocentric
//   utm:32  utm:32s  utm       zone and half, north without one; to be found without zone
//   gk:3                       strip after Gauss and Krueger, 0 to 119
//   tm:LON[,SCALE[,EASTING[,NORTHING[,LAT]]]]
//   local:LAT,LON,HEIGHT
//
// False, *pSystem untouched, for anything else; *pstrRight, unless null, is what would be right.
ZU_GEO_API bool ZuParsePositionSystem(std::string_view text, ZuPositionSystem* pSystem,
                                      std::string* pstrRight = nullptr);

// The text that is read as the same system.
ZU_GEO_API std::string ZuPositionSystemText(const ZuPositionSystem& system);

// The zone of UTM of a place [degrees], with the wider zones of Norway and Svalbard. 0 where there
// is no UTM: below 80 degrees south, from 84 degrees north, not finite.
ZU_GEO_API int ZuUtmZone(double dLatitude, double dLongitude);
