// zu geo: positions on the earth from one system to another; zu transform --from does the same.
#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "commands.h"
#include "geo_run.h"
#include "point_columns.h"
#include "reading.h"
#include "text_table.h"
#include "zu/geo/position_converter.h"

namespace cli {
namespace {

ZuPositionSystem GeoSystemOf(const char* szOption, const std::string& strText) {
  ZuPositionSystem system;
  std::string strRight;
  if (strText.empty()) {
    throw CommandError(kUsage, std::string(szOption) + " is needed as well: the system of the " +
                                   (szOption[2] == 'f' ? "points" : "result"));
  }
  if (!ZuParsePositionSystem(strText, &system, &strRight)) {
    throw CommandError(kUsage, std::string(szOption) + ": \"" + strText +
                                   "\" is no system; right would be\n" + strRight);
  }
  return system;
}

ZuEllipsoid GeoEllipsoidOf(const GeoValues& values) {
  const bool bStrip = values.strFrom.rfind("gk:", 0) == 0 || values.strTo.rfind("gk:", 0) == 0;
  std::string strNames;
  for (const ZuEllipsoid& known : ZuEllipsoids()) {
    strNames += (strNames.empty() ? "" : " ") + known.m_strName;
  }
  if (bStrip && values.strEllipsoid.empty()) {
    throw CommandError(kUsage,
                       "--ellipsoid: strips stand on several; tell one (bessel1841 in Germany) "
                       "of\n" +
                           strNames);
  }
  ZuEllipsoid ellipsoid = ZuEllipsoids().front();
  if (!values.strEllipsoid.empty() && !ZuParseEllipsoid(values.strEllipsoid, &ellipsoid)) {
    throw CommandError(kUsage, "--ellipsoid: \"" + values.strEllipsoid +
                                   "\" is none; right would be \"a,1/f\" in metres or one of\n" +
                                   strNames);
  }
  return ellipsoid;
}

// The accuracies of a point would have to turn and scale with it.
void CheckNoAccuracies(const std::string& strColumns) {
  if (strColumns.empty()) return;
  const ColumnTable columns = ParseColumns(strColumns);
  for (const eZuPointRWMask eColumn : {eZuPointRWDX, eZuPointRWDY, eZuPointRWDZ}) {
    if (!columns.HasEntry(eColumn)) continue;
    throw CommandError(kUsage,
                       "--columns: accuracies are not carried into another system; name these "
                       "columns \"skip\"");
  }
}

// Of three numbers of a system: decimals that show a tenth of a millimetre.
int GeoDecimals(const ZuPositionSystem& system, int iAxis) {
  if (system.m_eKind != eZuPositionGeographic || iAxis == 2) return 4;
  return system.m_eUnit == eZuAngleUnitRadian ? 11 : 9;
}

struct GeoPoint {
  const ZuPoint* pPoint;
  ZuGridFigures grid;
};

// A point that a system does not reach, and why.
struct GeoRefusal {
  std::string strLabel;
  const char* szWhy;
};

// Converts in place; what a system does not reach leaves the list.
std::vector<GeoRefusal> ConvertPoints(const ZuPositionConverter& converter, ZuPointList* pPoints,
                                      std::vector<GeoPoint>* pResult) {
  std::vector<GeoRefusal> refusals;
  ZuPointList good;
  for (const ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next()) {
    double x = p->m_dX, y = p->m_dY, z = p->m_dZ;
    ZuGridFigures grid;
    const eZuPositionStatus eStatus = converter.Convert(&x, &y, &z, &grid);
    if (eStatus != eZuPositionOk) {
      refusals.push_back({PointLabel(*p), ZuPositionStatusText(eStatus)});
      continue;
    }
    ZuPoint* pNew = good.Add(*p);
    pNew->m_dX = x;
    pNew->m_dY = y;
    pNew->m_dZ = z;
    pResult->push_back({pNew, grid});
  }
  pPoints->Destroy();
  good.MoveTo(pPoints);
  return refusals;
}

void TellRefusals(const std::vector<GeoRefusal>& refusals, const std::string& strName,
                  const Context& context) {
  const size_t uTold = std::min(refusals.size(), kWarningsTold);
  for (size_t i = 0; i < uTold; ++i) {
    context.WarnAlways(strName + ": point " + refusals[i].strLabel +
                       " is left out: " + refusals[i].szWhy);
  }
  if (refusals.size() > uTold) {
    context.WarnAlways(strName + ": " + Counted(refusals.size() - uTold, "more point") +
                       " left out");
  }
}

void WriteGeoTable(const std::vector<GeoPoint>& points, const ZuPositionSystem& to, bool bGrid,
                   std::ostream& text) {
  const bool bAngles = to.m_eKind == eZuPositionGeographic;
  const bool bMap = to.m_eKind == eZuPositionTransverse;
  TextTable table;
  table.AddColumn("point");
  table.AddColumn(bAngles ? "latitude" : bMap ? "easting" : "x");
  table.AddColumn(bAngles ? "longitude" : bMap ? "northing" : "y");
  table.AddColumn(bAngles || bMap ? "height" : "z");
  if (bGrid) table.AddColumn("convergence [gon]");
  if (bGrid) table.AddColumn("scale");
  for (const GeoPoint& point : points) {
    const ZuPoint& p = *point.pPoint;
    std::vector<std::string> row = {PointLabel(p), Fixed(p.m_dX, GeoDecimals(to, 0)),
                                    Fixed(p.m_dY, GeoDecimals(to, 1)),
                                    Fixed(p.m_dZ, GeoDecimals(to, 2))};
    if (bGrid) {
      row.push_back(
          Fixed(ConvertAngle(point.grid.m_dConvergence, eZuAngleUnitRadian, eZuAngleUnitGon), 6));
      row.push_back(Fixed(point.grid.m_dScale, 9));
    }
    table.AddRow(std::move(row));
  }
  table.Write(text);
}

Json GeoJson(const std::vector<GeoPoint>& points, bool bGrid) {
  Json rows = Json::array();
  for (const GeoPoint& point : points) {
    const ZuPoint& p = *point.pPoint;
    Json row{{"id", p.GetId()}};
    if (!p.GetName().empty()) row["name"] = p.GetName().chars();
    row["x"] = p.m_dX;
    row["y"] = p.m_dY;
    row["z"] = p.m_dZ;
    row["convergence_rad"] = bGrid ? Json(point.grid.m_dConvergence) : Json();
    row["scale"] = bGrid ? Json(point.grid.m_dScale) : Json();
    rows.push_back(std::move(row));
  }
  return rows;
}

struct Values {
  GeoValues geo;
  std::string strPoints, strOutput;
  PointFormat format;
};

}  // namespace

void AddGeoOptions(Options& options, GeoValues* pValues) {
  options.Option("--from", "SYSTEM", &pValues->strFrom,
                 "system of the points: geographic[:deg|gon|rad], geocentric, utm:ZONE[n|s], "
                 "gk:STRIP, tm:LON[,SCALE[,EASTING[,NORTHING[,LAT]]]], local:LAT,LON,HEIGHT");
  options.Option("--to", "SYSTEM", &pValues->strTo,
                 "system of the result; utm alone takes the zone of the first point");
  options.Option("--ellipsoid", "NAME", &pValues->strEllipsoid,
                 "ellipsoid of both systems by name, or a,1/f; wgs84");
}

ExitCode RunGeo(const GeoValues& values, const std::string& strPoints, const PointFormat& format,
                const std::string& strOutput, Context& context) {
  const ZuPositionSystem from = GeoSystemOf("--from", values.strFrom);
  ZuPositionSystem to = GeoSystemOf("--to", values.strTo);
  const ZuEllipsoid ellipsoid = GeoEllipsoidOf(values);
  if (from.m_iZone == ZuPositionSystem::kZoneToFind) {
    throw CommandError(kUsage, "--from: coordinates do not tell their zone; utm:32 would be right");
  }
  CheckNoAccuracies(format.strToldColumns);
  ZuPointList points;
  ReadPoints(strPoints, format, context, &points);
  CheckNoAccuracies(format.strColumns);
  for (const ZuPoint* p = points.First();
       p != nullptr && to.m_iZone == ZuPositionSystem::kZoneToFind; p = p->Next()) {
    ZuFindUtmZone(ellipsoid, from, p->m_dX, p->m_dY, p->m_dZ, &to);
  }
  const std::string strName = NameInMessages(strPoints);
  if (to.m_iZone == ZuPositionSystem::kZoneToFind) {
    throw CommandError(
        kUndetermined,
        strName + ": no point is in a zone of UTM; --to geocentric reaches the poles, too");
  }
  const ZuPositionConverter converter(ellipsoid, from, to);
  std::vector<GeoPoint> result;
  const std::vector<GeoRefusal> refusals = ConvertPoints(converter, &points, &result);
  if (result.empty()) {
    throw CommandError(kUndetermined, strName + ": no point can be told in " + values.strTo + "; " +
                                          refusals.front().strLabel + ": " +
                                          refusals.front().szWhy);
  }
  TellRefusals(refusals, strName, context);

  const bool bGrid = from.m_eKind == eZuPositionTransverse || to.m_eKind == eZuPositionTransverse;
  context.Text() << Counted(points.Count(), "point") << " from " << ZuPositionSystemText(from)
                 << " to " << ZuPositionSystemText(to) << " on " << ellipsoid.m_strTitle << "\n\n";
  WriteGeoTable(result, to, bGrid, context.Text());
  Json& root = context.Root();
  root["from"] = ZuPositionSystemText(from);
  root["to"] = ZuPositionSystemText(to);
  root["ellipsoid"] = {{"name", ellipsoid.m_strName},
                       {"a", ellipsoid.m_dA},
                       {"inverse_flattening", ellipsoid.m_dInverseFlattening}};
  root["refused"] = refusals.size();
  if (context.WantsRoot()) root["points"] = GeoJson(result, bGrid);
  if (!strOutput.empty()) {
    OutputFile& output = context.NewOutput(strOutput);
    // Degrees need other decimals than metres: all digits, unless decimals are told.
    if (format.iDecimals < 0) {
      WritePoints(&points, format.strColumns, &output);
    } else {
      WritePoints(&points, format, &output);
    }
  }
  return !refusals.empty() ? kNotAcceptable : kGood;
}

Runner DefineGeo(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("POINTS", &pValues->strPoints,
                     "coordinate file; x, y, z are latitude, longitude, height or easting, "
                     "northing, height where the system has these");
  AddGeoOptions(options, &pValues->geo);
  AddPointOptions(options, &pValues->format);
  options.Output("-o,--output", "OUT", &pValues->strOutput, "coordinate file of the result");
  return [pValues](Context& context) {
    return RunGeo(pValues->geo, pValues->strPoints, pValues->format, pValues->strOutput, context);
  };
}

}  // namespace cli
