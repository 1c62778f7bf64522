// What the readers of the formats share.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "zu/image/image_file.h"

struct ZuImageSource {
  std::string_view m_Bytes;
  ZuImage* m_pImage;  // null: the header alone
  ZuImageInfo* m_pInfo;
  ZuFindingList* m_pFindings;
  std::string m_strName;

  void Add(eZuSeverity eSeverity, const std::string& strText, const std::string& strRight = {}) {
    ZuFinding finding;
    finding.m_strFile = m_strName;
    finding.m_eSeverity = eSeverity;
    finding.m_strText = strText;
    finding.m_strRight = strRight;
    m_pFindings->Add(std::move(finding));
  }
  void AddError(const std::string& strText, const std::string& strRight = {}) {
    Add(eZuSeverityError, strText, strRight);
  }

  // Bytes of a picture, or of a part of it, that a file of this size may hold: what memory is asked
  // for at one time stays below, whatever numbers the file tells.
  std::uint64_t Room() const;
  // Weighs the size of m_pInfo against the file's, then makes the picture. False with an error.
  bool MakeImage();
};

// Each fills m_pInfo (but the format) and the picture; false with an error.
bool ZuReadJpeg(ZuImageSource* pSource);
bool ZuReadPng(ZuImageSource* pSource);
bool ZuReadTiff(ZuImageSource* pSource);
