// The report of a result object: its numbers as figures, tables and views. Nothing is computed that
// the object does not hold.
#pragma once

#include <string>

#include "adjust_report.h"
#include "json_text.h"

namespace cli {

class Context;

// Lists of points become views, lists of objects tables, numbers facts. `context` tells the printed
// text, whose first line is the verdict, the arguments, and the places of points.
AdjustReport ReportOfResult(const Json& result, const std::string& strSummary, Context& context);

}  // namespace cli
