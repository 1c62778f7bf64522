// A plan of points with names, lines and polygons, for CAD programs (DXF) and browsers (SVG).
//
// Coordinates are written with the digits that read back to the same double, in the unit of the
// caller. The same drawing gives the same bytes, in any locale.
#pragma once

#include <array>
#include <ostream>
#include <string>
#include <vector>

#include "zu/exchange/export.h"

struct ZuPlanPoint {
  std::array<double, 3> adPosition = {};
  std::string strName;  // UTF-8; empty: a point alone
};

struct ZuPlanLine {
  std::vector<std::array<double, 3>> corners;  // two or more
  bool bClosed = false;                        // the last corner is joined to the first
};

struct ZuPlanDrawing {
  std::vector<ZuPlanPoint> points;
  std::vector<ZuPlanLine> lines;
  double dTextHeight = 0.0;  // in the unit of the coordinates; 0: a hundredth of the extent
};

// The coordinates that lie to the right and up in a view, and the sense in which one looks.
enum class ZuPlanView : int { Top, Front, Side };  // x y; x z; y z

// Writes DXF of AutoCAD's release 12, as text: POINT on layer POINTS, TEXT beside it on NAMES, LINE
// and POLYLINE of space on LINES, with a 3DFACE on FACES for closed lines of three and four
// corners. Names beyond the code page 1252 are written as \U+XXXX. Points and lines with a
// coordinate that is not finite are left out; the result is how many. The stream's state tells of
// lost bytes.
ZU_EXCHANGE_API std::size_t ZuWriteDxf(std::ostream& stream, const ZuPlanDrawing& drawing);

// Writes the view as SVG whose unit is that of the coordinates, y up becoming down.
ZU_EXCHANGE_API std::size_t ZuWriteSvg(std::ostream& stream, const ZuPlanDrawing& drawing,
                                       ZuPlanView view = ZuPlanView::Top);
