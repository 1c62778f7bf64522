// Lengths and angles with their units, as people write them: "12.5 mm", "100 gon", "6 ft".
//
//   double dMetres = 0.0;
//   if (!ZuParseMeasure("12.5 mm", eZuQuantityLength, &dMetres)) ...  // 0.0125
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "zu/export.h"

enum eZuQuantity : int { eZuQuantityLength, eZuQuantityAngle };

struct ZuMeasureUnit {
  const char* m_szText;  // "mm"
  eZuQuantity m_eQuantity;
  double m_dMany, m_dAre;  // so many units are so many metres or radians
};

// Of lengths um, mm, cm, dm, m, km, in (0.0254 m), ft (0.3048 m); of angles rad, mrad, deg, arcmin,
// arcsec, gon, mgon, mil (6400 a circle).
ZU_API const std::vector<ZuMeasureUnit>& ZuMeasureUnits();
// By its text, exactly; null where there is none.
ZU_API const ZuMeasureUnit* ZuFindMeasureUnit(std::string_view text);

// To and from metres and radians; units of one kind with each other by way of these.
ZU_API double ZuFromUnit(double dValue, const ZuMeasureUnit& unit);
ZU_API double ZuToUnit(double dBase, const ZuMeasureUnit& unit);

// Reads a finite number and its unit, blanks around both or none, as metres or radians. A number
// without unit has that of szDefault; null: none, and the number is refused. False, *pdBase
// untouched, where the text is anything else or a unit of the other quantity.
ZU_API bool ZuParseMeasure(std::string_view text, eZuQuantity eQuantity, double* pdBase,
                           const char* szDefault = nullptr);
// "12.5 mm", in the shortest form that reads back to the same double in that unit.
ZU_API std::string ZuMeasureText(double dBase, const ZuMeasureUnit& unit);
