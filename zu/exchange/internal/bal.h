// Files of Bundle Adjustment in the Large.
#pragma once

#include "zu/exchange/internal/photo_block.h"

namespace zu::internal {

PhotoBlock ReadBal(const std::vector<ZuExchangeFile>& files, const ZuImportOptions& options,
                   ZuExchangeReport* pReport);

extern const BlockNeeds kBalNeeds;
std::vector<ZuExchangeFile> WriteBal(const PhotoBlock& block, const ZuExportOptions& options,
                                     ZuExchangeReport* pReport);

}  // namespace zu::internal
