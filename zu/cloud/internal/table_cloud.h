// Clouds in tables with titles, and in coordinate files.
#pragma once

#include <string_view>

#include "zu/cloud/cloud_file.h"

class ZuPointCloudContainer;

// The titles among the first lines tell more than coordinates.
bool ZuHasScanTitles(std::string_view head);

// As ZuReadClouds has it of a table. Reads into one new cloud.
void ZuReadTableCloud(const char* szPath, const ZuTableOptions& options,
                      ZuPointCloudContainer& clouds, eZuReadMode eMode,
                      ZuCloudFileReading& reading);
