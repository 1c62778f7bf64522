// zu plane of a cloud: all points with one weight, in the memory of the cloud.
#pragma once

#include "commands.h"
#include "plane_values.h"

namespace cli {

// The input is fitted as a cloud: a binary or PLY file, or text beyond 8 MB, whose points are too
// many to be tested one by one, unless an option goes by points.
bool IsPlaneCloud(const PlaneValues& values);

// Throws CommandError: (undetermined) there is no plane, (usage) an option that goes by points.
ExitCode RunPlaneCloud(const PlaneValues& values, Context& context);

}  // namespace cli
