// A rectification from control points: adjusted, with residuals and tests.
#pragma once

#include "commands.h"
#include "point_choice.h"
#include "zu/adjust/trafo2d_fit.h"
#include "zu/points/point_list.h"
#include "zu/rectify/zusp_trafo.h"

namespace cli {

struct RectifyControl {
  ZuTrafo2dFit fit;
  std::vector<ZuTrafo2dPair> pairs;  // corrected image points [mm] and points in the plane
  std::string strChecks;             // the table of the check points
  Json checks = Json::object();      // keys without and check_points
  ExitCode eCode = kGood;
};

// Fits the rectification to control points that were measured, by id: the plane through the points,
// the image points without the photo's distortion, the projective transformation by least squares.
// Sets matrices, points and camera of *pTrafo. measured: pixels as the photo's transformations take
// them. Throws CommandError (undetermined), with strWhere in front.
RectifyControl FitRectification(const ZuPhoto& photo, const ZuPointList& measured,
                                const ZuPointList& control, const std::string& strColumns,
                                const ZuTrafo2dOptions& options, const std::string& strWhere,
                                ZuZuspTrafo* pTrafo);

// Check points in the plane, the hint at a point that stands out, and --tolerance.
void CheckControl(const ZuPhoto& photo, const ZuPointList& measured, const ZuPointList& checks,
                  const PointChoice& choice, const PointRoles& roles, const ZuZuspTrafo& trafo,
                  RectifyControl* pControl, Context& context);

void WriteControl(const RectifyControl& control, std::ostream& text);
Json ControlJson(const RectifyControl& control);

}  // namespace cli
