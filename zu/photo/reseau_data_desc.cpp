#include "zu/photo/reseau_data_desc.h"

#include "zu/photo/reseau_file.h"

void ZuReseauDataDesc::Set(const String& name, unsigned int uSubId) {
  m_sName = name;
  m_uSubId = uSubId;
}

void ZuReseauDataDesc::Set(const ZuReseauFile* pFile) {
  if (pFile == nullptr) return;
  m_sName = pFile->GetName();
  m_uSubId = pFile->GetSubId();
  m_sComment = pFile->GetComment();
}

bool ZuReseauDataDesc::Match(const ZuReseauDataDesc& other) const {
  return fcompare(m_sName, other.m_sName) == 0;
}

bool ZuReseauDataDesc::ExactMatch(const ZuReseauDataDesc& other) const {
  return Match(other) && m_uSubId == other.m_uSubId;
}

bool ZuReseauDataDesc::operator==(const ZuReseauDataDesc& other) const {
  return other.m_uSubId != 0 ? ExactMatch(other) : Match(other);
}
