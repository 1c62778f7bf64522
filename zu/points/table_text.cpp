#include "zu/points/internal/table_text.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace {

// Windows code page 1252 from 0x80 to 0x9F; Latin-1 has control characters there.
constexpr std::array<char16_t, 32> kCodePage1252 = {
    0x20AC, 0xFFFD, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0xFFFD, 0x017D, 0xFFFD, 0xFFFD, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0xFFFD, 0x017E, 0x0178};

unsigned Byte(std::string_view text, std::size_t i) { return static_cast<unsigned char>(text[i]); }

void Append(char32_t c, std::string* pText) {
  if (c < 0x80) {
    *pText += static_cast<char>(c);
  } else if (c < 0x800) {
    *pText += static_cast<char>(0xC0 | (c >> 6));
    *pText += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    *pText += static_cast<char>(0xE0 | (c >> 12));
    *pText += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    *pText += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    *pText += static_cast<char>(0xF0 | (c >> 18));
    *pText += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    *pText += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    *pText += static_cast<char>(0x80 | (c & 0x3F));
  }
}

// Bytes of a whole character of UTF-8 at i; 0 where there is none.
std::size_t CharacterAt(std::string_view text, std::size_t i) {
  const unsigned c = Byte(text, i);
  const std::size_t n = c < 0x80   ? 1
                        : c < 0xC2 ? 0
                        : c < 0xE0 ? 2
                        : c < 0xF0 ? 3
                        : c < 0xF5 ? 4
                                   : 0;
  if (n == 0 || i + n > text.size()) return 0;
  for (std::size_t k = 1; k < n; ++k) {
    if ((Byte(text, i + k) & 0xC0) != 0x80) return 0;
  }
  return n;
}

bool IsUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t n = CharacterAt(text, i);
    if (n == 0) return false;
    i += n;
  }
  return true;
}

// Without a mark, text of the western languages has a zero in every other byte.
bool HasZeros(std::string_view text, std::size_t uFirst) {
  if (text.size() < 4) return false;
  std::size_t uZeros = 0, uAll = 0;
  for (std::size_t i = uFirst; i < std::min<std::size_t>(text.size(), 400); i += 2) {
    uZeros += text[i] == '\0' ? 1U : 0U;
    ++uAll;
  }
  return 10 * uZeros > 8 * uAll;
}

std::string FromUtf16(std::string_view text, bool bBigEndian) {
  std::string strResult;
  char32_t high = 0;
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    const unsigned u = bBigEndian ? Byte(text, i) << 8 | Byte(text, i + 1)
                                  : Byte(text, i + 1) << 8 | Byte(text, i);
    if (u >= 0xD800 && u < 0xDC00) {
      high = u;
      continue;
    }
    const bool bLow = u >= 0xDC00 && u < 0xE000;
    Append(bLow ? (high != 0 ? 0x10000 + ((high - 0xD800) << 10) + (u - 0xDC00) : 0xFFFD) : u,
           &strResult);
    high = 0;
  }
  return strResult;
}

std::string FromLatin1(std::string_view text) {
  std::string strResult;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const unsigned u = Byte(text, i);
    Append(u >= 0x80 && u < 0xA0 ? kCodePage1252[u - 0x80] : u, &strResult);
  }
  return strResult;
}

}  // namespace

const char* GetZuTextEncodingName(eZuTextEncoding eEncoding) {
  switch (eEncoding) {
    case eZuTextUtf16Le:
    case eZuTextUtf16Be:
      return "UTF-16";
    case eZuTextLatin1:
      return "Latin-1";
    default:
      return "UTF-8";
  }
}

void ZuDecodeTable(std::string* pText, ZuTableForm* pForm) {
  const std::string_view text(*pText);
  if (text.substr(0, 3) == "\xEF\xBB\xBF") {
    pForm->m_bByteOrderMark = true;
    pText->erase(0, 3);
    return;
  }
  const bool bLittle = text.substr(0, 2) == "\xFF\xFE", bBig = text.substr(0, 2) == "\xFE\xFF";
  pForm->m_bByteOrderMark = bLittle || bBig;
  if (bLittle || (!bBig && HasZeros(text, 1))) {
    pForm->m_eEncoding = eZuTextUtf16Le;
  } else if (bBig || HasZeros(text, 0)) {
    pForm->m_eEncoding = eZuTextUtf16Be;
  } else if (!IsUtf8(text) && text.find('\0') == text.npos) {
    pForm->m_eEncoding = eZuTextLatin1;
    *pText = FromLatin1(text);
    return;
  } else {
    return;
  }
  *pText =
      FromUtf16(text.substr(pForm->m_bByteOrderMark ? 2 : 0), pForm->m_eEncoding == eZuTextUtf16Be);
}

bool ZuTextLines::Next(std::string_view* pLine) {
  if (m_rest.empty()) return false;
  const std::size_t uEnd = std::min(m_rest.find('\n'), m_rest.size());
  *pLine = m_rest.substr(0, uEnd);
  while (!pLine->empty() && pLine->back() == '\r') pLine->remove_suffix(1);
  m_rest.remove_prefix(std::min(uEnd + 1, m_rest.size()));
  ++m_uNumber;
  return true;
}
