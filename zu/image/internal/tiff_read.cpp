#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "zu/image/internal/image_source.h"

namespace {

// A file in memory, and the first fault the library tells of it.
struct Memory {
  std::string_view bytes;
  std::uint64_t uPlace = 0;
  std::string strFault;
};

Memory* Of(thandle_t h) { return static_cast<Memory*>(h); }

tmsize_t OnRead(thandle_t h, void* pTo, tmsize_t iSize) {
  Memory* p = Of(h);
  if (iSize <= 0 || p->uPlace >= p->bytes.size()) return 0;
  const std::size_t uSize =
      std::min<std::size_t>(static_cast<std::size_t>(iSize), p->bytes.size() - p->uPlace);
  std::memcpy(pTo, p->bytes.data() + p->uPlace, uSize);
  p->uPlace += uSize;
  return static_cast<tmsize_t>(uSize);
}

tmsize_t OnWrite(thandle_t, void*, tmsize_t) { return 0; }

toff_t OnSeek(thandle_t h, toff_t uTo, int iFrom) {
  Memory* p = Of(h);
  const std::uint64_t uBase = iFrom == SEEK_CUR   ? p->uPlace
                              : iFrom == SEEK_END ? p->bytes.size()
                                                  : std::uint64_t{0};
  return p->uPlace = uBase + uTo;
}

int OnClose(thandle_t) { return 0; }

toff_t OnSize(thandle_t h) { return Of(h)->bytes.size(); }

int OnFault(TIFF*, void* pUser, const char*, const char* szFormat, va_list arguments) {
  std::string* pstrFault = &static_cast<Memory*>(pUser)->strFault;
  char acText[200];
  if (pstrFault->empty() && std::vsnprintf(acText, sizeof(acText), szFormat, arguments) > 0) {
    *pstrFault = acText;
  }
  return 1;
}

int OnWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

struct Close {
  void operator()(TIFF* p) const { TIFFClose(p); }
  void operator()(TIFFOpenOptions* p) const { TIFFOpenOptionsFree(p); }
};
using File = std::unique_ptr<TIFF, Close>;

File Open(Memory* pMemory, std::uint64_t uRoom) {
  const std::unique_ptr<TIFFOpenOptions, Close> pOptions(TIFFOpenOptionsAlloc());
  TIFFOpenOptionsSetMaxSingleMemAlloc(pOptions.get(), static_cast<tmsize_t>(uRoom));
  TIFFOpenOptionsSetErrorHandlerExtR(pOptions.get(), OnFault, pMemory);
  TIFFOpenOptionsSetWarningHandlerExtR(pOptions.get(), OnWarning, pMemory);
  return File(TIFFClientOpenExt("picture", "rm", pMemory, OnRead, OnWrite, OnSeek, OnClose, OnSize,
                                nullptr, nullptr, pOptions.get()));
}

// How the samples stand in the file.
struct Form {
  std::uint32_t uWidth = 0, uHeight = 0;
  std::uint16_t uBits = 1, uSamples = 1, uPhotometric = 0, uPlanar = 0, uFormat = 0, uPacking = 0;
  // Rows are read as they are; else the library makes R, G, B, A of 8 bits of them.
  bool bDirect = false;
};

Form ReadForm(TIFF* p) {
  Form form;
  TIFFGetField(p, TIFFTAG_IMAGEWIDTH, &form.uWidth);
  TIFFGetField(p, TIFFTAG_IMAGELENGTH, &form.uHeight);
  TIFFGetFieldDefaulted(p, TIFFTAG_BITSPERSAMPLE, &form.uBits);
  TIFFGetFieldDefaulted(p, TIFFTAG_SAMPLESPERPIXEL, &form.uSamples);
  TIFFGetFieldDefaulted(p, TIFFTAG_PLANARCONFIG, &form.uPlanar);
  TIFFGetFieldDefaulted(p, TIFFTAG_SAMPLEFORMAT, &form.uFormat);
  TIFFGetFieldDefaulted(p, TIFFTAG_COMPRESSION, &form.uPacking);
  TIFFGetField(p, TIFFTAG_PHOTOMETRIC, &form.uPhotometric);
  if (form.uPhotometric == PHOTOMETRIC_YCBCR && form.uPacking == COMPRESSION_JPEG) {
    TIFFSetField(p, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    form.uPhotometric = PHOTOMETRIC_RGB;
  }
  const bool bGrey =
      form.uPhotometric == PHOTOMETRIC_MINISBLACK || form.uPhotometric == PHOTOMETRIC_MINISWHITE;
  const bool bColour = form.uPhotometric == PHOTOMETRIC_RGB;
  form.bDirect =
      (form.uBits == 8 || form.uBits == 16) && form.uFormat == SAMPLEFORMAT_UINT &&
      (form.uPlanar == PLANARCONFIG_CONTIG || form.uSamples == 1) &&
      ((bGrey && form.uSamples <= 2) || (bColour && (form.uSamples == 3 || form.uSamples == 4)));
  return form;
}

double Positive(float f) { return f > 0.0F && f < 1e9F ? static_cast<double>(f) : 0.0; }

// Its directory of EXIF data; the current one is the picture's no longer.
void ReadExifDirectory(TIFF* p, ZuExif* pExif) {
  char* szText = nullptr;
  if (TIFFGetField(p, TIFFTAG_MAKE, &szText) && szText) pExif->m_strMake = szText;
  if (TIFFGetField(p, TIFFTAG_MODEL, &szText) && szText) pExif->m_strModel = szText;
  std::uint16_t uOrientation = 1;
  if (TIFFGetField(p, TIFFTAG_ORIENTATION, &uOrientation) && uOrientation >= 1 &&
      uOrientation <= 8) {
    pExif->m_iOrientation = uOrientation;
  }
  toff_t uPlace = 0;
  if (!TIFFGetField(p, TIFFTAG_EXIFIFD, &uPlace) || !TIFFReadEXIFDirectory(p, uPlace)) return;
  float fValue = 0.0F;
  if (TIFFGetField(p, EXIFTAG_FOCALLENGTH, &fValue)) pExif->m_dFocalLength = Positive(fValue);
  std::uint16_t uValue = 0;
  if (TIFFGetField(p, EXIFTAG_FOCALLENGTHIN35MMFILM, &uValue)) pExif->m_dFocalLength35 = uValue;
  std::uint16_t uUnit = 2;
  TIFFGetField(p, EXIFTAG_FOCALPLANERESOLUTIONUNIT, &uUnit);
  const double dUnit = uUnit == 2 ? 25.4 : uUnit == 3 ? 10.0 : 0.0;
  if (dUnit > 0.0) {
    if (TIFFGetField(p, EXIFTAG_FOCALPLANEXRESOLUTION, &fValue)) {
      pExif->m_dPlaneX = Positive(fValue) / dUnit;
    }
    if (TIFFGetField(p, EXIFTAG_FOCALPLANEYRESOLUTION, &fValue)) {
      pExif->m_dPlaneY = Positive(fValue) / dUnit;
    }
  }
  std::uint32_t uSize = 0;
  if (TIFFGetField(p, EXIFTAG_PIXELXDIMENSION, &uSize)) {
    pExif->m_iWidth = static_cast<int>(std::min<std::uint32_t>(uSize, 1 << 30));
  }
  if (TIFFGetField(p, EXIFTAG_PIXELYDIMENSION, &uSize)) {
    pExif->m_iHeight = static_cast<int>(std::min<std::uint32_t>(uSize, 1 << 30));
  }
}

bool ReadStrips(TIFF* p, ZuImage* pImage, int* piRow) {
  if (static_cast<std::size_t>(TIFFScanlineSize(p)) != pImage->GetRowBytes()) return false;
  for (int y = 0; y < pImage->GetHeight(); *piRow = ++y) {
    if (TIFFReadScanline(p, pImage->GetRow<std::uint8_t>(y), static_cast<std::uint32_t>(y)) < 0) {
      return false;
    }
  }
  return true;
}

bool ReadTiles(TIFF* p, std::uint64_t uRoom, ZuImage* pImage, int* piRow) {
  std::uint32_t uWidth = 0, uHeight = 0;
  TIFFGetField(p, TIFFTAG_TILEWIDTH, &uWidth);
  TIFFGetField(p, TIFFTAG_TILELENGTH, &uHeight);
  const tmsize_t iSize = TIFFTileSize(p), iRowSize = TIFFTileRowSize(p);
  if (uWidth == 0 || uHeight == 0 || iSize <= 0 || static_cast<std::uint64_t>(iSize) > uRoom) {
    return false;
  }
  const std::size_t uPixel = pImage->GetRowBytes() / static_cast<std::size_t>(pImage->GetWidth());
  if (static_cast<std::size_t>(iRowSize) != uWidth * uPixel) return false;
  const std::uint32_t uAllWidth = static_cast<std::uint32_t>(pImage->GetWidth());
  const std::uint32_t uAllHeight = static_cast<std::uint32_t>(pImage->GetHeight());
  std::vector<std::uint8_t> tile(static_cast<std::size_t>(iSize));
  for (std::uint32_t y = 0; y < uAllHeight; y += std::min(uHeight, uAllHeight - y)) {
    *piRow = static_cast<int>(y);
    for (std::uint32_t x = 0; x < uAllWidth; x += std::min(uWidth, uAllWidth - x)) {
      if (TIFFReadTile(p, tile.data(), x, y, 0, 0) < 0) return false;
      const std::size_t uBytes = std::min(uWidth, uAllWidth - x) * uPixel;
      for (std::uint32_t i = 0; i < std::min(uHeight, uAllHeight - y); ++i) {
        std::memcpy(pImage->GetRow<std::uint8_t>(static_cast<int>(y + i)) + x * uPixel,
                    tile.data() + static_cast<std::size_t>(iRowSize) * i, uBytes);
      }
    }
  }
  return true;
}

// Grey of which 0 is white.
void Invert(ZuImage* pImage) {
  for (int y = 0; y < pImage->GetHeight(); ++y) {
    std::uint8_t* pRow = pImage->GetRow<std::uint8_t>(y);
    const std::size_t uPixel = pImage->GetRowBytes() / static_cast<std::size_t>(pImage->GetWidth());
    const std::size_t uGrey = static_cast<std::size_t>(pImage->GetBits()) / 8;
    for (std::size_t x = 0; x < pImage->GetRowBytes(); ++x) {
      if (x % uPixel < uGrey) pRow[x] = static_cast<std::uint8_t>(255 - pRow[x]);
    }
  }
}

bool ReadRgba(TIFF* p, ZuImage* pImage) {
  std::uint16_t uOrientation = ORIENTATION_TOPLEFT;  // the file's own: nothing is turned
  TIFFGetFieldDefaulted(p, TIFFTAG_ORIENTATION, &uOrientation);
  const std::size_t uCount =
      static_cast<std::size_t>(pImage->GetWidth()) * static_cast<std::size_t>(pImage->GetHeight());
  std::vector<std::uint32_t> pixels(uCount);
  const bool bRead = TIFFReadRGBAImageOriented(p, static_cast<std::uint32_t>(pImage->GetWidth()),
                                               static_cast<std::uint32_t>(pImage->GetHeight()),
                                               pixels.data(), uOrientation, 1) == 1;
  std::uint8_t* pTo = pImage->GetData();
  const int nChannels = pImage->GetChannels();
  for (const std::uint32_t u : pixels) {
    for (int i = 0; i < nChannels; ++i) *pTo++ = static_cast<std::uint8_t>(u >> (8 * i));
  }
  return bRead;
}

bool FillInfo(TIFF* p, const Form& form, ZuImageSource* pSource) {
  ZuImageInfo* pInfo = pSource->m_pInfo;
  pInfo->m_iWidth = static_cast<int>(std::min<std::uint32_t>(form.uWidth, 1 << 30));
  pInfo->m_iHeight = static_cast<int>(std::min<std::uint32_t>(form.uHeight, 1 << 30));
  pInfo->m_iBits = form.bDirect ? form.uBits : 8;
  const bool bGrey = form.uPhotometric <= PHOTOMETRIC_MINISBLACK && form.uSamples == 1;
  pInfo->m_iChannels = form.bDirect ? form.uSamples : bGrey ? 1 : 3;
  pInfo->m_bCmyk = form.uPhotometric == PHOTOMETRIC_SEPARATED;
  if (form.bDirect) return true;
  char acWhy[1024] = "";
  if (form.uFormat == SAMPLEFORMAT_IEEEFP || !TIFFRGBAImageOK(p, acWhy)) {
    pSource->AddError("samples that cannot be taken: " + std::to_string(form.uBits) + " bits" +
                          (*acWhy ? ", " : "") + acWhy,
                      "8 or 16 bits, grey or colour");
    return false;
  }
  if (pInfo->m_bCmyk) {
    pSource->Add(eZuSeverityWarning,
                 "four printing colours (CMYK): taken as R, G, B without their profile");
  } else if (form.uBits > 8) {
    pSource->Add(eZuSeverityWarning, "samples of " + std::to_string(form.uBits) +
                                         " bits in this form are taken as 8 bits");
  }
  return true;
}

}  // namespace

bool ZuReadTiff(ZuImageSource* pSource) {
  Memory memory{pSource->m_Bytes, 0, {}};
  const File pFile = Open(&memory, pSource->Room());
  if (!pFile) {
    pSource->AddError("no header of a TIFF picture: " + memory.strFault);
    return false;
  }
  const Form form = ReadForm(pFile.get());
  if (!FillInfo(pFile.get(), form, pSource) || !pSource->MakeImage()) return false;
  bool bRead = true;
  int iRow = 0;
  if (ZuImage* pImage = pSource->m_pImage) {
    bRead = !form.bDirect              ? ReadRgba(pFile.get(), pImage)
            : TIFFIsTiled(pFile.get()) ? ReadTiles(pFile.get(), pSource->Room(), pImage, &iRow)
                                       : ReadStrips(pFile.get(), pImage, &iRow);
    if (form.bDirect && form.uPhotometric == PHOTOMETRIC_MINISWHITE) Invert(pImage);
  }
  ReadExifDirectory(pFile.get(), &pSource->m_pInfo->m_Exif);
  if (!bRead) {
    pSource->AddError("cut or damaged in row " + std::to_string(iRow) + " of " +
                      std::to_string(pSource->m_pInfo->m_iHeight) + ": " + memory.strFault);
  }
  return bRead;
}
