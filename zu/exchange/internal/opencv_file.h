// Calibration files of OpenCV.
#pragma once

#include "zu/exchange/internal/photo_block.h"

namespace zu::internal {

PhotoBlock ReadOpenCv(const std::vector<ZuExchangeFile>& files, const ZuImportOptions& options,
                      ZuExchangeReport* pReport);

extern const BlockNeeds kOpenCvNeeds;
// A file a camera. The ending decides on the form: .yml, .yaml, .xml, .json.
std::vector<ZuExchangeFile> WriteOpenCv(const PhotoBlock& block, const ZuExportOptions& options,
                                        ZuExchangeReport* pReport);

}  // namespace zu::internal
