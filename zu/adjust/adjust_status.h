// How an adjustment ended.
#pragma once

#include "zu/adjust/export.h"

// Each adjustment ends with exactly one. Good is never told with a number or a standard deviation
// that is not finite.
enum class ZuAdjustStatus {
  Good,
  TooFew,        // observations
  RankDefect,    // parameters, or combinations of them, that no observation decides
  NotConverged,  // within the limit of steps
  NotFinite      // input or result
};

// The status in words, as "rank defect"; static text.
ZU_ADJUST_API const char* ZuAdjustStatusText(ZuAdjustStatus status);
