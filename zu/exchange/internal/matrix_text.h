// A 4 x 4 matrix as other programs show it, to be pasted into a file.
#pragma once

#include <string>

#include "zu/numerics/affin_map3d.h"
#include "zu/project/finding_list.h"

namespace zu::internal {

// Sixteen numbers row by row, or twelve without the row 0 0 0 1, between blanks, commas, semicolons
// and brackets; lines that begin with # are passed over. A matrix column by column is taken, with a
// warning. False with an error among the findings, *pMap untouched.
bool ReadMatrixText(const std::string& strText, const std::string& strName, ZuAffinMap3d* pMap,
                    ZuFindingList* pFindings);

// Of sixteen or twelve numbers in that order.
bool TakeMatrix(const double* pd, int iCount, const std::string& strName, ZuAffinMap3d* pMap,
                ZuFindingList* pFindings);

}  // namespace zu::internal
