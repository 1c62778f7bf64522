// The run of zu measure: what the library measured, or why nothing could be.
#pragma once

#include <optional>

#include "context.h"
#include "options.h"
#include "point_input.h"
#include "zu/adjust/fit_primitives.h"
#include "zu/project/plane_measurement.h"
#include "zu/project/project.h"

namespace cli {

// How the plane is fitted to its points.
struct MeasurePlane {
  std::string strPoints;
  PointFormat format;
  std::string strColumns;  // of its file alone
  double dSigma = 0.0;     // of a coordinate [object units]; 0: not told
  bool bAxis = false;      // by ZuCalcPlane
};

// Declares --plane, --plane-columns, --plane-sigma and --axis.
void AddPlaneOptions(Options& options, MeasurePlane* pPlane);

// Fits the plane of `pResult` to all points. The result tells the accuracy of the plane: none where
// the points tell nothing of it, or the plane is ZuCalcPlane's. Throws CommandError (undetermined)
// where no plane fits, (bad input) for an accuracy below 0.
std::optional<ZuPlaneFit> FitPlane(const MeasurePlane& values, ZuPointList& points,
                                   ZuPlaneMeasurement* pResult);

// Meets every measurement of every photo with the plane of `pResult`. Throws CommandError
// (undetermined) where nothing is met. bFlip: y of the pixels is turned. bLibrary: corrected by
// ZuCamera::Adjust, otherwise exactly. bQuiet: no progress line.
void MeasureProject(ZuProject& project, const ZuPointList& check, bool bFlip, bool bLibrary,
                    bool bQuiet, ZuPlaneMeasurement* pResult);

// What was left out, with the reasons, on standard error.
void WarnOf(const ZuPlaneMeasurement& result, const Context& context);

}  // namespace cli
