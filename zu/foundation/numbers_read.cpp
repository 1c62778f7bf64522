// Text to numbers.
#include <charconv>
#include <limits>
#include <string>

#include "zu/foundation/internal/c_format.h"
#include "zu/foundation/numbers.h"

namespace {

bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// Whether a character can stand in a decimal number.
bool IsDecimal(char c) {
  return IsDigit(c) || c == '.' || c == 'e' || c == 'E' || c == '-' || c == '+';
}

// Whether a character can stand in a hexadecimal number, an infinity or a "nan(...)".
bool IsSpecial(char c) { return IsDecimal(c) || IsLetter(c) || c == '_' || c == '(' || c == ')'; }

// A text with an end, and one with a terminator, which no number holds.
struct Bounded {
  char const* pEnd;
  bool AtEnd(char const* p) const { return p == pEnd; }
};
struct Terminated {
  static bool AtEnd(char const*) { return false; }
};

template <class End>
char const* SkipBlanks(char const* p, End end) {
  while (!end.AtEnd(p) && IsBlank(*p)) ++p;
  return p;
}

// Takes a sign; true for a minus.
template <class End>
bool TakeSign(char const*& p, End end) {
  if (end.AtEnd(p) || (*p != '-' && *p != '+')) return false;
  return *p++ == '-';
}

template <class End, class Accept>
char const* Stretch(char const* p, End end, Accept accept) {
  while (!end.AtEnd(p) && accept(*p)) ++p;
  return p;
}

// The rare forms, left to the run-time: hexadecimal numbers, infinities, NaNs, and decimal numbers
// outside the range of doubles.
double ReadByRuntime(char const* p, char const* pEnd, char const** ppStop) {
  const std::string strText(p, pEnd);
  char const* pStop = nullptr;
  const double dValue = zu_internal::StringToDouble(strText.c_str(), &pStop);
  *ppStop = p + (pStop - strText.c_str());
  return dValue;
}

template <class End>
double ReadDouble(char const* pBegin, End end, char const** ppStop) {
  *ppStop = pBegin;
  char const* const pSign = SkipBlanks(pBegin, end);
  char const* p = pSign;
  const bool bMinus = TakeSign(p, end);
  if (end.AtEnd(p)) return 0.0;

  char const* const pEnd = Stretch(p, end, IsDecimal);
  const bool bHex =
      *p == '0' && pEnd == p + 1 && !end.AtEnd(pEnd) && (*pEnd == 'x' || *pEnd == 'X');
  if (bHex || *p == 'i' || *p == 'I' || *p == 'n' || *p == 'N') {
    const double dValue = ReadByRuntime(pSign, Stretch(p, end, IsSpecial), ppStop);
    if (*ppStop == pSign) *ppStop = pBegin;
    return dValue;
  }
  if (pEnd == p || *p == '-' || *p == '+') return 0.0;

  double dValue = 0.0;
  const auto result = std::from_chars(p, pEnd, dValue);
  if (result.ec == std::errc::invalid_argument) return 0.0;
  if (result.ec != std::errc()) return ReadByRuntime(pSign, result.ptr, ppStop);
  *ppStop = result.ptr;
  return bMinus ? -dValue : dValue;
}

template <class End>
int ReadInt(char const* pBegin, End end) {
  constexpr long long kAbove = 1LL << 32;  // any more digits change nothing
  char const* p = SkipBlanks(pBegin, end);
  const bool bMinus = TakeSign(p, end);
  long long n = 0;
  for (; !end.AtEnd(p) && IsDigit(*p); ++p) {
    if (n < kAbove) n = 10 * n + (*p - '0');
  }
  if (bMinus) n = -n;
  if (n > std::numeric_limits<int>::max()) return std::numeric_limits<int>::max();
  if (n < std::numeric_limits<int>::min()) return std::numeric_limits<int>::min();
  return static_cast<int>(n);
}

}  // namespace

double ZuAtof(char const* szText) {
  char const* pStop;
  return ReadDouble(szText, Terminated(), &pStop);
}

double ZuAtof(char const* pBegin, char const* pEnd) {
  char const* pStop;
  return ReadDouble(pBegin, Bounded{pEnd}, &pStop);
}

double ZuAtof(char const* pBegin, char const* pEnd, char const** ppStop) {
  return ReadDouble(pBegin, Bounded{pEnd}, ppStop);
}

int ZuAtoi(char const* szText) { return ReadInt(szText, Terminated()); }

int ZuAtoi(char const* pBegin, char const* pEnd) { return ReadInt(pBegin, Bounded{pEnd}); }
