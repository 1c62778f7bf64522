// What the commands that adjust have in common: accuracies, limits of the tests, and how these are
// told.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "adjust_report.h"
#include "context.h"
#include "options.h"
#include "zu/adjust/adjust_test.h"
#include "zu/adjust/point_test.h"
#include "zu/points/point_list.h"

namespace cli {

struct AdjustValues {
  double dSigma = 0.0;  // of a coordinate; 0: not told
  double dAlpha = 0.001, dAlphaTotal = 0.0;
  std::string strReport;
  std::string strUnit = "units";  // of the coordinates, in the report
};

// Declares --sigma, --alpha, --alpha-total, --report and --unit.
void AddAdjustOptions(Options& options, AdjustValues* pValues);

// The tests that the options ask for.
ZuTestOptions TestsOf(const AdjustValues& values, bool bSnoop);

// What the columns dx, dy, dz tell, as a covariance of iDimension (2 or 3) rows; 0 where the file
// has no such column. Throws CommandError (bad input) for a negative accuracy.
void AccuracyOf(const ZuPoint& point, const std::string& strColumns, int iDimension, double* pdCov);

// "0.00123  a posteriori, 12 redundant"
std::string SigmaText(double dSigma0, ZuSigmaKind kind, int iRedundancy);

// {name: {value, sd}}, and beside it parameter_names and covariance (rows).
void AddParameterJson(const std::vector<std::string>& names, const std::vector<double>& values,
                      const double* pdCov, Json* pRoot);

// Adds r, w, test, limit, nabla, leave_one_out to the JSON of a point: r, w, nabla and
// leave_one_out by axis, a number for a single one.
void AddTestJson(const ZuPointTest& test, Json* pPoint);

}  // namespace cli
