// Corners of squares to a fraction of a pixel.
#pragma once

#include <vector>

#include "zu/image/detected_point.h"
#include "zu/image/internal/grey.h"

// Half the side of the window in which a corner is refined [pixel]: 11 by 11 pixels in all.
constexpr int kZuCornerWindow = 5;

// Moves each corner to where the gradients around it are at right angles to the lines towards it
// (W. Foerstner, E. Guelch: A fast operator for detection and precise location of distinct points,
// corners and centres of circular features, 1987), and adds it with its standard deviations, with
// id 0. A window is half as wide as the distance to the next corner at most.
// dSigmaFloor is added to the deviations in quadrature [pixel].
std::vector<ZuDetectedPoint> ZuRefineCorners(const ZuGrey& grey, std::vector<cv::Point2f> corners,
                                             double dDistance, double dSigmaFloor);
