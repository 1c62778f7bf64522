// --report and --plot of every command that computes: a page and its main picture alone, made of
// the same result object that --json prints.
//
// A command may add what the object does not hold: the places of points, a figure, or a whole
// report of its own. Without any of it the page shows the object as it is.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "adjust_report.h"
#include "drawing.h"
#include "json_text.h"

class ZuPointList;
class ZuProject;

namespace cli {

class Context;
class Options;

// What a command tells beside its result object.
struct CommandReport {
  struct Camera {
    std::array<double, 3> at, view;  // view: a unit vector
    std::string strLabel;
  };

  std::optional<AdjustReport> report;                // in place of the page of the object
  std::string strPage;                               // a whole HTML page, before all others
  std::vector<Drawing> drawings;                     // the first of them is the main picture
  std::map<unsigned, std::array<double, 3>> places;  // of points without coordinates, by id

  bool bAllPlaces = false;      // draw those that the object does not name
  std::vector<Camera> cameras;  // drawn beside the points

  void AddPlaces(const ZuPointList& points);
  // The oriented photos of a project.
  void AddCameras(const ZuProject& project);
};

struct ReportFiles {
  std::string strReport, strPlot;

  bool IsAsked() const { return !strReport.empty() || !strPlot.empty(); }
};

// Whether the command takes --report and --plot: those that compute, not those that convert, sort
// or show what files hold.
bool HasReport(const std::string& strCommand);

// Declares --report and --plot.
void AddReportOptions(Options& options, ReportFiles* pFiles);
// Throws CommandError (usage) for an ending that is none of theirs.
void CheckReportEndings(const ReportFiles& files);

// Makes the files of a finished command. `result` is what --json prints, strSummary the command's
// line of help. Throws CommandError: (usage) --plot where the result has no picture, (cannot
// write).
void WriteReports(const ReportFiles& files, const Json& result, const std::string& strSummary,
                  Context& context);

}  // namespace cli
