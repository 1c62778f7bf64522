// What the commands that carry clouds over have in common.
#pragma once

#include "context.h"
#include "zu/cloud/point_cloud_container.h"

class ZuAffinMap3d;

namespace cli {

// Moves a cloud, its normals with it. Throws CommandError (undetermined) where normals cannot be
// turned.
void MoveCloud(const ZuAffinMap3d& map, ZuPointCloud& cloud);

// Figures of clouds, as text and JSON.
void ReportClouds(const ZuPointCloudContainer& clouds, Context& context);

}  // namespace cli
