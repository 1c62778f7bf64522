// An ellipse fitted to the edge of a disk.
#pragma once

#include <opencv2/core.hpp>

#include "zu/image/target.h"

// Improves centre, axes and angle of the target from the edge around it, and sets contrast and
// standard deviations. False, target as it came, where there is no such edge all around, or the
// picture ends.
bool ZuFitEllipse(const cv::Mat& values, ZuTarget* pTarget);
