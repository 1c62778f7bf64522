// What is wrong with common points that no transformation carries over.
#pragma once

#include <string>
#include <vector>

#include "context.h"
#include "trafo_report.h"

namespace cli {

// Root mean square length of what the best transformation of `source` leaves to the points of the
// same ids in `control`; infinite where there is none.
using FitRms = double (*)(const ZuPointList& source, const ZuPointList& control);
double SimilarityRms(const ZuPointList& source, const ZuPointList& control);  // in space
double HelmertRms(const ZuPointList& source, const ZuPointList& control);     // in the plane

// Throws CommandError (undetermined) where the points fit at least ten times better with x and y of
// the source exchanged: axes in another order or of another sense, which no rotation mends.
void CheckMirrored(const std::string& strFiles, const std::string& strSource, FitRms pfnRms,
                   const ZuPointList& source, const ZuPointList& control);

// Warns of a point that is off by three times the median or more (five times among many): a wrong
// one bends the whole fit. Tells the command to type next, and strMore.
void WarnOfWrongPoint(const std::vector<Residual>& residuals, const ZuPointList& control,
                      Context& context, const std::string& strMore = "");

}  // namespace cli
