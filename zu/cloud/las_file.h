// LAS files, versions 1.0 to 1.4 and point formats 0 to 10 (American Society for Photogrammetry and
// Remote Sensing, LAS 1.4 - R15, 2019).
//
// A LAS file holds a coordinate as a whole number of 32 bits, to be multiplied by a scale, the
// resolution of the file, and shifted by an offset. One thread at a time for one container.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

#include "zu/cloud/cloud_reading.h"
#include "zu/export.h"

class ZuPointCloudContainer;

// Reads the points of a LAS file into one new cloud: coordinates, intensities and colours.
//
// Intensities are 0 to 255 where none is larger, and 0 to 65535 otherwise. Of colours of 16 bits
// the upper byte is kept; where none is above 255 they are bytes already. What a cloud has no place
// for (classes, returns, scan angles, GPS times, near infrared, waveforms, extra bytes, the records
// of the coordinate system) is passed over, with a finding that names it where a point has it.
//
// Fewer points than the header announces are a cut. The cloud is null only when the file cannot be
// opened or its header is at fault: no LAS file, one packed as LAZ, an unknown version or point
// format, sizes that contradict each other, a scale that is 0 or not finite.
//
// Takes linear time, whatever the header announces, and the memory of the points; the file is seen
// through a window. Stopped by the progress handler, it ends with a cut. Throws nothing: without
// memory the points read until then stay, with a fault.
ZU_API ZuCloudReading ZuReadLas(const char* szPath, ZuPointCloudContainer& clouds);

struct ZuLasOptions {
  // One for x, y and z; 0: for each the coarsest of 0.001, 0.0001, ... that holds all digits of all
  // coordinates, or the finest for which whole numbers of 32 bits suffice.
  double m_dResolution = 0.0;
  // That of ZuCloudReading, so that the numbers are those that were read; eZuIntensityNone and the
  // scale of -2000 to 2000, which LAS has no place for, count as 0 to 255.
  eZuIntensityScale m_eIntensity = eZuIntensity255;
  // 2: LAS 1.2, point format 0 or with colours 2. 4: LAS 1.4, point format 6 or 7. 0: 2 up to
  // 4,294,967,295 points, 4 above.
  int m_iMinorVersion = 0;
};

// What was written, and how well it holds the coordinates.
struct ZuLasWriting {
  bool m_bGood = false;
  std::string m_strFault;  // why not, and what would do; empty where a write failed
  std::array<double, 3> m_adResolution = {};
  std::array<double, 3> m_adOffset = {};
  std::uint64_t m_uLeftOut = 0;  // points with coordinates that are not finite, or beyond 1e300
};

// Writes the points of all clouds as one file: coordinates within half the resolution, intensities
// and, where any point has one, colours times 256. Nothing in the file tells of time and machine:
// the same points give the same bytes. Not good: the file cannot be opened, not all bytes could be
// written, the progress handler wanted no more, or the resolution is too fine for the extent.
ZU_API ZuLasWriting ZuWriteLas(std::FILE* fp, const ZuPointCloudContainer& clouds,
                               const ZuLasOptions& options = {});
ZU_API ZuLasWriting ZuWriteLas(const char* szPath, const ZuPointCloudContainer& clouds,
                               const ZuLasOptions& options = {});
