// A picture file written band by band, so that its size is not bounded by memory.
//
//   ZuImageWriter writer;
//   if (!writer.Open("facade.tif", {iWidth, iHeight, 4, 8}) || !writer.Write(rows, 64) || ...
//       !writer.Close()) show(writer.GetError());
//
// Until Close has succeeded the file is not whole, and the writer removes it at its end. Who has an
// old file to lose writes under another name and renames.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "zu/image/export.h"
#include "zu/image/image.h"
#include "zu/image/image_file.h"

// Pixels to coordinates: X = X0 + dPixel column, Y = Y0 - dPixel row, at pixel centres.
struct ZuImageGrid {
  double m_dX0 = 0.0, m_dY0 = 0.0;  // centre of the first pixel
  double m_dPixel = 1.0;
};

struct ZuImageWriteOptions {
  int m_iWidth = 0, m_iHeight = 0;
  int m_iChannels = 0;  // as ZuImage has them
  int m_iBits = 8;
  int m_iQuality = 92;      // of JPEG, 1 to 100
  double m_dPerInch = 0.0;  // pixels to an inch where it is printed; 0: not told
  // Of a map: the tags of GeoTIFF, in TIFF files alone. iEpsg: code of the projected system, 0: not
  // told.
  std::optional<ZuImageGrid> m_map = {};
  int m_iEpsg = 0;
};

// The format of a name's ending: .jpg, .jpeg, .png, .tif, .tiff, in any case; eZuImageNone for
// others.
ZU_IMAGE_API eZuImageFormat ZuImageFormatOf(const std::string& strPath);
// The name of the world file beside a picture: .pgw, .jgw, .tfw for its ending.
ZU_IMAGE_API std::string ZuWorldFileName(const std::string& strPath);
// Its six lines: pixel, 0, 0, -pixel, X and Y of the first pixel's centre.
ZU_IMAGE_API std::string ZuWorldFileText(const ZuImageGrid& grid);

class ZU_IMAGE_API ZuImageWriter {
 public:
  ZuImageWriter();
  ~ZuImageWriter();
  ZuImageWriter(const ZuImageWriter&) = delete;
  ZuImageWriter& operator=(const ZuImageWriter&) = delete;

  // Creates or overwrites the file, in the format of its ending. JPEG has 8 bits and no alpha: the
  // picture is laid on white. TIFF is compressed without loss, and a BigTIFF where it could pass
  // 4 GB. False with GetError: an ending that is none of these, a size, or bits, that the format
  // does not have, and what the system says.
  bool Open(const std::string& strPath, const ZuImageWriteOptions& options);
  // The next iRows rows, the first ones of an image of the options' width, channels and bits.
  bool Write(const ZuImage& rows, int iRows);
  // Ends the file; false where rows are missing or the disk did not take it all.
  bool Close();

  // What is wrong: "cannot write: No space left on device"; empty where nothing is.
  const std::string& GetError() const { return m_strError; }

  class Format;  // one of the libraries; of this component

 private:
  bool Fail(const std::string& strError);

  std::string m_strPath, m_strError;
  ZuImageWriteOptions m_options;
  int m_iRows = 0;  // written
  std::unique_ptr<Format> m_pFormat;
};
