// Results as columns: one array over all rows of a list.
#pragma once

#include <pybind11/stl.h>

#include <initializer_list>
#include <limits>
#include <vector>

#include "values.h"

// A read-only property: its name, what gives it, its docstring.
template <class T>
struct Column {
  const char* szName;
  py::object (*pfnGet)(const T&);
  const char* szDoc;
};

template <class T, class... Options>
void AddColumns(py::class_<T, Options...>& to, std::initializer_list<Column<T>> columns) {
  for (const Column<T>& c : columns) to.def_property_readonly(c.szName, c.pfnGet, c.szDoc);
}

// Numbers of each row: (n, tail...), filled by fill(row, place of its first number).
template <class Range, class Fill>
py::object NumbersBy(const Range& rows, const std::vector<py::ssize_t>& tail, Fill fill) {
  std::vector<py::ssize_t> shape = {static_cast<py::ssize_t>(rows.size())};
  py::ssize_t iStep = 1;
  for (const py::ssize_t i : tail) {
    shape.push_back(i);
    iStep *= i;
  }
  double* pd = nullptr;
  py::object array = NewArray(shape, &pd);
  for (const auto& row : rows) {
    fill(row, pd);
    pd += iStep;
  }
  return array;
}

template <class Range, class Get>
py::object NumberBy(const Range& rows, Get get) {
  return NumbersBy(rows, {}, [&get](const auto& row, double* pd) { *pd = get(row); });
}

template <class Range, class Get>
py::object IdsBy(const Range& rows, Get get) {
  unsigned* pu = nullptr;
  py::object array = NewIds(static_cast<py::ssize_t>(rows.size()), &pu);
  for (const auto& row : rows) *pu++ = get(row);
  return array;
}

template <class Range, class Get>
py::object IntsBy(const Range& rows, Get get) {
  int* pi = nullptr;
  py::object array = NewInts(static_cast<py::ssize_t>(rows.size()), &pi);
  for (const auto& row : rows) *pi++ = get(row);
  return array;
}

template <class Range, class Get>
py::object BoolsBy(const Range& rows, Get get) {
  bool* pb = nullptr;
  py::object array = NewBools(static_cast<py::ssize_t>(rows.size()), &pb);
  for (const auto& row : rows) *pb++ = get(row);
  return array;
}

template <class Range, class Get>
py::object TextsBy(const Range& rows, Get get) {
  py::list texts;
  for (const auto& row : rows) texts.append(ToStr(std::string_view(get(row))));
  return texts;
}
