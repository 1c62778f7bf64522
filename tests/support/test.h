// What every test needs: the test framework, the usual standard headers, and values as text.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <memory>
#include <numbers>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

// Rows of a table of cases: for (const auto& [szText, iResult] : Cases<const char*, int>{...}).
template <class... T>
using Cases = std::initializer_list<std::tuple<T...>>;

// A value as text; numbers as the shortest text that reads back to the same bits.
template <class T>
std::string Text(const T& value) {
  if constexpr (std::is_floating_point_v<T>) {
    char acText[32];
    return {acText, std::to_chars(acText, acText + sizeof acText, value).ptr};
  } else if constexpr (requires { value.chars(); }) {
    return {value.chars(), static_cast<std::size_t>(value.length())};
  } else if constexpr (std::is_convertible_v<T, std::string>) {
    return value;
  } else {
    return std::to_string(value);
  }
}

// Values with blanks between them, evaluated in their order: Row{1, "a", 2.5}.str is "1 a 2.5".
struct Row {
  template <class... T>
  explicit Row(const T&... values) {
    ((str += Text(values) + ' '), ...);
    str.pop_back();
  }
  std::string str;
};

// Several values at once: EXPECT_ROW("3 7.5 P1", p.GetId(), p.m_dX, p.GetName());
#define EXPECT_ROW(text, ...) EXPECT_EQ((Row{__VA_ARGS__}.str), text)
