// The drawings of a measurement report.
#pragma once

#include <string>

#include "measure_run.h"

namespace cli {

// Residuals of a photo over its frame; dFactor: how many times as long they are drawn.
std::string PhotoFigure(const MeasuredPhoto& photo, double dFactor);
// One round factor for all photos of a measurement, so that they can be compared.
double PhotoFactor(const Measurement& result);

// Plan of the check points with the residuals of all photos and their mean, in the two axes in
// which the points spread most.
std::string PlanFigure(const Measurement& result, const ZuPointList& check,
                       const std::string& strUnit);

// How often residuals of a length occur.
std::string HistogramFigure(const Measurement& result, const std::string& strUnit);

}  // namespace cli
