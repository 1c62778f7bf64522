// The run of zu measure: what the library measured, or why nothing could be.
#pragma once

#include "context.h"
#include "zu/project/plane_measurement.h"
#include "zu/project/project.h"

namespace cli {

// Fits the plane to planePoints and meets every measurement of every photo with it. Throws
// CommandError (undetermined) where no plane fits, or nothing is met. bFlip: y of the pixels is
// turned. bLibrary: corrected by ZuCamera::Adjust, otherwise exactly. bQuiet: no progress line.
ZuPlaneMeasurement MeasureProject(ZuProject& project, ZuPointList& planePoints,
                                  const ZuPointList& check, bool bFlip, bool bLibrary, bool bQuiet);

// What was left out, with the reasons, on standard error.
void WarnOf(const ZuPlaneMeasurement& result, const Context& context);

}  // namespace cli
