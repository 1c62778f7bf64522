// Arrays of numpy. The one file that knows its templates.
#include <pybind11/numpy.h>

#include <algorithm>
#include <cstdint>

#include "values.h"

namespace {

std::string ShapeText(const py::array& array) {
  return py::str(array.attr("shape")).cast<std::string>();
}

[[noreturn]] void RefuseShape(const py::array& array, int iColumns, const char* szArgument) {
  const std::string strWanted = iColumns == 0 ? "(n,)" : "(n, " + std::to_string(iColumns) + ")";
  throw py::value_error(std::string(szArgument) + ": shape " + ShapeText(array) + ", " + strWanted +
                        " would be right");
}

py::array_t<double, py::array::c_style | py::array::forcecast> Doubles(const py::handle& value,
                                                                       const char* szArgument) {
  auto array = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(value);
  if (!array) {
    PyErr_Clear();
    throw py::value_error(std::string(szArgument) + ": no array of numbers");
  }
  return array;
}

// Whole numbers in a range, whatever type they have.
std::vector<std::int64_t> WholeNumbers(const py::handle& value, std::int64_t iLow,
                                       std::int64_t iHigh, const char* szArgument) {
  const auto array = Doubles(value, szArgument);  // exact for 32 bits
  if (array.ndim() != 1) RefuseShape(array, 0, szArgument);
  std::vector<std::int64_t> numbers(static_cast<std::size_t>(array.shape(0)));
  const double* const pd = array.data();
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (!(pd[i] >= static_cast<double>(iLow) && pd[i] <= static_cast<double>(iHigh)) ||
        pd[i] != static_cast<double>(static_cast<std::int64_t>(pd[i]))) {
      throw py::value_error(std::string(szArgument) + "[" + std::to_string(i) +
                            "]: a whole number from " + std::to_string(iLow) + " to " +
                            std::to_string(iHigh) + " would be right");
    }
    numbers[i] = static_cast<std::int64_t>(pd[i]);
  }
  return numbers;
}

}  // namespace

Rows AsRows(const py::handle& value, int iColumns, const char* szArgument) {
  const auto array = Doubles(value, szArgument);
  Rows rows;
  rows.bSingle = iColumns != 0 && array.ndim() == 1;
  const bool bFits = rows.bSingle    ? array.shape(0) == iColumns
                     : iColumns == 0 ? array.ndim() == 1
                                     : array.ndim() == 2 && array.shape(1) == iColumns;
  if (!bFits) RefuseShape(array, iColumns, szArgument);
  rows.n = rows.bSingle ? 1 : array.shape(0);
  rows.iColumns = std::max(iColumns, 1);
  rows.pd = array.data();
  rows.keep = array;
  return rows;
}

py::object NewArray(const std::vector<py::ssize_t>& shape, double** ppd) {
  py::array_t<double> array(shape);
  *ppd = array.mutable_data();
  return array;
}

py::object NewArrayOf(const std::vector<py::ssize_t>& shape, const double* pd) {
  return py::array_t<double>(shape, pd);
}

py::object NewView(const py::object& dtype, const std::vector<py::ssize_t>& shape,
                   const std::vector<py::ssize_t>& strides, const void* p, const py::object& base) {
  py::array array(py::dtype::from_args(dtype), shape, strides, p, base);
  array.attr("setflags")(py::arg("write") = false);
  return array;
}

std::vector<py::ssize_t> ShapeLike(const Rows& rows, int iColumns) {
  if (rows.bSingle) return {iColumns};
  return {rows.n, iColumns};
}

py::object NewIds(py::ssize_t n, unsigned** ppu) {
  py::array_t<unsigned> array(n);
  *ppu = array.mutable_data();
  return array;
}

py::object NewIdsOf(const std::vector<unsigned>& ids) {
  unsigned* pu = nullptr;
  py::object array = NewIds(static_cast<py::ssize_t>(ids.size()), &pu);
  std::copy(ids.begin(), ids.end(), pu);
  return array;
}

py::object NewInts(py::ssize_t n, int** ppi) {
  py::array_t<int> array(n);
  *ppi = array.mutable_data();
  return array;
}

py::object NewBools(py::ssize_t n, bool** ppb) {
  py::array_t<bool> array(n);
  *ppb = array.mutable_data();
  return array;
}

std::vector<unsigned> AsIds(const py::handle& value, const char* szArgument) {
  const auto numbers = WholeNumbers(value, 0, 4294967295, szArgument);
  return {numbers.begin(), numbers.end()};
}

std::vector<int> AsInts(const py::handle& value, const char* szArgument) {
  const auto numbers = WholeNumbers(value, -2147483648LL, 2147483647, szArgument);
  return {numbers.begin(), numbers.end()};
}
