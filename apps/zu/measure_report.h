// The report of a measurement: one HTML file that needs neither network nor script, for screens of
// any width, light or dark, and for print. Its size stays below 5 MB for a million points: photos,
// rows and arrows are thinned out, and it says so.
#pragma once

#include <string>
#include <vector>

#include "drawing.h"
#include "measure_accuracy.h"
#include "measure_run.h"

namespace cli {

struct ReportInput {
  struct File {
    std::string strWhat, strName;
    size_t uBytes;
    unsigned uCrc;
  };
  std::vector<File> files;
  std::string strUnit;  // of the object coordinates
  const ZuPointList* pCheck = nullptr;
  const MeasureAccuracy* pAccuracy = nullptr;
};

// The result in one or two sentences.
std::string VerdictOf(const ZuPlaneMeasurement& result, const std::string& strUnit);

std::string MeasureReport(const ZuPlaneMeasurement& result, const ReportInput& input);
// Its main picture: the plan with residuals, or where nothing is checked the worst photo.
Drawing MeasurePicture(const ZuPlaneMeasurement& result, const ReportInput& input);

}  // namespace cli
