// A second, plain reader of cloud files, field by field over a text in memory.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "zu/cloud/scan_header.h"
#include "zu/cloud/scan_point3d.h"

struct ReferenceCloud {
  std::string strName;
  int iFlag = 2;
  ZuScanHeader header;
  std::vector<ZuScanPoint3d> points;
};

class ReferenceReader {
 public:
  explicit ReferenceReader(std::string strBytes) : m_strBytes(std::move(strBytes)) {}

  // The good clouds; bRefused when the file is none.
  std::vector<ReferenceCloud> Read(bool* pbRefused) {
    std::vector<ReferenceCloud> clouds;
    *pbRefused = Word() != 0xBABEF00Du || static_cast<int>(Word()) < 2;
    if (*pbRefused) return clouds;
    const std::uint32_t uCount = Word();
    for (std::uint32_t i = 0; i < uCount && m_uPos < m_strBytes.size(); ++i) {
      ReferenceCloud cloud;
      if (ReadCloud(cloud)) clouds.push_back(cloud);
    }
    return clouds;
  }

 private:
  // At or beyond the end nothing happens; what is missing of a straddling field is zero.
  void Field(void* pTarget, std::size_t uSize) {
    if (m_uPos >= m_strBytes.size()) return;
    std::memset(pTarget, 0, uSize);
    std::memcpy(pTarget, m_strBytes.data() + m_uPos, std::min(uSize, m_strBytes.size() - m_uPos));
    m_uPos = std::min(m_uPos + uSize, m_strBytes.size());
  }
  template <class... T>
  void Fields(T&... fields) {
    (Field(&fields, sizeof fields), ...);
  }
  std::uint32_t Word() {
    std::uint32_t uWord = 0;
    Fields(uWord);
    return uWord;
  }

  bool ReadCloud(ReferenceCloud& cloud) {
    if (Word() != 0xBABEBEEBu) return false;
    char acName[61] = {};
    Field(acName, 60);
    cloud.strName = acName;
    Fields(cloud.iFlag);
    ReadHeader(cloud.header);
    const std::uint32_t uCount = Word();
    for (std::uint32_t i = 0; i < uCount; ++i) {
      ZuScanPoint3d p;
      if (Word() != 0xBABEBABEu) break;
      Fields(p.x, p.y, p.z, p.m_fDX, p.m_fDY, p.m_fDZ, p.m_fNX, p.m_fNY, p.m_fNZ, p.m_sFlags,
             p.m_uColor);
      cloud.points.push_back(p);
    }
    return true;
  }

  void ReadHeader(ZuScanHeader& h) {
    if (Word() != 0xCEFFCEFFu) return;
    Fields(h.m_uWord);
    std::int64_t aiStamps[4];
    for (auto& iStamp : aiStamps) Fields(iStamp);
    for (auto& d : h.m_adValues) Fields(d);
    for (auto& pair : h.m_adPairs) Fields(pair[0], pair[1]);
    for (auto& triple : h.m_adTriples) Fields(triple[0], triple[1], triple[2]);
    Fields(h.m_adPair[0], h.m_adPair[1]);
    for (auto& szText : h.m_aszTexts) Field(szText, 30);
    for (auto& d : h.m_adTriple) Fields(d);
    Field(h.m_szText, 30);
    for (auto& u : h.m_auWords) Fields(u);
    for (auto& u : h.m_auLongs) Fields(u);
  }

  std::string m_strBytes;
  std::size_t m_uPos = 0;
};
