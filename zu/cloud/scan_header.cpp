#include "zu/cloud/scan_header.h"

#include <cstring>

#include "zu/cloud/file_buff.h"
#include "zu/cloud/internal/little_endian.h"

namespace {

constexpr std::uint32_t kHeaderMagic = 0xCEFFCEFF;

// Visits the fields behind the magic word in the order of the file, number by number. One walk
// serves both directions, so that they cannot differ.
template <class Header, class Number, class Stamp, class Text>
void VisitFields(Header& header, Number number, Stamp stamp, Text text) {
  number(header.m_uWord);
  stamp(header.m_iImportStart);
  stamp(header.m_iImportEnd);
  stamp(header.m_iSecondImportStart);
  stamp(header.m_iSecondImportEnd);
  for (auto& dValue : header.m_adValues) number(dValue);
  for (auto& aPair : header.m_adPairs) {
    for (auto& dValue : aPair) number(dValue);
  }
  for (auto& aTriple : header.m_adTriples) {
    for (auto& dValue : aTriple) number(dValue);
  }
  for (auto& dValue : header.m_adPair) number(dValue);
  for (auto& szText : header.m_aszTexts) text(szText);
  for (auto& dValue : header.m_adTriple) number(dValue);
  text(header.m_szText);
  for (auto& uWord : header.m_auWords) number(uWord);
  for (auto& uLong : header.m_auLongs) number(uLong);
}

// Reads a number where the file still has a byte of it.
template <class T>
void ReadNumber(ZuFileBuff& buff, T& value) {
  unsigned char aBytes[sizeof(T)];
  if (buff.Read(aBytes, sizeof aBytes) > 0) value = ZuLoadLittle<T>(aBytes);
}

}  // namespace

int ZuScanHeader::Read(ZuFileBuff& buff) {
  if (buff.ReadWord() != kHeaderMagic) return 0;
  const auto dropStamp = [&buff](std::int64_t&) { buff.Skip(sizeof(std::int64_t)); };
  VisitFields(
      *this, [&buff](auto& value) { ReadNumber(buff, value); }, dropStamp,
      [&buff](char* szText) { buff.Read(szText, TextSize); });
  return 1;
}

int ZuScanHeader::Write(std::FILE* fp) const {
  if (!fp) return 0;
  unsigned char aBytes[FileSize];
  unsigned char* pNext = ZuStoreLittle(aBytes, kHeaderMagic);
  const auto number = [&pNext](auto value) { pNext = ZuStoreLittle(pNext, value); };
  VisitFields(*this, number, number, [&pNext](const char* szText) {
    std::memcpy(pNext, szText, TextSize);
    pNext += TextSize;
  });
  return std::fwrite(aBytes, 1, sizeof aBytes, fp) == sizeof aBytes ? 1 : 0;
}
