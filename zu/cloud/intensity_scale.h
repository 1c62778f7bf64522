// The scale on which a text file gives intensities.
//
// A scan point keeps one byte of intensity, the top byte of its colour word. Files with 65,536
// levels lose nothing either: the low byte of the point's flag word, which no operation on clouds
// reads or sets, takes the lower half. A writer that is given the scale of the reader gives back
// every level.
#pragma once

#include <cstdint>

#include "zu/cloud/scan_point3d.h"

// The values are given out: append, never renumber.
enum eZuIntensityScale : int {
  eZuIntensityNone,   // no intensities
  eZuIntensity255,    // 0 to 255, the byte itself
  eZuIntensity65535,  // 0 to 65535, upper half in the byte, lower half in the flag word's low byte
  eZuIntensity2000    // -2000 to 2000, in the steps of ZuPointCloudContainer::ReadPtsFile
};

// The intensity of a point on a scale; 0 for eZuIntensityNone.
ZU_API int ZuIntensityOf(const ZuScanPoint3d& p, eZuIntensityScale eScale);

// Stores an intensity, limited to the scale and rounded to its levels; NaN is the lowest. False
// when it had to be limited.
ZU_API bool ZuSetIntensity(ZuScanPoint3d& p, double dValue, eZuIntensityScale eScale);
