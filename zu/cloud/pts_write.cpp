#include <charconv>
#include <cstddef>
#include <cstring>

#include "zu/cloud/internal/fixed9.h"
#include "zu/cloud/internal/pts_line.h"
#include "zu/cloud/internal/stream_writer.h"
#include "zu/cloud/point_cloud.h"

namespace {

// "%{iWidth}d" for a value of at most four digits and a sign.
char* FormatPadded(char* pOut, int iValue, int iWidth) {
  char acDigits[8];
  const char* const pEnd = std::to_chars(acDigits, acDigits + sizeof acDigits, iValue).ptr;
  for (std::ptrdiff_t n = pEnd - acDigits; n < iWidth; ++n) *pOut++ = ' ';
  for (const char* p = acDigits; p != pEnd; ++p) *pOut++ = *p;
  return pOut;
}

// A column of "%4d" or "%3d" by its byte; every line takes four of them.
struct ByteColumn {
  char acText[8];
  unsigned char uLength;
};

template <class ValueOfByte>
struct ByteColumns {
  ByteColumn columns[256];
  ByteColumns(int iWidth, ValueOfByte valueOfByte) {
    for (int i = 0; i < 256; ++i) {
      char* const pEnd = FormatPadded(columns[i].acText, valueOfByte(i), iWidth);
      columns[i].uLength = static_cast<unsigned char>(pEnd - columns[i].acText);
    }
  }
  char* Append(char* pOut, int iByte) const {
    const ByteColumn& column = columns[iByte];
    std::memcpy(pOut, column.acText, sizeof column.acText);
    return pOut + column.uLength;
  }
};

int PrintedIntensity(int iByte) { return static_cast<int>((iByte - 128) * 0.0078125 * 2000.0); }
int PrintedColor(int iByte) { return iByte; }

}  // namespace

char* ZuFormatPtsLine(char* pOut, const ZuScanPoint3d& p) {
  static const ByteColumns intensities(4, PrintedIntensity);
  static const ByteColumns colors(3, PrintedColor);
  for (const double dValue : {p.x, p.y, p.z}) {
    pOut = ZuFormatFixed18_9(pOut, dValue);
    *pOut++ = ' ';
  }
  pOut = intensities.Append(pOut, p.GetIntensity());
  for (const int iColor : {p.GetRed(), p.GetGreen(), p.GetBlue()}) {
    *pOut++ = ' ';
    pOut = colors.Append(pOut, iColor);
  }
  *pOut++ = '\n';
  return pOut;
}

unsigned int ZuPointCloud::WritePtsFile(std::FILE* fp, bool bWithCount) const {
  if (!fp) return 0;
  ZuStreamWriter writer(fp);
  if (bWithCount) {
    char* const pOut = writer.Room(16);
    char* const pEnd = std::to_chars(pOut, pOut + 15, GetPointCount()).ptr;
    *pEnd = 'd';
    writer.Filled(pEnd + 1);
  }
  for (const ZuScanPoint3d& p : m_aPoints) {
    writer.Filled(ZuFormatPtsLine(writer.Room(kZuPtsLineSize), p));
    if (!writer.IsGood()) break;
  }
  writer.Flush();
  return GetPointCount();
}
