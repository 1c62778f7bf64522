// What reseau formats ask of a photo.
#include <algorithm>
#include <cmath>
#include <limits>

#include "zu/foundation/file_name.h"
#include "zu/photo/photo.h"
#include "zu/photo/reseau_file.h"

namespace {

int PixelCount(double dExtent) {
  const double d = dExtent + 1.0;
  if (std::isnan(d)) return 0;
  return static_cast<int>(std::clamp(d, static_cast<double>(std::numeric_limits<int>::min()),
                                     static_cast<double>(std::numeric_limits<int>::max())));
}

}  // namespace

ZuReseauFile::ZuReseauFile(const ZuPhoto* pPhoto) : ZuReseauFile() {
  if (pPhoto == nullptr) return;
  m_bValid = true;
  m_sComment = ZuGetFilenameNoExt(pPhoto->GetName());
  m_PhotoRegion = pPhoto->GetBikoRegion();
  m_iExifPixelWidth = PixelCount(pPhoto->GetDigiRegion().Width());
  m_iExifPixelHeight = PixelCount(pPhoto->GetDigiRegion().Height());
}

ZuReseauFile* ZuReseaufileList::FindReseauFile(const ZuPhoto* pPhoto) const {
  return pPhoto != nullptr ? FindReseauFile(pPhoto->GetReseauData()) : nullptr;
}
