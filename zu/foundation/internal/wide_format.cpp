#include <cstdint>
#include <cstring>
#include <cwchar>
#include <string>

#include "zu/foundation/internal/c_format.h"
#include "zu/foundation/unicode.h"

namespace zu::internal {
namespace {

// Walks a wide format and prints one conversion after the other through the narrow formatter: the
// run-time's own wide one gives up on bytes that are no characters of the process locale.
class WideFormatter {
 public:
  WideFormatter(wchar_t* pOut, std::size_t nSize, std::va_list args)
      : m_pOut(pOut), m_pEnd(pOut + nSize - 1), m_nLimit(static_cast<int>(nSize)) {
    va_copy(m_args, args);
  }
  ~WideFormatter() { va_end(m_args); }

  WideFormatter(WideFormatter const&) = delete;
  WideFormatter& operator=(WideFormatter const&) = delete;

  wchar_t* Run(wchar_t const* p) {
    while (*p != L'\0' && m_pOut < m_pEnd) {
      if (*p != L'%') {
        Put(*p++);
      } else if (p[1] == L'%') {
        Put(L'%');
        p += 2;
      } else {
        p = Convert(p + 1);
      }
    }
    *m_pOut = L'\0';
    return m_pOut;
  }

 private:
  enum Length { kNone, kChar, kShort, kLong, kLongLong, kSize, kMax, kDifference, kLongDouble };

  void Put(wchar_t c) {
    if (m_pOut < m_pEnd) *m_pOut++ = c;
  }

  // Flags, width, precision and length of one conversion, then its argument. Returns what follows.
  wchar_t const* Convert(wchar_t const* p) {
    m_strFlags.clear();
    while (*p != L'\0' && std::wcschr(L"-+ #0'", *p)) m_strFlags += static_cast<char>(*p++);
    m_iWidth = Number(p, 0);
    if (m_iWidth < 0) {
      m_strFlags += '-';
      m_iWidth = -m_iWidth;
    }
    m_iPrecision = -1;
    if (*p == L'.') m_iPrecision = Number(++p, 0);
    m_eLength = TakeLength(p);
    if (*p == L'\0') return p;
    Argument(*p);
    return p + 1;
  }

  // Digits or an argument, limited to what the target holds: more would be cut.
  int Number(wchar_t const*& p, int iNumber) {
    if (*p == L'*') {
      ++p;
      iNumber = va_arg(m_args, int);
    }
    for (; *p >= L'0' && *p <= L'9'; ++p) {
      if (iNumber <= m_nLimit) iNumber = 10 * iNumber + static_cast<int>(*p - L'0');
    }
    return iNumber > m_nLimit ? m_nLimit : iNumber < -m_nLimit ? -m_nLimit : iNumber;
  }

  static Length TakeLength(wchar_t const*& p) {
    if (*p == L'h' && p[1] == L'h') return p += 2, kChar;
    if (*p == L'h') return ++p, kShort;
    if (*p == L'l' && p[1] == L'l') return p += 2, kLongLong;
    if (*p == L'l') return ++p, kLong;
    if (*p == L'z') return ++p, kSize;
    if (*p == L'j') return ++p, kMax;
    if (*p == L't') return ++p, kDifference;
    if (*p == L'L') return ++p, kLongDouble;
    return kNone;
  }

  void Argument(wchar_t cConversion) {
    switch (cConversion) {
      case L'd':
      case L'i':
        return PutNumber("lld", TakeSigned());
      case L'u':
        return PutNumber("llu", TakeUnsigned());
      case L'o':
        return PutNumber("llo", TakeUnsigned());
      case L'x':
        return PutNumber("llx", TakeUnsigned());
      case L'X':
        return PutNumber("llX", TakeUnsigned());
      case L'p':
        return PutNumber("p", va_arg(m_args, void*));
      case L'e':
      case L'E':
      case L'f':
      case L'F':
      case L'g':
      case L'G':
      case L'a':
      case L'A':
        return Double(static_cast<char>(cConversion));
      case L'c':
      case L'C':
        return Character(cConversion);
      case L's':
      case L'S':
        return Text(cConversion);
      default:
        Put(cConversion);
    }
  }

  long long TakeSigned() {
    switch (m_eLength) {
      case kChar:
        return static_cast<signed char>(va_arg(m_args, int));
      case kShort:
        return static_cast<short>(va_arg(m_args, int));
      case kLong:
        return va_arg(m_args, long);
      case kLongLong:
        return va_arg(m_args, long long);
      case kSize:
      case kDifference:
        return va_arg(m_args, std::ptrdiff_t);
      case kMax:
        return va_arg(m_args, std::intmax_t);
      default:
        return va_arg(m_args, int);
    }
  }

