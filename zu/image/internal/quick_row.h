// Rows of images of 8 bits without alpha, in whole numbers.
#pragma once

#include <cstdint>

#include "zu/image/resample.h"

namespace zu::internal {

class Sampler;

// Pixels at n positions, kTile at most, grey or colours and alpha; 0 where a position is NaN or
// outside the image. Returns how many are inside.
using QuickRow = int (*)(const Sampler&, const double* pdX, const double* pdY, int n,
                         std::uint8_t* pOut);

// Positions are rounded to 1 / 1024 pixel and weights to 1 / 16384, so that a value may differ from
// that of unrounded sums by the rounding of the last grey value. Whole numbers give the same bits
// on every processor. iChannels is 1 or 3.
QuickRow QuickRowFor(int iChannels, eZuInterpolation eKernel);

}  // namespace zu::internal
