// zu project update: new coordinates for the object points of a project.
#include <cmath>
#include <memory>
#include <utility>

#include "commands.h"
#include "point_input.h"
#include "project_files.h"
#include "text_table.h"
#include "zu/points/update_points.h"

namespace cli {
namespace {

struct Values {
  std::string strProject, strPoints, strOut, strMode = "replace";
  PointFormat format;
  ZuUpdateOptions update;
  bool bKnownOnly = false;
};

constexpr eZuUpdateStatus kStatuses[] = {eZuUpdateChanged, eZuUpdateSame, eZuUpdateKept,
                                         eZuUpdateAdded, eZuUpdateUnknown};

void WriteMoved(const ZuUpdateResult& result, Context& context) {
  double dLargest = 0.0;
  for (const ZuUpdatedPoint& p : result.m_Points) dLargest = std::max(dLargest, p.m_dDistance);
  const int iDecimals = DecimalsFor(dLargest);
  TextTable table;
  for (const char* szTitle : {"point", "dx", "dy", "dz", "distance"}) table.AddColumn(szTitle);
  table.AddColumn("", TextTable::eLeft);
  for (const ZuUpdatedPoint& p : result.m_Points) {
    if (!p.m_bMoved) continue;
    std::vector<std::string> row = {PointLabel(*p.m_pNew)};
    for (double d : p.m_adDifference) row.push_back(Fixed(d, iDecimals));
    row.push_back(Fixed(p.m_dDistance, iDecimals));
    row.push_back(GetZuUpdateText(p.m_eStatus));
    table.AddRow(row);
  }
  if (result.Moved() == 0) return;
  context.Text() << result.Moved() << " farther from the former place than the tolerance\n\n";
  table.Write(context.Text());
}

Json PointsJson(const ZuUpdateResult& result) {
  Json points = Json::array();
  for (const ZuUpdatedPoint& p : result.m_Points) {
    Json json = {{"point", JsonLabel(*p.m_pNew)}, {"status_text", GetZuUpdateText(p.m_eStatus)}};
    if (p.m_pPoint != nullptr && p.m_eStatus != eZuUpdateAdded) {
      json["dx"] = p.m_adDifference[0];
      json["dy"] = p.m_adDifference[1];
      json["dz"] = p.m_adDifference[2];
      json["distance"] = p.m_dDistance;
      json["moved"] = p.m_bMoved;
    }
    points.push_back(std::move(json));
  }
  return points;
}

void WarnOfPoints(const ZuUpdateResult& result, const Context& context) {
  int iEqual = 0;
  for (const ZuUpdatedPoint& p : result.m_Points) {
    iEqual += p.m_bEqualWeights ? 1 : 0;
    if (p.m_eStatus != eZuUpdateNotFinite && p.m_eStatus != eZuUpdateDouble) continue;
    context.WarnAlways("point " + PointLabel(*p.m_pNew) + " stays as it is: " +
                       (p.m_eStatus == eZuUpdateDouble ? "its coordinate is told twice"
                                                       : "its coordinate is not finite"));
  }
  if (iEqual == 0) return;
  context.Warn(Counted(iEqual, "mean") +
               " with equal weights: --sigma-old and --sigma-new, or columns dx,dy,dz, tell the "
               "accuracies");
}

ExitCode RunUpdate(Values values, Context& context) {
  CheckProjectEnding(values.strOut);
  ZuProject project;
  ZuPointList news;
  ReadProjectFile(values.strProject, context, &project);
  ReadPoints(values.strPoints, values.format, context, &news);
  values.update.m_bAdd = !values.bKnownOnly;
  values.update.m_eMode = values.strMode == "mean"   ? eZuUpdateMean
                          : values.strMode == "keep" ? eZuUpdateKeep
                                                     : eZuUpdateReplace;
  const ZuUpdateResult result = ZuUpdatePoints(&project.ObjectPoints(), news, values.update);
  WarnOfPoints(result, context);
  for (const eZuUpdateStatus eStatus : kStatuses) {
    const int iCount = result.Count(eStatus);
    context.Root()[GetZuUpdateText(eStatus)] = iCount;
    if (iCount > 0) {
      context.Text() << Counted(iCount, "point") << ' ' << GetZuUpdateText(eStatus) << '\n';
    }
  }
  context.Root()["moved"] = result.Moved();
  context.Root()["points"] = PointsJson(result);
  WriteMoved(result, context);
  WriteProjectFile(values.strOut, context, project);
  return result.Moved() == 0 ? kGood : kNotAcceptable;
}

}  // namespace

Runner DefineProjectUpdate(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("PROJECT", &pValues->strProject, "project file, or its JSON");
  options.Positional("POINTS", &pValues->strPoints, "coordinate file of the new coordinates");
  options.Choice("--mode", {"replace", "mean", "keep"}, &pValues->strMode,
                 "what becomes of a point of the project: the new coordinate, the mean by "
                 "accuracies, the former one");
  options.Option("--tolerance", "T", &pValues->update.m_dTolerance,
                 "tell points farther than this from their former place; exit code 1 then");
  options.AtLeast(0.0);
  options.Option("--sigma-old", "S", &pValues->update.m_dSigmaOld,
                 "standard deviation of the project's coordinates");
  options.AtLeast(0.0);
  options.Option("--sigma-new", "S", &pValues->update.m_dSigmaNew,
                 "of the new ones, where no column tells it");
  options.AtLeast(0.0);
  options.Flag("--known-only", &pValues->bKnownOnly, "add no points that the project lacks");
  options.Output("-o,--output", "FILE", &pValues->strOut, "the result as .prj or .json");
  options.Required();
  AddPointOptions(options, &pValues->format);
  return [pValues](Context& context) { return RunUpdate(*pValues, context); };
}

}  // namespace cli
