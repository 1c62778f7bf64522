// The points of a scan of an E57 file: packets of one stream of bits for each field, which go on
// from packet to packet.
#pragma once

#include <cstdint>
#include <vector>

#include "zu/cloud/scan_point3d.h"
#include "zu/exchange/internal/e57_pages.h"
#include "zu/exchange/internal/e57_scan.h"

namespace zu::internal {

// Whole bits of one field that have come and were not taken yet, the lowest first.
class E57Bits {
 public:
  std::size_t Count() const { return 8 * m_acBytes.size() - m_uAt; }
  // Room for further bytes, behind those that are still to be taken.
  unsigned char* Grow(std::size_t uSize);
  // At most 64 bits, of which there are as many.
  std::uint64_t Take(unsigned int uBits);

 private:
  std::vector<unsigned char> m_acBytes;
  std::size_t m_uAt = 0;  // bit
};

class E57Points {
 public:
  // The scan must outlive it. bWide: intensities are spread over 0 to 65535.
  E57Points(const char* szPath, const E57Scan& scan, bool bWide);

  // The next points in the common frame, those of one packet or some of them; empty at the end, or
  // where the file has no more. The vector is good until the next call.
  const std::vector<ZuScanPoint3d>& Next();

  // Points that can be in what is left of the file.
  std::uint64_t Room() const;
  std::uint64_t Records() const { return m_uRead; }  // read, invalid ones included
  std::uint64_t Invalid() const { return m_uInvalid; }
  // Reports what is missing, after the last point.
  void Finish(std::size_t uScan, bool bStopped, ZuReadFindings& findings) const;

 private:
  bool ReadPacket();
  std::uint64_t Ready() const;
  void TakePoint();
  double ValueOf(std::size_t uField);
  void SetValues(const double* ad, ZuScanPoint3d& p) const;

  const E57Scan& m_scan;
  const bool m_bWide;
  E57Reader m_reader;
  std::vector<E57Bits> m_bits;  // by field
  std::vector<ZuScanPoint3d> m_points;
  double m_adRotation[9];
  bool m_bMoves;  // the pose is not that of the common frame
  std::uint64_t m_uRead = 0, m_uInvalid = 0;
  std::uint64_t m_uLeft = 0;  // bytes of the section
  const char* m_szFault = nullptr;
};

// Whether the intensities of a scan are those of bytes: whole numbers or values of 0 to 255.
bool HasE57Bytes(const E57Scan& scan);

}  // namespace zu::internal
