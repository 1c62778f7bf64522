// Bytes as text: conversion to wide characters and back, and a run of changes to a String beside a
// plain text.
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>

#include "zu/foundation/string.h"
#include "zu/foundation/unicode.h"

namespace {

void Require(bool bGood) {
  if (!bGood) std::abort();
}

// What came through once comes through again.
void CheckUnicode(std::string const& text) {
  const AnsiToUni wide(text);
  const UniToAnsi narrow(wide());
  const AnsiToUni again(narrow());
  Require((wide() == nullptr) == (again() == nullptr));
  if (wide()) Require(std::wstring_view(wide()) == again());
}

void CheckChanges(std::string_view bytes) {
  String s;
  std::string model;
  while (bytes.size() >= 4) {
    const std::size_t n = model.size();
    const std::size_t first = static_cast<std::uint8_t>(bytes[1]) % (n + 1);
    const std::size_t count = static_cast<std::uint8_t>(bytes[2]) % (n - first + 1);
    const std::string piece(bytes.substr(3, static_cast<std::uint8_t>(bytes[0]) / 8));
    const auto iFirst = static_cast<int>(first), nCount = static_cast<int>(count);
    switch (bytes[0] % 4) {
      case 0:
        s.at(iFirst, nCount) = String(piece.data(), static_cast<int>(piece.size()));
        model.replace(first, count, piece);
        break;
      case 1:
        s += s.at(iFirst, nCount);
        model += model.substr(first, count);
        break;
      case 2:
        s.del(iFirst, nCount);
        model.erase(first, count);
        break;
      default:
        s.prepend(s.from(iFirst));
        model.insert(0, model.substr(first));
    }
    Require(s.OK() && std::string_view(s.chars(), static_cast<std::size_t>(s.length())) == model);
    if (model.size() > 20000) break;
    bytes.remove_prefix(4);
  }
}

void CheckLines(std::string const& text) {
  std::istringstream stream(text);
  String line;
  std::size_t n = 0;
  while (!stream.eof()) n += static_cast<std::size_t>(readline(stream, line)) + 1;
  Require(n == text.size() + 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize) {
  const std::string text(reinterpret_cast<char const*>(pData), nSize);
  CheckUnicode(text);
  CheckChanges(text);
  CheckLines(text);
  return 0;
}
