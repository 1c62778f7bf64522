// What reseau formats ask of a photo.
#include "zu/foundation/file_name.h"
#include "zu/foundation/internal/to_int.h"
#include "zu/photo/photo.h"
#include "zu/photo/reseau_file.h"

ZuReseauFile::ZuReseauFile(const ZuPhoto* pPhoto) : ZuReseauFile() {
  if (pPhoto == nullptr) return;
  m_bValid = true;
  m_sComment = ZuGetFilenameNoExt(pPhoto->GetName());
  m_PhotoRegion = pPhoto->GetBikoRegion();
  m_iExifPixelWidth = zu::internal::ToInt(pPhoto->GetDigiRegion().Width() + 1.0);
  m_iExifPixelHeight = zu::internal::ToInt(pPhoto->GetDigiRegion().Height() + 1.0);
}

ZuReseauFile* ZuReseaufileList::FindReseauFile(const ZuPhoto* pPhoto) const {
  return pPhoto != nullptr ? FindReseauFile(pPhoto->GetReseauData()) : nullptr;
}
