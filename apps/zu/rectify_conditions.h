// A rectification from conditions between measured points: adjusted, with residuals.
#pragma once

#include <string>
#include <vector>

#include "commands.h"
#include "zu/photo/zusp_conditions.h"
#include "zu/points/point_list.h"
#include "zu/rectify/zusp_trafo.h"

namespace cli {

struct RectifyConditions {
  std::vector<ZuZuspConditions::Result> results;
  std::vector<ZuZuspConditions::Move> moves;
  struct Point {
    unsigned uId;
    double x, y;  // in the plane
  };
  std::vector<Point> points;
  double dSigma0 = 0.0, dLargest = 0.0;  // [mm]
  int iRedundancy = 0;
  bool bScaled = false;
};

// The measured points (pixels) as those of the record, which gets the photo's camera.
void DefineByMeasured(const ZuPhoto& photo, const ZuPointList& measured, ZuZuspTrafo* pTrafo);

// Sets the matrices of the record. Throws CommandError: bad input, undetermined.
RectifyConditions FitConditionsOf(const std::string& strFile, const std::string& strWhere,
                                  ZuZuspTrafo* pTrafo);

void WriteConditions(const RectifyConditions& conditions, std::ostream& text);
Json ConditionsJson(const RectifyConditions& conditions);

}  // namespace cli
