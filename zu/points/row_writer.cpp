#include "zu/points/internal/row_writer.h"

#include <charconv>
#include <cstring>
#include <locale>

#include "zu/foundation/numbers.h"

namespace {

bool HasPlainNumbers(std::ios_base::fmtflags flags) {
  const auto eBase = flags & std::ios_base::basefield;
  return (eBase == std::ios_base::dec || eBase == std::ios_base::fmtflags{}) &&
         !(flags & (std::ios_base::floatfield | std::ios_base::showpos | std::ios_base::showpoint |
                    std::ios_base::uppercase));
}

// The number [pText, pEnd), which stands one behind the field's start, moved to the right of it.
// Returns the end of the field.
char* AlignRight(char* pField, char* pEnd, int iWidth, char cFill) {
  char* const pText = pField + 1;
  *pField = ' ';
  const auto uLength = static_cast<std::size_t>(pEnd - pText);
  const auto uWidth = static_cast<std::size_t>(iWidth);
  if (uLength >= uWidth) return pEnd;
  std::memmove(pText + (uWidth - uLength), pText, uLength);
  std::memset(pText, cFill, uWidth - uLength);
  return pText + uWidth;
}

}  // namespace

ZuRowWriter::ZuRowWriter(std::ostream& os) : m_os(os), m_cFill(os.fill()) {
  m_os.width(0);
  m_os.precision(16);
  if (HasPlainNumbers(os.flags())) return;
  m_pOdd = std::make_unique<std::ostringstream>();
  m_pOdd->imbue(std::locale::classic());
  m_pOdd->flags(os.flags());
  m_pOdd->precision(16);
}

void ZuRowWriter::Number(int iValue, int iWidth) {
  if (m_pOdd) return OddNumber(iValue, iWidth);
  char* const pField = Room();
  char* const pEnd = std::to_chars(pField + 1, pField + kRoom, iValue).ptr;
  m_uCount = static_cast<std::size_t>(AlignRight(pField, pEnd, iWidth, m_cFill) - m_acBuffer);
}

void ZuRowWriter::Number(unsigned int uValue, int iWidth) {
  if (m_pOdd) return OddNumber(uValue, iWidth);
  char* const pField = Room();
  char* const pEnd = std::to_chars(pField + 1, pField + kRoom, uValue).ptr;
  m_uCount = static_cast<std::size_t>(AlignRight(pField, pEnd, iWidth, m_cFill) - m_acBuffer);
}

void ZuRowWriter::Number(double dValue, int iWidth) {
  static_assert(kZuGeneral16Size + 1 <= kRoom);
  if (m_pOdd) return OddNumber(dValue, iWidth);
  char* const pField = Room();
  char* const pEnd = ZuFormatGeneral16(pField + 1, dValue);
  m_uCount = static_cast<std::size_t>(AlignRight(pField, pEnd, iWidth, m_cFill) - m_acBuffer);
}

template <class T>
void ZuRowWriter::OddNumber(T value, int iWidth) {
  m_pOdd->str(std::string());
  *m_pOdd << value;
  Right(m_pOdd->str(), iWidth);
}

void ZuRowWriter::Right(std::string_view text, int iWidth) {
  Text(" ");
  if (text.size() < static_cast<std::size_t>(iWidth)) {
    Fill(static_cast<std::size_t>(iWidth) - text.size());
  }
  Text(text);
}

void ZuRowWriter::Quoted(std::string_view text, int iWidth) {
  Text(" \"");
  Text(text);
  Text("\"");
  if (text.size() + 2 < static_cast<std::size_t>(iWidth)) {
    Fill(static_cast<std::size_t>(iWidth) - text.size() - 2);
  }
}

void ZuRowWriter::Text(std::string_view text) {
  while (!text.empty()) {
    if (m_uCount == kSize) Flush();
    const std::size_t n = text.size() < kSize - m_uCount ? text.size() : kSize - m_uCount;
    std::memcpy(m_acBuffer + m_uCount, text.data(), n);
    m_uCount += n;
    text.remove_prefix(n);
  }
}

void ZuRowWriter::Fill(std::size_t n) {
  for (; n > 0; --n) Text(std::string_view(&m_cFill, 1));
}

char* ZuRowWriter::Room() {
  if (kSize - m_uCount < kRoom) Flush();
  return m_acBuffer + m_uCount;
}

bool ZuRowWriter::Flush() {
  if (m_uCount > 0) m_os.write(m_acBuffer, static_cast<std::streamsize>(m_uCount));
  m_uCount = 0;
  return m_os.good();
}
