// Where the pixels of a result lie in the picture it is made from.
//
// Positions are columns and rows, whole numbers at the pixel centres, 0 the first one, rows
// counting down; the area of a picture of w columns reaches from -0.5 to w - 0.5.
#pragma once

#include "zu/image/export.h"

class ZU_IMAGE_API ZuPixelMap {
 public:
  virtual ~ZuPixelMap();

  // Carries a position of the result to the source, in place. False, (x, y) undefined: nothing of
  // the source belongs there. It is called on several threads at a time.
  virtual bool Map(double* x, double* y) const = 0;
};
