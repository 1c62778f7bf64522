// zu draw: points with names, lines and polygons as a plan for CAD programs and browsers.
#include <algorithm>
#include <map>
#include <memory>

#include "commands.h"
#include "construct_input.h"
#include "exit_code.h"
#include "input_file.h"
#include "point_input.h"
#include "text_table.h"
#include "zu/exchange/plan_drawing.h"
#include "zu/foundation/file_name.h"
#include "zu/points/name_line.h"

namespace cli {
namespace {

struct DrawValues {
  std::string strPoints, strOut, strLines, strView = "xy";
  double dTextHeight = 0.0;
  PointFormat format;
};

bool IsDxf(const std::string& strPath) {
  const std::string strEnding = ZuGetFileEnding(strPath);
  if (strEnding == ".dxf" || strEnding == ".svg") return strEnding == ".dxf";
  throw CommandError(kUsage, "OUT: \"" + strPath +
                                 "\" does not end in .dxf or .svg, which tells "
                                 "the format");
}

using PlacesByName = std::map<std::string, std::array<double, 3>, std::less<>>;

// A line of names a line; one that ends at its first name is closed.
std::vector<ZuPlanLine> ReadLines(const DrawValues& values, const PlacesByName& places) {
  std::vector<ZuPlanLine> lines;
  const std::string strName = NameInMessages(values.strLines);
  int iLine = 0;
  for (const std::string& strLine : PartsOf(ReadWholeFile(values.strLines), '\n')) {
    const std::string strPlace = strName + ":" + std::to_string(++iLine);
    std::vector<std::string> names;
    if (!ZuParseNameLine(strLine, &names)) {
      throw CommandError(kBadInput,
                         strPlace + ": a quote is not closed; \"north corner\" would be right");
    }
    if (names.empty()) continue;
    if (names.size() == 1) {
      throw CommandError(kBadInput, strPlace + ": one point; two or more would be right");
    }
    ZuPlanLine line;
    line.bClosed = names.size() > 3 && names.front() == names.back();
    if (line.bClosed) names.pop_back();
    for (const std::string& strPoint : names) {
      const auto found = places.find(strPoint);
      if (found == places.end()) {
        throw CommandError(kBadInput, strPlace + ": no point \"" + strPoint + "\" in " +
                                          NameInMessages(values.strPoints));
      }
      line.corners.push_back(found->second);
    }
    lines.push_back(std::move(line));
  }
  return lines;
}

ExitCode RunDraw(const DrawValues& values, Context& context) {
  const bool bDxf = IsDxf(values.strOut);
  ZuPointList points;
  ReadPointsOrRows(values.strPoints, values.format, context, &points);
  ZuPlanDrawing drawing;
  drawing.dTextHeight = values.dTextHeight;
  PlacesByName places;
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    drawing.points.push_back({{p->m_dX, p->m_dY, p->m_dZ}, PointLabel(*p)});
    places.emplace(PointLabel(*p), drawing.points.back().adPosition);
  }
  if (!values.strLines.empty()) drawing.lines = ReadLines(values, places);
  std::ostream& stream = context.NewOutput(values.strOut).Stream();
  const ZuPlanView view = values.strView == "xz"   ? ZuPlanView::Front
                          : values.strView == "yz" ? ZuPlanView::Side
                                                   : ZuPlanView::Top;
  const std::size_t uLeftOut =
      bDxf ? ZuWriteDxf(stream, drawing) : ZuWriteSvg(stream, drawing, view);
  if (uLeftOut > 0) {
    context.WarnAlways(values.strOut +
                       ": points and lines with coordinates that are not finite, "
                       "left out: " +
                       std::to_string(uLeftOut));
  }
  context.Root()["points"] = drawing.points.size();
  context.Root()["lines"] = drawing.lines.size();
  context.Text() << Counted(static_cast<long long>(drawing.points.size()), "point") << ", "
                 << Counted(static_cast<long long>(drawing.lines.size()), "line") << '\n';
  return kGood;
}

}  // namespace

Runner DefineDraw(Options& options) {
  auto pValues = std::make_shared<DrawValues>();
  options.Positional("POINTS", &pValues->strPoints, "coordinate file");
  options.PositionalOutput("OUT", &pValues->strOut, "drawing: .dxf (release 12) or .svg");
  options.Option("--lines", "FILE", &pValues->strLines,
                 "lines of point names; one that ends at its first point is closed");
  options.Choice("--view", {"xy", "xz", "yz"}, &pValues->strView,
                 "coordinates to the right and up in SVG; DXF has all three");
  options.Option("--text-height", "H", &pValues->dTextHeight,
                 "height of names (default: a hundredth of the extent)");
  options.Above(0);
  AddPointOptions(options, &pValues->format);
  return [pValues](Context& context) { return RunDraw(*pValues, context); };
}

}  // namespace cli
