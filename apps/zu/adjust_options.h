// What the commands that adjust have in common: accuracies, limits of the tests, and how these are
// told.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "context.h"
#include "options.h"
#include "zu/adjust/adjust_test.h"
#include "zu/adjust/fit_result.h"
#include "zu/adjust/point_test.h"
#include "zu/points/point_list.h"

namespace cli {

struct AdjustValues {
  double dSigma = 0.0;  // of a coordinate; 0: not told
  double dAlpha = 0.001, dAlphaTotal = 0.0;
  bool bTest = false;
  std::string strUnit = "units";  // of the coordinates, in the report
};

constexpr char kSigmaOfAll[] =
    "standard deviation of the coordinates, where no column dx, dy, dz tells it";
constexpr char kSigmaOfControl[] =
    "standard deviation of the coordinates of CONTROL, where no column dx, dy, dz tells it";

// Declares --sigma, --alpha, --alpha-total and --unit.
void AddAdjustOptions(Options& options, AdjustValues* pValues, const char* szSigma = kSigmaOfAll);
// Declares SOURCE and --control, which must be given where a command has no other way.
void AddSourceOptions(Options& options, std::string* pSource, std::string* pControl,
                      bool bMustControl = true);
// Declares --test.
void AddTestFlag(Options& options, AdjustValues* pValues);
// Declares --alpha and --alpha-total.
void AddTestLimits(Options& options, double* pdAlpha, double* pdAlphaTotal);

// The tests that the options ask for.
ZuTestOptions TestsOf(const AdjustValues& values, bool bSnoop);

// Limit of |w| of a point's coordinates, with iPoints tested; may be infinite.
double TestLimit(const AdjustValues& values, int iPoints, ZuSigmaKind kind, int iRedundancy);

// The columns bring accuracies.
bool HasAccuracies(const std::string& strColumns);

// Throws CommandError (bad input) for a point whose accuracy is negative.
void CheckAccuracies(const std::string& strFile, const ZuPointList& points,
                     const std::string& strColumns);

// What the columns dx, dy, dz tell, as a covariance of iDimension (2 or 3) rows; 0 where the file
// has no such column.
void AccuracyOf(const ZuPoint& point, const std::string& strColumns, int iDimension, double* pdCov);

// The points with the accuracies that the columns bring, for a fit.
std::vector<ZuFitPoint> FitPointsOf(const ZuPointList& points, const std::string& strColumns);

// "0.00123  a posteriori, 12 redundant"
std::string SigmaText(double dSigma0, ZuSigmaKind kind, int iRedundancy);

// {name: {value, sd}}, and beside it parameter_names and covariance (rows).
void AddParameterJson(const std::vector<std::string>& names, const std::vector<double>& values,
                      const double* pdCov, Json* pRoot);

// Residuals as every command gives them, given minus computed; the fits of the plane have them the
// other way.
void TurnResiduals(std::vector<ZuPointTest>* pTests);

// Adds r, w, test, limit, nabla, leave_one_out to the JSON of a point: r, w, nabla and
// leave_one_out by axis, a number for a single one; each null without a test.
void AddTestJson(const ZuPointTest* pTest, Json* pPoint);

// A point and what its test says.
struct Tested {
  std::string strLabel;
  const ZuPointTest* pTest;
};

// The end of a verdict: which used point is farthest beyond the limit of its test, that none is, or
// that nothing can be tested; "point 5 is suspicious: T 31.2 beyond 5.42, off by 0.061 m".
std::string TestVerdict(const std::vector<Tested>& points, const std::string& strUnit);

}  // namespace cli
