// The statistical tests of an adjustment as columns.
#include "tests.h"

#include <algorithm>
#include <cmath>

ZuTestOptions ToTests(const std::string& strSigma0, bool bSnoop, double dAlpha, double dAlphaTotal,
                      double dPower) {
  static const char* const kSigmaKinds[] = {"automatic", "a priori", "a posteriori", nullptr};
  const auto check = [](const char* szArgument, double d, double dLow) {
    if (d >= dLow && d < 1.0 && (d > 0.0 || dLow == 0.0)) return;
    throw py::value_error(std::string(szArgument) + ": a probability would be right");
  };
  check("alpha", dAlpha, 1e-300);
  check("alpha_total", dAlphaTotal, 0.0);
  check("power", dPower, 1e-300);
  ZuTestOptions options;
  options.sigmaKind = static_cast<ZuSigmaKind>(FindWord("sigma0", strSigma0, kSigmaKinds));
  options.bSnoop = bSnoop;
  options.dAlpha = dAlpha;
  options.dAlphaTotal = dAlphaTotal;
  options.dPower = dPower;
  return options;
}

py::str ToStr(ZuSigmaKind kind) { return py::str(ZuSigmaKindText(kind)); }

Rows AsMatrices(const py::object& value, py::ssize_t n, int k, const char* szArgument) {
  if (value.is_none()) return Rows();
  const py::object array = py::module_::import("numpy").attr("asarray")(value, "d");
  if (!py::tuple(array.attr("shape")).equal(py::make_tuple(n, k, k))) {
    throw py::value_error(std::string(szArgument) + ": shape " +
                          py::str(array.attr("shape")).cast<std::string>() + ", (" +
                          std::to_string(n) + ", " + std::to_string(k) + ", " + std::to_string(k) +
                          ") would be right");
  }
  return AsRows(array.attr("reshape")(n, k * k), k * k, szArgument);
}

py::object SdOf(const double* pdCovariance, int k) {
  double* pd = nullptr;
  py::object array = NewArray({k}, &pd);
  for (int i = 0; i < k; ++i) pd[i] = std::sqrt(std::max(pdCovariance[i * (k + 1)], 0.0));
  return array;
}

namespace {

using Axes = double (ZuPointTest::*)[3];

py::object AxesOf(const PyTests& tests, Axes pField) {
  double* pd = nullptr;
  py::object array =
      NewArray({static_cast<py::ssize_t>(tests.tests.size()), tests.iDimension}, &pd);
  for (const ZuPointTest& test : tests.tests) {
    pd = std::copy_n(test.*pField, tests.iDimension, pd);
  }
  return array;
}

py::object NumbersOf(const PyTests& tests, double ZuPointTest::*pField) {
  double* pd = nullptr;
  py::object array = NewArray({static_cast<py::ssize_t>(tests.tests.size())}, &pd);
  for (const ZuPointTest& test : tests.tests) *pd++ = test.*pField;
  return array;
}

py::object BoolsOf(const PyTests& tests, bool (*pfnGet)(const ZuPointTest&)) {
  bool* pb = nullptr;
  py::object array = NewBools(static_cast<py::ssize_t>(tests.tests.size()), &pb);
  for (const ZuPointTest& test : tests.tests) *pb++ = pfnGet(test);
  return array;
}

}  // namespace

void BindTests(py::module_& m) {
  py::class_<PyTests> tests(m, "PointTests",
                            "What an adjustment tells of each of its n points with m observations "
                            "each, as columns.");
  tests.def("__len__", [](const PyTests& t) { return t.tests.size(); })
      .def_property_readonly(
          "ids",
          [](const PyTests& t) {
            std::vector<unsigned> ids;
            for (const ZuPointTest& test : t.tests) ids.push_back(test.uId);
            return NewIdsOf(ids);
          },
          "Ids, (n,).")
      .def_property_readonly(
          "used",
          [](const PyTests& t) {
            return BoolsOf(t, [](const ZuPointTest& test) { return test.bUsed; });
          },
          "False: set aside, (n,).")
      .def_property_readonly(
          "controlled",
          [](const PyTests& t) {
            return BoolsOf(t, [](const ZuPointTest& test) { return test.bControlled; });
          },
          "Every redundancy number reaches the least one, (n,).")
      .def_property_readonly(
          "rejected",
          [](const PyTests& t) {
            return BoolsOf(t, [](const ZuPointTest& test) { return test.IsRejected(); });
          },
          "The group test is beyond its limit, (n,).")
      .def_property_readonly(
          "test", [](const PyTests& t) { return NumbersOf(t, &ZuPointTest::dTest); },
          "Group test T, (n,).")
      .def_property_readonly(
          "limit", [](const PyTests& t) { return NumbersOf(t, &ZuPointTest::dLimit); },
          "Limit of T, (n,); infinite where the redundancy allows no test.");
  const struct {
    const char* szName;
    Axes pField;
    const char* szDoc;
  } axes[] = {
      {"residuals", &ZuPointTest::adResidual, "Misclosures, (n, m), unit of the observations."},
      {"residual_sd", &ZuPointTest::adResidualSd, "Their standard deviations, (n, m)."},
      {"redundancy", &ZuPointTest::adRedundancy, "Redundancy numbers from 0 to 1, (n, m)."},
      {"w", &ZuPointTest::adW, "Standardised residuals, w or tau, (n, m)."},
      {"smallest_error", &ZuPointTest::adNabla,
       "Smallest error that the test finds, (n, m), unit of the observations."},
      {"effect", &ZuPointTest::adEffect,
       "Effect of such an error on any result, in standard deviations of it, (n, m)."},
      {"leave_one_out", &ZuPointTest::adLeaveOneOut,
       "Misclosures that the others predict, (n, m); NaN where they do not decide."}};
  for (const auto& column : axes) {
    const Axes pField = column.pField;
    tests.def_property_readonly(
        column.szName, [pField](const PyTests& t) { return AxesOf(t, pField); }, column.szDoc);
  }
}
