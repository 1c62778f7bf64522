// Header record of a scan, carried with its cloud through cloud files.
//
// The library reads and writes these values and interprets none of them; the time stamps alone are
// set, where a cloud is made from a point list.
#pragma once

#include <cstdint>
#include <cstdio>

#include "zu/export.h"

class ZuFileBuff;

class ZU_API ZuScanHeader {
 public:
  // Bytes in a cloud file, the magic word included, and length of a text there.
  static constexpr unsigned int FileSize = 472;
  static constexpr unsigned int TextSize = 30;

  // Reads the record from the buffer's position. 0 with all fields as before when the magic word
  // is wrong; the position is then behind that word.
  //
  // Required: the four time stamps are read and dropped, the fields keep their values. They tell
  // of the import into this process, not of the one that wrote the file.
  int Read(ZuFileBuff& buff);

  // Writes the record. 0 with a null stream or when the stream took less.
  int Write(std::FILE* fp) const;

 public:
  std::uint32_t m_uWord = 0;
  // Seconds since 1970.
  std::int64_t m_iImportStart = 0;
  std::int64_t m_iImportEnd = 0;
  std::int64_t m_iSecondImportStart = 0;
  std::int64_t m_iSecondImportEnd = 0;
  double m_adValues[2] = {};
  double m_adPairs[4][2] = {};
  double m_adTriples[3][3] = {{0.0, 0.0, 0.0}, {0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}};
  double m_adPair[2] = {};
  // Texts of at most 30 bytes, with a terminator of their own here.
  char m_aszTexts[3][TextSize + 1] = {};
  double m_adTriple[3] = {};
  char m_szText[TextSize + 1] = {};
  std::uint32_t m_auWords[10] = {};
  std::uint64_t m_auLongs[10] = {};
};
