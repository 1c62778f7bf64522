// A picture with what was found in it, for looking.
#pragma once

#include <iosfwd>
#include <vector>

#include "zu/image/detected_point.h"
#include "zu/image/export.h"

class ZuImage;

// Writes the picture as PNG with a cross and the number of each point, 8 bits, R, G, B. Strokes
// grow with the picture. False, with nothing written, for an empty picture.
ZU_IMAGE_API bool ZuExportOverlay(std::ostream& stream, const ZuImage& image,
                                  const std::vector<ZuDetectedPoint>& points);
