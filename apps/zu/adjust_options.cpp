#include "adjust_options.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "exit_code.h"
#include "point_columns.h"
#include "point_names.h"
#include "svg.h"
#include "text_table.h"

namespace cli {

void AddTestLimits(Options& options, double* pdAlpha, double* pdAlphaTotal) {
  options.Option("--alpha", "A", pdAlpha, "chance of a false alarm of one test, 0.001");
  options.Above(0.0);
  options.AtMost(0.5);
  options.Option("--alpha-total", "A", pdAlphaTotal,
                 "chance of a false alarm of all tests together, in place of --alpha");
  options.Above(0.0);
  options.AtMost(0.5);
}

void AddSourceOptions(Options& options, std::string* pSource, std::string* pControl,
                      bool bMustControl) {
  options.Positional("SOURCE", pSource, "coordinate file to be carried over");
  options.Option("--control", "CONTROL", pControl,
                 "coordinate file with points of the target system");
  if (bMustControl) options.Required();
}

void AddTestFlag(Options& options, AdjustValues* pValues) {
  options.Flag("--test", &pValues->bTest,
               "set aside the points that the tests reject; exit code 1 where there are any");
}

void AddAdjustOptions(Options& options, AdjustValues* pValues, const char* szSigma) {
  options.Option("--sigma", "S", &pValues->dSigma, szSigma);
  options.Above(0.0);
  AddTestLimits(options, &pValues->dAlpha, &pValues->dAlphaTotal);
  options.Option("--unit", "U", &pValues->strUnit, "unit of the coordinates, for the report");
}

ZuTestOptions TestsOf(const AdjustValues& values, bool bSnoop) {
  ZuTestOptions tests;
  tests.bSnoop = bSnoop;
  tests.dAlpha = values.dAlpha;
  tests.dAlphaTotal = values.dAlphaTotal;
  return tests;
}

double TestLimit(const AdjustValues& values, int iPoints, ZuSigmaKind kind, int iRedundancy) {
  const double dAlpha = ZuTestAlpha(TestsOf(values, false), iPoints);
  return kind == ZuSigmaKind::APriori ? ZuNormalLimit(dAlpha) : ZuTauLimit(dAlpha, iRedundancy);
}

bool HasAccuracies(const std::string& strColumns) {
  const ColumnTable columns = ParseColumns(strColumns);
  return columns.HasEntry(eZuPointRWDX) || columns.HasEntry(eZuPointRWDY) ||
         columns.HasEntry(eZuPointRWDZ);
}

namespace {

struct Accuracy {
  eZuPointRWMask eColumn;
  const char* szColumn;
  double dSd;
};

std::array<Accuracy, 3> AccuraciesOf(const ZuPoint& point) {
  return {{{eZuPointRWDX, "dx", point.m_dDX},
           {eZuPointRWDY, "dy", point.m_dDY},
           {eZuPointRWDZ, "dz", point.m_dDZ}}};
}

}  // namespace

void CheckAccuracies(const std::string& strFile, const ZuPointList& points,
                     const std::string& strColumns) {
  const ColumnTable columns = ParseColumns(strColumns);
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    for (const Accuracy& accuracy : AccuraciesOf(*p)) {
      if (!columns.HasEntry(accuracy.eColumn) || !(accuracy.dSd < 0.0)) continue;
      throw CommandError(kBadInput, strFile + ": column " + accuracy.szColumn + " of point " +
                                        PointLabel(*p) + ": the accuracy " +
                                        Shortest(accuracy.dSd) +
                                        " is negative; a standard deviation, or 0 where it is not "
                                        "known, would be right");
    }
  }
}

