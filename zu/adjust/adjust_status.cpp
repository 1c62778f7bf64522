#include "zu/adjust/adjust_status.h"

const char* ZuAdjustStatusText(ZuAdjustStatus status) {
  switch (status) {
    case ZuAdjustStatus::Good:
      return "good";
    case ZuAdjustStatus::TooFew:
      return "too few observations";
    case ZuAdjustStatus::RankDefect:
      return "rank defect";
    case ZuAdjustStatus::NotConverged:
      return "not converged";
    case ZuAdjustStatus::NotFinite:
      return "not finite";
  }
  return "unknown";
}
