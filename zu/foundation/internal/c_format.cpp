#include "zu/foundation/internal/c_format.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#if defined(__APPLE__)
#include <xlocale.h>
#endif

namespace zu::internal {
namespace {

#if defined(_WIN32)

int Print(char* pOut, std::size_t nSize, char const* szFormat, std::va_list args) {
  static const _locale_t locale = _create_locale(LC_ALL, "C");
  return _vsnprintf_l(pOut, nSize, szFormat, locale, args);
}

double ReadDouble(char const* szText, char** ppStop) {
  static const _locale_t locale = _create_locale(LC_ALL, "C");
  return _strtod_l(szText, ppStop, locale);
}

#else

// Numbers as in "C", characters as UTF-8 where the system has that.
locale_t PlainLocale() {
  static const locale_t locale = [] {
    const locale_t plain = newlocale(LC_ALL_MASK, "C", locale_t{});
    const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", plain);
    return utf8 ? utf8 : plain;
  }();
  return locale;
}

// The locale is changed for this thread and this call alone.
int Print(char* pOut, std::size_t nSize, char const* szFormat, std::va_list args) {
  const locale_t before = uselocale(PlainLocale());
  const int n = std::vsnprintf(pOut, nSize, szFormat, args);
  uselocale(before);
  return n;
}

double ReadDouble(char const* szText, char** ppStop) {
  return strtod_l(szText, ppStop, PlainLocale());
}

#endif

}  // namespace

int FormatInto(char* pOut, std::size_t nSize, char const* szFormat, std::va_list args) {
  std::memset(pOut, 0, nSize);  // a formatter that gives up leaves what it had so far
  const int n = Print(pOut, nSize, szFormat, args);
  pOut[nSize - 1] = '\0';
  if (n >= 0 && static_cast<std::size_t>(n) < nSize) return n;
  return static_cast<int>(std::strlen(pOut));
}

int PrintPart(char* pOut, std::size_t nSize, char const* szFormat, ...) {
  std::va_list args;
  va_start(args, szFormat);
  const int n = FormatInto(pOut, nSize, szFormat, args);
  va_end(args);
  return n;
}

double StringToDouble(char const* szText, char const** ppStop) {
  char* pStop = nullptr;
  const double dValue = ReadDouble(szText, &pStop);
  *ppStop = pStop;
  return dValue;
}

std::string FormatDouble(char const* szForm, double dValue) {
  char szText[512];  // the longest double by %f has 316 characters
  const int n = PrintPart(szText, sizeof(szText), szForm, dValue);
  return std::string(szText, static_cast<std::size_t>(n));
}

}  // namespace zu::internal