void AccuracyOf(const ZuPoint& point, const std::string& strColumns, int iDimension,
                double* pdCov) {
  const ColumnTable columns = ParseColumns(strColumns);
  const auto accuracies = AccuraciesOf(point);
  std::fill_n(pdCov, iDimension * iDimension, 0.0);
  for (int i = 0; i < iDimension; ++i) {
    const Accuracy& accuracy = accuracies[static_cast<size_t>(i)];
    if (!columns.HasEntry(accuracy.eColumn)) continue;
    pdCov[i * iDimension + i] = accuracy.dSd * accuracy.dSd;
  }
}

std::vector<ZuFitPoint> FitPointsOf(const ZuPointList& points, const std::string& strColumns) {
  std::vector<ZuFitPoint> observed;
  observed.reserve(static_cast<size_t>(points.Count()));
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    ZuFitPoint point{p->GetId(), {p->m_dX, p->m_dY, p->m_dZ}, {}};
    AccuracyOf(*p, strColumns, 3, point.adCov);
    observed.push_back(point);
  }
  return observed;
}

std::string SigmaText(double dSigma0, ZuSigmaKind kind, int iRedundancy) {
  return Fixed(dSigma0, DecimalsFor(dSigma0)) + "  " + ZuSigmaKindText(kind) + ", " +
         std::to_string(iRedundancy) + " redundant" +
         (iRedundancy == 0 ? ": of coordinates exact as told, or to 1 unit" : "");
}

std::string TestVerdict(const std::vector<Tested>& points, const std::string& strUnit) {
  const Tested* pWorst = nullptr;
  int iTested = 0, iBeyond = 0;
  for (const Tested& point : points) {
    const ZuPointTest& test = *point.pTest;
    if (!test.bUsed || !std::isfinite(test.dLimit)) continue;
    ++iTested;
    if (!test.IsRejected()) continue;
    ++iBeyond;
    if (pWorst == nullptr ||
        test.dTest / test.dLimit > pWorst->pTest->dTest / pWorst->pTest->dLimit) {
      pWorst = &point;
    }
  }
  if (iTested == 0) return "nothing is tested: too few points for it";
  if (pWorst == nullptr) return "no point is beyond the limit of its test";
  const ZuPointTest& test = *pWorst->pTest;
  // As if it had not been used: it bends the fit towards itself.
  double dOff = std::hypot(test.adLeaveOneOut[0], test.adLeaveOneOut[1], test.adLeaveOneOut[2]);
  if (!std::isfinite(dOff)) {
    dOff = std::hypot(test.adResidual[0], test.adResidual[1], test.adResidual[2]);
  }
  return "point " + pWorst->strLabel + " is suspicious: T " + Fixed(test.dTest, 2) + " beyond " +
         Fixed(test.dLimit, 2) + ", off by " + Significant(dOff) + " " + strUnit +
         (iBeyond > 1 ? ", and " + std::to_string(iBeyond - 1) + " more" : "");
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

void TurnResiduals(std::vector<ZuPointTest>* pTests) {
  for (ZuPointTest& test : *pTests) {
    for (int i = 0; i < test.iDimension; ++i) {
      for (double* pd : {&test.adResidual[i], &test.adW[i], &test.adLeaveOneOut[i]}) *pd = -*pd;
    }
  }
}

void AddTestJson(const ZuPointTest* pTest, Json* pPoint) {
  const auto byAxis = [pTest](const double(ZuPointTest::*pValues)[3]) {
    if (pTest == nullptr) return Json();
    const double* const pd = pTest->*pValues;
    if (pTest->iDimension == 1) return Json(pd[0]);
    return Json(std::vector<double>(pd, pd + pTest->iDimension));
  };
  Json& point = *pPoint;
  point["r"] = byAxis(&ZuPointTest::adRedundancy);
  point["w"] = byAxis(&ZuPointTest::adW);
  point["test"] = pTest != nullptr ? Json(pTest->dTest) : Json();
  point["limit"] = pTest != nullptr ? Json(pTest->dLimit) : Json();
  point["nabla"] = byAxis(&ZuPointTest::adNabla);
  point["leave_one_out"] = byAxis(&ZuPointTest::adLeaveOneOut);
}

}  // namespace cli
