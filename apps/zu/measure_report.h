// The report of a measurement: one HTML file that needs neither network nor script.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "measure_run.h"

namespace cli {

struct ReportInput {
  std::vector<std::pair<std::string, std::string>> files;  // what it is, path
  std::string strUnit;                                     // of the object coordinates
  const ZuPointList* pCheck = nullptr;
};

// The result in one or two sentences.
std::string VerdictOf(const Measurement& result, const std::string& strUnit);

std::string MeasureReport(const Measurement& result, const ReportInput& input);

}  // namespace cli
