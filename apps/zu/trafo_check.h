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

// The common points of two lists, in one order, and how well a fit of them does; null: several
// wrong points are not looked for.
struct CommonPoints {
  const ZuPointList& source;
  const ZuPointList& control;
  FitRms pfnRms;
};

// Warns of several points without which the others fit at least five times better, or of one that
// is off by three times the median or more (five times among many): wrong ones bend the whole fit.
// Tells the command to type next, and strOther, a command that goes on with a tolerance.
void WarnOfWrongPoints(const std::vector<Residual>& residuals, const CommonPoints& common,
                       Context& context, const std::string& strOther = "");

}  // namespace cli
