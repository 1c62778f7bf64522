#include "zu/adjust/adjust_status.h"

#include "tests/support/test.h"

TEST(AdjustStatus, EachHasItsWords) {
  EXPECT_STREQ(ZuAdjustStatusText(ZuAdjustStatus::Good), "good");
  EXPECT_STREQ(ZuAdjustStatusText(ZuAdjustStatus::RankDefect), "rank defect");
}
