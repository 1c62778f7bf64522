// The report of an adjustment: one HTML file with a verdict, parameters, points, residuals with
// ellipses, and the histogram of the standardised residuals. Commands fill the texts and figures;
// the page, the drawings and their thinning out are here.
#pragma once

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "html_table.h"

namespace cli {

// Residual vectors over a plan.
struct ReportView {
  struct Item {
    double x = 0.0, y = 0.0;    // place, in the unit of space
    double dx = 0.0, dy = 0.0;  // residual, in the same unit
    // Covariance of the place or of the residual, drawn as its 95 % ellipse; 0: none.
    double cxx = 0.0, cxy = 0.0, cyy = 0.0;
    bool bUsed = true;   // else set aside, drawn in another colour with its label
    bool bArrow = true;  // false: a point without a residual
    std::string strLabel;
  };
  // A line in space, such as the pyramid of a camera; its label stands at the first point where
  // there are few.
  struct Line {
    std::vector<std::pair<double, double>> points;
    std::string strLabel;
  };
  std::string strTitle, strAxisX, strAxisY;  // axes without the unit
  std::string strNote;                       // what arrows and ellipses are
  std::vector<Item> items;
  std::vector<Line> lines = {};
};

struct AdjustReport {
  struct Parameter {
    std::string strName, strValue, strSd, strUnit;
  };
  struct Table {
    std::string strTitle, strNote;
    std::vector<HtmlTable::Column> columns;
    std::vector<std::vector<std::string>> rows;  // beyond 300 left out, which is told
  };

  std::string strTitle;                                    // "Plane transformation"
  std::string strVerdict;                                  // one sentence
  std::string strUnit;                                     // of lengths, "m"
  std::vector<std::pair<std::string, std::string>> facts;  // "sigma0" and its text
  std::string strParameters;                               // note on the parameters, a formula
  std::vector<Parameter> parameters;
  std::vector<Table> tables;           // points, those set aside, others; in this order
  std::string strViews = "Residuals";  // heading of the views
  std::vector<ReportView> views;
  std::string strSections;                                  // HTML between views and histogram
  std::vector<double> w;                                    // standardised residuals
  double dLimit = std::numeric_limits<double>::infinity();  // of |w|
  std::string strTest;                                      // "w, a priori"
  std::vector<std::pair<std::string, std::string>> inputs;  // "source" and its file
};

std::string AdjustReportPage(const AdjustReport& report);

}  // namespace cli
