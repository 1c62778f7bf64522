// The points of a LAS file in blocks, in the memory of one block.
//
//   ZuLasPoints points(buff, header, findings);
//   while (n = points.Next(block)) use(block.first(n));
//   points.Finish();
//
// What only the whole file tells, whether colours have 8 or 16 bits and intensities 255 or 65,536
// levels, stands as it was read until Settle: in place of w and the deviations. Who doesn't keep
// all points reads the file twice and settles each block of the second time.
#pragma once

#include <span>

#include "zu/cloud/cloud_reading.h"
#include "zu/cloud/internal/las_header.h"
#include "zu/cloud/internal/raw_values.h"
#include "zu/foundation/progress.h"

class ZuFileBuff;

class ZuLasPoints {
 public:
  ZuLasPoints(ZuFileBuff& buff, const ZuLasHeader& header, ZuProgress& progress)
      : m_buff(buff), m_header(header), m_progress(progress) {}

  // Points that can be in what is left of the file.
  std::uint64_t Room() const;

  // The next points; 0 at the end of the points or of the file, or when none are wanted.
  std::size_t Next(std::span<ZuScanPoint3d> block);

  // Reports what was met, after the last block.
  void Finish(ZuReadFindings& findings) const;

  // Gives points their colours and intensities.
  void Settle(std::span<ZuScanPoint3d> points) const;
  eZuIntensityScale Scale() const { return m_intensities.Scale(); }

 private:
  ZuScanPoint3d Load(const unsigned char* pRecord);
  void Note(const unsigned char* pRecord);
  void LoadColor(const unsigned char* pColor, ZuScanPoint3d& p);

  ZuFileBuff& m_buff;
  const ZuLasHeader& m_header;
  ZuProgress& m_progress;
  std::uint64_t m_uRead = 0;
  ZuRawIntensities m_intensities;
  unsigned int m_uMostColor = 0;
  bool m_bLowColor = false;   // a lower byte that the upper one does not tell
  unsigned int m_uOther = 0;  // bits: what the points have that a cloud does not keep
  std::uint64_t m_uWithheld = 0;
};
