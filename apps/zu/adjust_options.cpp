#include "adjust_options.h"

#include <algorithm>
#include <cmath>

#include "exit_code.h"
#include "point_columns.h"
#include "point_names.h"
#include "text_table.h"

namespace cli {

void AddAdjustOptions(Options& options, AdjustValues* pValues) {
  options.Option("--sigma", "S", &pValues->dSigma,
                 "standard deviation of the coordinates, where no column dx, dy, dz tells it");
  options.Above(0.0);
  options.Option("--alpha", "A", &pValues->dAlpha, "chance of a false alarm of one test, 0.001");
  options.Above(0.0);
  options.AtMost(0.5);
  options.Option("--alpha-total", "A", &pValues->dAlphaTotal,
                 "chance of a false alarm of all tests together, in place of --alpha");
  options.Above(0.0);
  options.AtMost(0.5);
  options.Output("--report", "FILE.html", &pValues->strReport,
                 "report to look at and to print, one file");
  options.Option("--unit", "U", &pValues->strUnit, "unit of the coordinates, for the report");
}

ZuTestOptions TestsOf(const AdjustValues& values, bool bSnoop) {
  ZuTestOptions tests;
  tests.bSnoop = bSnoop;
  tests.dAlpha = values.dAlpha;
  tests.dAlphaTotal = values.dAlphaTotal;
  return tests;
}

void AccuracyOf(const ZuPoint& point, const std::string& strColumns, int iDimension,
                double* pdCov) {
  const ColumnTable columns = ParseColumns(strColumns);
  const std::pair<eZuPointRWMask, double> accuracies[] = {
      {eZuPointRWDX, point.m_dDX}, {eZuPointRWDY, point.m_dDY}, {eZuPointRWDZ, point.m_dDZ}};
  std::fill_n(pdCov, iDimension * iDimension, 0.0);
  for (int i = 0; i < iDimension; ++i) {
    const auto& [eColumn, dSd] = accuracies[i];
    if (!columns.HasEntry(eColumn)) continue;
    if (dSd < 0.0) {
      throw CommandError(kBadInput, "point " + PointLabel(point) + ": the accuracy " +
                                        Shortest(dSd) +
                                        " is negative; a standard deviation, or 0 where it is not "
                                        "known, would be right");
    }
    pdCov[i * iDimension + i] = dSd * dSd;
  }
}

std::string SigmaText(double dSigma0, ZuSigmaKind kind, int iRedundancy) {
  return Fixed(dSigma0, DecimalsFor(dSigma0)) + "  " + ZuSigmaKindText(kind) + ", " +
         std::to_string(iRedundancy) + " redundant" +
         (iRedundancy == 0 ? ": of coordinates exact as told, or to 1 unit" : "");
}

void AddParameterJson(const std::vector<std::string>& names, const std::vector<double>& values,
                      const double* pdCov, Json* pRoot) {
  const size_t u = names.size();
  Json parameters = Json::object(), rows = Json::array();
  for (size_t i = 0; i < u; ++i) {
    parameters[names[i]] = {{"value", values[i]},
                            {"sd", std::sqrt(std::max(0.0, pdCov[i * u + i]))}};
    rows.push_back(std::vector<double>(pdCov + i * u, pdCov + (i + 1) * u));
  }
  (*pRoot)["parameters"] = std::move(parameters);
  (*pRoot)["parameter_names"] = names;
  (*pRoot)["covariance"] = std::move(rows);
}

void AddTestJson(const ZuPointTest& test, Json* pPoint) {
  const auto byAxis = [&test](const double* pd) {
    if (test.iDimension == 1) return Json(pd[0]);
    return Json(std::vector<double>(pd, pd + test.iDimension));
  };
  Json& point = *pPoint;
  point["r"] = byAxis(test.adRedundancy);
  point["w"] = byAxis(test.adW);
  point["test"] = test.dTest;
  point["limit"] = test.dLimit;
  point["nabla"] = byAxis(test.adNabla);
  point["leave_one_out"] = byAxis(test.adLeaveOneOut);
}

}  // namespace cli
