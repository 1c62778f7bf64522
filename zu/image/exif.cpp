#include "zu/image/exif.h"

#include <libexif/exif-data.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <memory>

namespace {

constexpr double kFrameDiagonal = 43.2666153;  // of 36 by 24 mm [mm]

struct Free {
  void operator()(ExifData* p) const { exif_data_unref(p); }
};

ExifEntry* Find(ExifData* pData, ExifTag tag) {
  for (ExifContent* pContent : pData->ifd) {
    if (ExifEntry* pEntry = exif_content_get_entry(pContent, tag)) return pEntry;
  }
  return nullptr;
}

std::string Text(ExifData* pData, ExifTag tag) {
  const ExifEntry* pEntry = Find(pData, tag);
  if (pEntry == nullptr || pEntry->format != EXIF_FORMAT_ASCII || pEntry->data == nullptr)
    return {};
  std::string str(reinterpret_cast<const char*>(pEntry->data), pEntry->size);
  str.resize(std::min(str.find('\0'), str.size()));
  str.resize(str.find_last_not_of(' ') + 1);
  return str.substr(std::min(str.find_first_not_of(' '), str.size()));
}

// The first number; 0 where it is none, not finite or below 0.
double Number(ExifData* pData, ExifTag tag) {
  const ExifEntry* pEntry = Find(pData, tag);
  if (pEntry == nullptr || pEntry->data == nullptr || pEntry->components < 1 ||
      pEntry->size < exif_format_get_size(pEntry->format)) {
    return 0.0;
  }
  const ExifByteOrder order = exif_data_get_byte_order(pData);
  switch (pEntry->format) {
    case EXIF_FORMAT_SHORT:
      return exif_get_short(pEntry->data, order);
    case EXIF_FORMAT_LONG:
      return exif_get_long(pEntry->data, order);
    case EXIF_FORMAT_RATIONAL: {
      const ExifRational value = exif_get_rational(pEntry->data, order);
      return value.denominator == 0 ? 0.0
                                    : static_cast<double>(value.numerator) / value.denominator;
    }
    default:
      return 0.0;
  }
}

int Whole(ExifData* pData, ExifTag tag) {
  return static_cast<int>(std::clamp(Number(pData, tag), 0.0, static_cast<double>(INT_MAX)));
}

// Millimetres of the unit of a resolution; 0 for one that is unknown.
double UnitLength(int iUnit) {
  switch (iUnit) {
    case 0:  // left out
    case 2:
      return 25.4;
    case 3:
      return 10.0;
    case 4:
      return 1.0;
    case 5:
      return 0.001;
    default:
      return 0.0;
  }
}

}  // namespace

bool ZuExif::GetPixelSize(int iWidth, int iHeight, double* pdSize, bool* pbNominal) const {
  if (iWidth < 1 || iHeight < 1) return false;
  const double dLonger = std::max(iWidth, iHeight);
  if (m_dPlaneX > 0.0) {
    const double dTaken = std::max(m_iWidth, m_iHeight);
    *pdSize = (dTaken > 0.0 ? dTaken / dLonger : 1.0) / m_dPlaneX;
    *pbNominal = false;
    return true;
  }
  if (m_dFocalLength <= 0.0 || m_dFocalLength35 <= 0.0) return false;
  const double dDiagonal = std::hypot(static_cast<double>(iWidth), static_cast<double>(iHeight));
  *pdSize = kFrameDiagonal * m_dFocalLength / m_dFocalLength35 / dDiagonal;
  *pbNominal = true;
  return true;
}

bool ZuReadExif(std::string_view bytes, ZuExif* pExif) {
  using namespace std::string_view_literals;
  constexpr std::string_view kPrefix = "Exif\0\0"sv;
  constexpr std::size_t kMost = 1 << 20;
  if (bytes.size() > kMost) return false;
  std::string whole(bytes);
  if (!bytes.starts_with(kPrefix)) whole.insert(0, kPrefix);
  const std::unique_ptr<ExifData, Free> pData(exif_data_new());
  if (!pData) return false;
  // As it stands in the file: without options no tag is added, converted or passed over.
  for (int iOption = 1; iOption <= 4; iOption *= 2) {
    exif_data_unset_option(pData.get(), static_cast<ExifDataOption>(iOption));
  }
  exif_data_load_data(pData.get(), reinterpret_cast<const unsigned char*>(whole.data()),
                      static_cast<unsigned>(whole.size()));
  const auto hasEntries = [](const ExifContent* pContent) { return pContent->count > 0; };
  if (std::none_of(std::begin(pData->ifd), std::end(pData->ifd), hasEntries)) return false;

  ZuExif exif;
  exif.m_strMake = Text(pData.get(), EXIF_TAG_MAKE);
  exif.m_strModel = Text(pData.get(), EXIF_TAG_MODEL);
  exif.m_strTime = Text(pData.get(), EXIF_TAG_DATE_TIME_ORIGINAL);
  exif.m_dFocalLength = Number(pData.get(), EXIF_TAG_FOCAL_LENGTH);
  exif.m_dFocalLength35 = Number(pData.get(), EXIF_TAG_FOCAL_LENGTH_IN_35MM_FILM);
  const double dUnit = UnitLength(Whole(pData.get(), EXIF_TAG_FOCAL_PLANE_RESOLUTION_UNIT));
  if (dUnit > 0.0) {
    exif.m_dPlaneX = Number(pData.get(), EXIF_TAG_FOCAL_PLANE_X_RESOLUTION) / dUnit;
    exif.m_dPlaneY = Number(pData.get(), EXIF_TAG_FOCAL_PLANE_Y_RESOLUTION) / dUnit;
  }
  exif.m_iWidth = Whole(pData.get(), EXIF_TAG_PIXEL_X_DIMENSION);
  exif.m_iHeight = Whole(pData.get(), EXIF_TAG_PIXEL_Y_DIMENSION);
  const int iOrientation = Whole(pData.get(), EXIF_TAG_ORIENTATION);
  if (iOrientation >= 1 && iOrientation <= 8) exif.m_iOrientation = iOrientation;
  *pExif = exif;
  return true;
}
