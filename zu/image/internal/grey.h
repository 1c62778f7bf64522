// The picture as the detectors of OpenCV take it.
#pragma once

#include <opencv2/core.hpp>

#include "zu/image/image.h"

struct ZuGrey {
  cv::Mat m_Eight;   // 8 bits, for searching: 16 bits are stretched from their least to their
                     // largest value
  cv::Mat m_Values;  // 8 bits, or float with 16; for measuring
};

// Grey, or the green of a colour picture: colours of a lens lie at different places, and green has
// half of the pixels of a sensor.
ZuGrey ZuGreyOf(const ZuImage& image);
