// Pictures to draw on: R, G, B, 8 bits.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "zu/image/image.h"

// A copy of the picture; 16 bits lose their lower eight, transparency goes.
cv::Mat ZuColoursOf(const ZuImage& image);
// The PNG file of such a picture; empty where it cannot be made.
std::string ZuPngOf(const cv::Mat& colours);
