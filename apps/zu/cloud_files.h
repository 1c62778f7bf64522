// Cloud files on the command line: told apart by content on reading and by ending on writing.
#pragma once

#include <string>

#include "context.h"
#include "zu/cloud/point_cloud_container.h"

namespace cli {

// Adds the clouds of a binary, PTS, PLY or coordinate file; clouds without a name are named after
// the file. Throws CommandError (bad input): no such file, no cloud in it, a binary file that ends
// early.
//
// A text of lines with four fields is a coordinate file when it has no line for the count and each
// line starts with a whole number or a name, and a PTS file otherwise.
void ReadClouds(const std::string& strPath, const std::string& strColumns, Context& context,
                ZuPointCloudContainer* pClouds);

// Writes all clouds as the ending says: .zpc binary, .pts and .xyz PTS, .ply PLY, any other a
// coordinate file of id, x, y, z. Throws CommandError (cannot write).
void WriteClouds(ZuPointCloudContainer* pClouds, const std::string& strPath, Context& context);

}  // namespace cli
