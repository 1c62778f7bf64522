// What adjustments tell of their points, and the options of their tests.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "types.h"
#include "zu/adjust/adjust_test.h"
#include "zu/adjust/point_test.h"

// The tests of all points of one result, seen as columns.
struct PyTests {
  std::vector<ZuPointTest> tests;
  int iDimension = 0;
};

// Raises ValueError for a word or number that is out of range.
ZuTestOptions ToTests(const std::string& strSigma0, bool bSnoop, double dAlpha, double dAlphaTotal,
                      double dPower);
py::str ToStr(ZuSigmaKind kind);

// n x k x k covariances as rows of k * k numbers; None: no rows.
Rows AsMatrices(const py::object& value, py::ssize_t n, int k, const char* szArgument);
// Square roots of the diagonal of a k x k matrix.
py::object SdOf(const double* pdCovariance, int k);

void BindTests(py::module_& m);