  unsigned long long TakeUnsigned() {
    switch (m_eLength) {
      case kChar:
        return static_cast<unsigned char>(va_arg(m_args, unsigned));
      case kShort:
        return static_cast<unsigned short>(va_arg(m_args, unsigned));
      case kLong:
        return va_arg(m_args, unsigned long);
      case kLongLong:
        return va_arg(m_args, unsigned long long);
      case kSize:
      case kDifference:
        return va_arg(m_args, std::size_t);
      case kMax:
        return va_arg(m_args, std::uintmax_t);
      default:
        return va_arg(m_args, unsigned);
    }
  }

  template <class T>
  void PutNumber(char const* szType, T value) {
    std::string strSpec = "%" + m_strFlags + "*.*" + szType;
    char szPart[kPartSize];
    const int n = PrintPart(szPart, sizeof(szPart), strSpec.c_str(), m_iWidth, m_iPrecision, value);
    for (int i = 0; i < n; ++i) Put(static_cast<unsigned char>(szPart[i]));
  }

  void Double(char cConversion) {
    const char szType[] = {cConversion, '\0'};
    const char szLongType[] = {'L', cConversion, '\0'};
    if (m_eLength == kLongDouble) return PutNumber(szLongType, va_arg(m_args, long double));
    PutNumber(szType, va_arg(m_args, double));
  }

  void Character(wchar_t cConversion) {
    const bool bWide = m_eLength == kLong || cConversion == L'C';
    const wchar_t c = bWide ? static_cast<wchar_t>(va_arg(m_args, std::wint_t))
                            : static_cast<wchar_t>(static_cast<unsigned char>(va_arg(m_args, int)));
    m_iPrecision = -1;
    Padded(&c, 1);
  }

  void Text(wchar_t cConversion) {
    if (m_eLength == kLong || cConversion == L'S') {
      wchar_t const* const szText = va_arg(m_args, wchar_t const*);
      return Padded(szText ? szText : L"(null)", static_cast<std::size_t>(m_nLimit));
    }
    char const* szText = va_arg(m_args, char const*);
    if (szText == nullptr) szText = "(null)";
    const int nMax = m_iPrecision >= 0 ? m_iPrecision : m_nLimit;
    const AnsiToUni wide(std::string(szText, BytesOf(szText, nMax)));
    Padded(wide() ? wide() : L"", static_cast<std::size_t>(m_nLimit));
  }

  // Bytes of the first n characters of a UTF-8 text, by their first bytes. Nothing behind them is
  // looked at: a text with a precision need not be terminated.
  static std::size_t BytesOf(char const* szText, int n) {
    std::size_t i = 0;
    for (int k = 0; k < n && szText[i] != '\0'; ++k) {
      const auto uFirst = static_cast<unsigned char>(szText[i++]);
      int nFollow = uFirst < 0xC2 ? 0 : uFirst < 0xE0 ? 1 : uFirst < 0xF0 ? 2 : 3;
      for (; nFollow > 0 && (szText[i] & 0xC0) == 0x80; --nFollow) ++i;
    }
    return i;
  }

  // At most nMax characters, and no more than the precision, in a field of the width. Nothing
  // behind them is looked at.
  void Padded(wchar_t const* szText, std::size_t nMax) {
    if (m_iPrecision >= 0 && static_cast<std::size_t>(m_iPrecision) < nMax) {
      nMax = static_cast<std::size_t>(m_iPrecision);
    }
    std::size_t n = 0;
    while (n < nMax && szText[n] != L'\0') ++n;
    const int nPad = m_iWidth - static_cast<int>(n);
    const bool bLeft = m_strFlags.find('-') != std::string::npos;
    for (int i = 0; i < nPad && !bLeft; ++i) Put(L' ');
    for (std::size_t i = 0; i < n; ++i) Put(szText[i]);
    for (int i = 0; i < nPad && bLeft; ++i) Put(L' ');
  }

  static constexpr std::size_t kPartSize = 4096;  // one number: width and precision are limited

  wchar_t* m_pOut;
  wchar_t* const m_pEnd;  // where the terminator still fits
  const int m_nLimit;
  std::va_list m_args;
  std::string m_strFlags;
  int m_iWidth = 0;
  int m_iPrecision = -1;
  Length m_eLength = kNone;
};

}  // namespace

int FormatInto(wchar_t* pOut, std::size_t nSize, wchar_t const* szFormat, std::va_list args) {
  return static_cast<int>(WideFormatter(pOut, nSize, args).Run(szFormat) - pOut);
}

}  // namespace zu::internal
