// Points over a plan, with residuals, ellipses and lines of space.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "drawing.h"

namespace cli {

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

// The drawing: residuals and 95 % ellipses exaggerated alike, each with its scale bar. strUnit is
// that of space and residuals.
Drawing ViewDrawing(const ReportView& view, const std::string& strUnit);

}  // namespace cli
