// The options of zu plane.
#pragma once

#include <string>

#include "adjust_options.h"
#include "point_choice.h"
#include "point_input.h"

namespace cli {

struct PlaneValues {
  std::string strPoints;
  std::string strLog;
  std::string strOutput;
  PointFormat format;
  AdjustValues adjust;
  PointChoice choice;
  bool bAxis = false, bForce = false, bAll = false;
};

}  // namespace cli
