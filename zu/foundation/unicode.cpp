#include "zu/foundation/unicode.h"

#include <cstdint>
#include <cstring>
#include <cwchar>

namespace {

constexpr char32_t kReplacement = 0xFFFD;  // stands for what is no character
constexpr char32_t kLastCharacter = 0x10FFFF;
constexpr bool kWideIs16Bit = sizeof(wchar_t) == 2;

bool IsSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

// Takes one character off a terminated UTF-8 text. A sequence that is cut, overlong or otherwise no
// character gives U+FFFD and costs the bytes that were good so far, one at least; a terminator is
// never passed over.
char32_t TakeUtf8(char const*& p) {
  const auto first = static_cast<unsigned char>(*p++);
  if (first < 0x80) return first;
  if (first < 0xC2 || first > 0xF4) return kReplacement;

  const int nFollow = first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
  char32_t c = first & (0x3F >> nFollow);
  for (int i = 0; i < nFollow; ++i) {
    const auto next = static_cast<unsigned char>(*p);
    // The second byte alone decides about overlong forms, surrogates and the end of the range.
    unsigned low = 0x80, high = 0xBF;
    if (i == 0 && first == 0xE0) low = 0xA0;
    if (i == 0 && first == 0xED) high = 0x9F;
    if (i == 0 && first == 0xF0) low = 0x90;
    if (i == 0 && first == 0xF4) high = 0x8F;
    if (next < low || next > high) return kReplacement;
    c = (c << 6) | (next & 0x3F);
    ++p;
  }
  return c;
}

wchar_t* PutWide(wchar_t* p, char32_t c) {
  if (kWideIs16Bit && c > 0xFFFF) {
    *p++ = static_cast<wchar_t>(0xD800 + ((c - 0x10000) >> 10));
    *p++ = static_cast<wchar_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
  } else {
    *p++ = static_cast<wchar_t>(c);
  }
  return p;
}

char32_t TakeWide(wchar_t const*& p) {
  const auto c = static_cast<char32_t>(*p++);
  if (kWideIs16Bit && c >= 0xD800 && c < 0xDC00) {
    const auto next = static_cast<char32_t>(*p);
    if (next >= 0xDC00 && next < 0xE000) {
      ++p;
      return 0x10000 + ((c - 0xD800) << 10) + (next - 0xDC00);
    }
  }
  return c > kLastCharacter || IsSurrogate(c) ? kReplacement : c;
}

char* PutUtf8(char* p, char32_t c) {
  if (c < 0x80) {
    *p++ = static_cast<char>(c);
    return p;
  }
  const int nFollow = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
  const unsigned uMark = 0xFF00u >> (nFollow + 1) & 0xFF;  // as many ones as there are bytes
  *p++ = static_cast<char>(uMark | (c >> (6 * nFollow)));
  for (int i = nFollow - 1; i >= 0; --i) *p++ = static_cast<char>(0x80 | (c >> (6 * i) & 0x3F));
  return p;
}

wchar_t* ToWide(char const* szText) {
  if (szText == nullptr || *szText == '\0') return nullptr;
  auto* const pBuffer = new wchar_t[std::strlen(szText) + 2];
  wchar_t* pOut = pBuffer;
  while (*szText != '\0') pOut = PutWide(pOut, TakeUtf8(szText));
  *pOut = L'\0';
  return pBuffer;
}

char* ToUtf8(wchar_t const* szText) {
  if (szText == nullptr || *szText == L'\0') return nullptr;
  constexpr std::size_t kMaxBytes = kWideIs16Bit ? 3 : 4;  // of one wide character
  auto* const pBuffer = new char[kMaxBytes * std::wcslen(szText) + 1];
  char* pOut = pBuffer;
  while (*szText != L'\0') pOut = PutUtf8(pOut, TakeWide(szText));
  *pOut = '\0';
  return pBuffer;
}

}  // namespace

AnsiToUni::AnsiToUni(char const* szText) : m_pBuffer(ToWide(szText)) {}

AnsiToUni::AnsiToUni(std::string const& strText) : m_pBuffer(ToWide(strText.c_str())) {}

AnsiToUni::~AnsiToUni() { delete[] m_pBuffer; }

UniToAnsi::UniToAnsi(wchar_t const* szText) : m_pBuffer(ToUtf8(szText)) {}

UniToAnsi::UniToAnsi(std::wstring const& strText) : m_pBuffer(ToUtf8(strText.c_str())) {}

UniToAnsi::~UniToAnsi() { delete[] m_pBuffer; }
