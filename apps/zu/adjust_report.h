// The report of an adjustment: one HTML file with a verdict, parameters, points, residuals with
// ellipses, and the histogram of the standardised residuals. Commands fill the texts and figures;
// the page, the drawings and their thinning out are here.
#pragma once

#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "drawing.h"
#include "html_table.h"
#include "view_figure.h"

namespace cli {

struct AdjustReport {
  struct Parameter {
    std::string strName, strValue, strSd, strUnit;
  };
  struct Table {
    std::string strTitle, strNote;
    std::vector<HtmlTable::Column> columns;
    std::vector<std::vector<std::string>> rows;  // beyond 300 left out, which is told
    size_t uMore = 0;                            // rows that are not given
  };

  std::string strTitle;    // "Plane transformation"
  std::string strVerdict;  // one sentence
  std::vector<std::string> warnings;
  std::string strUnit;                                     // of lengths, "m"
  std::vector<std::pair<std::string, std::string>> facts;  // "sigma0" and its text
  std::string strParameters;                               // note on the parameters, a formula
  std::vector<Parameter> parameters;
  std::vector<Table> tables;           // points, those set aside, others; in this order
  std::string strViews = "Residuals";  // heading of the views
  std::vector<ReportView> views;
  std::vector<Drawing> drawings;                            // further figures, behind the views
  std::string strSections;                                  // HTML between views and histogram
  std::vector<double> w;                                    // standardised residuals
  double dLimit = std::numeric_limits<double>::infinity();  // of |w|
  std::string strTest;                                      // "w, a priori"
  std::vector<std::pair<std::string, std::string>> inputs;  // "source" and its file
};

std::string AdjustReportPage(const AdjustReport& report);
// The main picture: the first view, or the first of the drawings; none where there is neither.
std::optional<Drawing> MainPicture(const AdjustReport& report);

}  // namespace cli
