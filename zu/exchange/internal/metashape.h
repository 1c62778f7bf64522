// Camera files of Metashape.
#pragma once

#include "zu/exchange/internal/photo_block.h"

namespace zu::internal {

PhotoBlock ReadMetashape(const std::vector<ZuExchangeFile>& files, const ZuImportOptions& options,
                         ZuExchangeReport* pReport);

extern const BlockNeeds kMetashapeNeeds;
std::vector<ZuExchangeFile> WriteMetashape(const PhotoBlock& block, const ZuExportOptions& options,
                                           ZuExchangeReport* pReport);
// Of fx = f + b1.
PinholeModel ThroughMetashape(const PinholeModel& model);

}  // namespace zu::internal
