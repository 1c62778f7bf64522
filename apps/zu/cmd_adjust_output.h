// What `zu adjust` tells: as text, as JSON, as a coordinate file.
#pragma once

#include <string>

#include "context.h"
#include "zu/adjust/network_project.h"

namespace cli {

void PrintAdjustment(const ZuNetworkOfProject& made, const ZuNetworkResult& result,
                     std::ostream& stream);
void AddAdjustmentJson(const ZuNetworkOfProject& made, const ZuNetworkResult& result, Json* pRoot);
// Rows id x y z dx dy dz of the points that were estimated, by id; iDecimals below 0: all digits.
void WriteAdjustedPoints(const ZuNetworkOfProject& made, const ZuNetworkResult& result,
                         int iDecimals, OutputFile* pOutput);
// "photo 7, point 12: T 35.2 beyond 6.9, estimated error 1.2 -0.3 px".
std::string SetAsideText(const ZuNetworkOfProject& made, const ZuNetworkSetAside& aside);

}  // namespace cli
