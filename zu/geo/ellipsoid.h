// Ellipsoids of revolution on which positions stand.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "zu/geo/export.h"

struct ZuEllipsoid {
  std::string m_strName;            // "bessel1841", as it is found
  std::string m_strTitle;           // "Bessel 1841"
  double m_dA = 0.0;                // equatorial radius [m]
  double m_dInverseFlattening = 0;  // 1 / f; 0 for a sphere

  // Neither as small as a house nor so flat that a foot point near the surface is not unique:
  // a from 1e5 to 1e9 m, 1 / f at least 150 or 0.
  ZU_GEO_API bool IsValid() const;
};

// The ellipsoids by name, in the order of a list for users. Parameters: EPSG Geodetic Parameter
// Dataset; those that it defines by both radii have 1 / f = a / (a - b).
ZU_GEO_API const std::vector<ZuEllipsoid>& ZuEllipsoids();

// The ellipsoid of that name, case, blanks and hyphens apart ("WGS 84" is "wgs84"). Null for none.
ZU_GEO_API const ZuEllipsoid* ZuFindEllipsoid(std::string_view name);

// A name, or "a,1/f" in metres ("6378137,298.25"). False, *pEllipsoid untouched, for others.
ZU_GEO_API bool ZuParseEllipsoid(std::string_view text, ZuEllipsoid* pEllipsoid);
