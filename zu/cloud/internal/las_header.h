// Places and sizes in a LAS file.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "zu/foundation/read_findings.h"

class ZuFileBuff;

// A record of one point: where its parts stand, 0 for a part that it lacks.
struct ZuLasFormat {
  std::uint16_t uSize;                       // without extra bytes
  unsigned char uTime, uColor, uNir, uWave;  // byte
  bool bExtended;                            // formats 6 to 10: two bytes of returns, wide angles
};
constexpr unsigned int kZuLasFormats = 11;
extern const ZuLasFormat kZuLasFormat[kZuLasFormats];

// The whole numbers of one coordinate: value = number * scale + offset.
//
// Where the scale is a decimal step such as 0.01 and the offset a multiple of it, a value is the
// double next to the decimal number that the two tell: a quotient of whole numbers. Product and sum
// give 849087.7000000001 where 849087.70 was written.
class ZuLasGrid {
 public:
  ZuLasGrid() { Set(0.001, 0.0); }
  void Set(double dScale, double dOffset);

  double ValueOf(std::int32_t i) const {
    return m_dSteps != 0.0 ? (m_dWhole + i) / m_dSteps : i * m_dScale + m_dOffset;
  }
  // Of a value that the grid reaches.
  std::int32_t NumberOf(double dValue) const;

  double Scale() const { return m_dScale; }
  double Offset() const { return m_dOffset; }

 private:
  double m_dScale, m_dOffset;
  double m_dSteps;  // in a unit; 0: no whole number
  double m_dWhole;  // steps of the offset
};

struct ZuLasHeader {
  static constexpr std::size_t Size12 = 227, Size13 = 235, Size14 = 375;
  static constexpr std::size_t RecordHeader = 54;  // of a variable length record

  unsigned int uMinor = 0;
  unsigned int uFormat = 0;
  unsigned int uRecordSize = 0;  // of a point
  std::uint32_t uHeaderSize = 0;
  std::uint32_t uOffset = 0;   // byte of the first point
  std::uint32_t uRecords = 0;  // variable length records behind the header
  std::uint64_t uPoints = 0;
  std::array<ZuLasGrid, 3> grids;

  const ZuLasFormat& Format() const { return kZuLasFormat[uFormat]; }

  // Reads the header and the records behind it; the buffer's position is at the first point then.
  // False, with a fault, when points cannot be read by it.
  bool Read(ZuFileBuff& buff, ZuReadFindings& findings);

 private:
  bool Take(const unsigned char* pBytes, std::size_t uHave, ZuReadFindings& findings);
  bool SkipRecords(ZuFileBuff& buff, ZuReadFindings& findings) const;
};
