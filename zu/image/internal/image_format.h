// What writes the rows of one format.
#pragma once

#include <memory>
#include <string>

#include "zu/image/image_writer.h"

class ZuImageWriter::Format {
 public:
  virtual ~Format() = default;
  // Row in the form of ZuImage. False with m_strError.
  virtual bool WriteRow(const void* pRow) = 0;
  virtual bool Close() = 0;

  std::string m_strError;
};

// Null, *pError filled: the file cannot be made.
std::unique_ptr<ZuImageWriter::Format> ZuWritePng(const std::string& strPath,
                                                  const ZuImageWriteOptions& options,
                                                  std::string* pError);
std::unique_ptr<ZuImageWriter::Format> ZuWriteJpeg(const std::string& strPath,
                                                   const ZuImageWriteOptions& options,
                                                   std::string* pError);
// Bytes of pixels, not compressed, beyond which offsets take 64 bits (BigTIFF). LZW makes noise up
// to half as large again: 12 bits a byte.
constexpr double kZuMostClassicTiff = 2.5e9;
// A lower limit is for tests.
std::unique_ptr<ZuImageWriter::Format> ZuWriteTiff(const std::string& strPath,
                                                   const ZuImageWriteOptions& options,
                                                   std::string* pError,
                                                   double dMostClassic = kZuMostClassicTiff);
