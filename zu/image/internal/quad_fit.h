// The corners of a dark square on bright ground from its edges.
#pragma once

#include <vector>

#include "zu/image/detected_point.h"
#include "zu/image/internal/grey.h"

// Lines through the edges of the sides, each edge half way between the grey of the square's rim and
// that of the ground, and the corners where they meet, with their standard deviations. The rim is
// dark for a width of dRim pixels at least. Unlike a window at a corner, this has no bias towards
// the inside. Empty where a side has no edge.
std::vector<ZuDetectedPoint> ZuFitQuad(const cv::Mat& values,
                                       const std::vector<cv::Point2f>& corners, double dRim);
