// Formatted text in the "C" locale, whatever locale the process has set.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <string>

namespace zu::internal {

// As vsnprintf. The text is cut at nSize - 1 characters and terminated, also when the formatter
// refuses an argument. Returns the length of what stands in pOut.
int FormatInto(char* pOut, std::size_t nSize, char const* szFormat, std::va_list args);

// The same for wide text: %ls is a wide text, %s an 8-bit one in UTF-8.
int FormatInto(wchar_t* pOut, std::size_t nSize, wchar_t const* szFormat, std::va_list args);

// As snprintf with the rules of FormatInto.
int PrintPart(char* pOut, std::size_t nSize, char const* szFormat, ...);

// As strtod.
double StringToDouble(char const* szText, char const** ppStop);

// One double by a printf form.
std::string FormatDouble(char const* szForm, double dValue);

}  // namespace zu::internal
