// Records of orientations (zu/photo/bundle_aob.h) on the command line.
#pragma once

#include <string>

#include "context.h"
#include "zu/adjust/orientation_project.h"
#include "zu/photo/bundle_aob.h"
#include "zu/project/project.h"

namespace cli {

constexpr char kOrientationsHelp[] =
    "file of the orientations with standard deviations, a block { id X0 Y0 Z0 a b c and six "
    "deviations } a photo; zu orient --from reads it";

// Of all oriented photos, with the deviations that the project's covariances tell.
void WriteOrientations(const ZuProject& project, const std::string& strPath, Context& context);
// Of the photos that were oriented, with their own deviations.
void WriteOrientations(const ZuProject& project, const ZuProjectOrientation& orientation,
                       const std::string& strPath, Context& context);

// Orients the photos that a file names. Throws CommandError (bad input) for a faulty file, or one
// of which no photo is in the project; warns of photos that are not.
void ReadOrientations(const std::string& strPath, ZuProject* pProject, Context& context);

}  // namespace cli
