// What a fault in a file of planes costs, and how it is told.
#include <gtest/gtest.h>

#include "tests/support/temp_file.h"
#include "zu/rectify/plane_list.h"

namespace {

TEST(PlaneFaults, BehindTheValuesAreNoneAndInThemAreTold) {
  const struct {
    const char* szFirst;
    int iPlanes, iFaults;
  } cases[] = {{"{ 1 \"a\" 0 0 1 5 12abc }", 2, 0}, {"{ 1 \"a\" 0 0 1 5 \"open\n}", 2, 0},
               {"{ 1 \"a\" 0 0 1 -inf}", 2, 0},     {"\n{ 1 \"a\" 0 0 1 12abc }", 0, 1},
               {"\n{ 1 \"a\" 0 0 1 }", 0, 1},       {"\n{ 1 2 1 0 0 5 }", 0, 1}};
  for (const auto& c : cases) {
    const TempFile file(std::string(c.szFirst) + " { 4000000000 \"b\" 1 0 0 2 }\n");
    const ZuPlaneList list(file.Path());
    ASSERT_EQ(list.Count(), c.iPlanes) << c.szFirst;
    EXPECT_EQ(c.iPlanes > 0 ? list.Last()->GetId() : 4000000000u, 4000000000u);
    EXPECT_EQ(list.GetReadErrorCount(), c.iFaults) << c.szFirst;
    EXPECT_EQ(list.GetReadErrorLine(), c.iFaults > 0 ? 2u : 0u);
  }
  const ZuPlaneList none("/nowhere/planes.txt");
  EXPECT_STREQ(none.GetReadErrorText(), "ParserErrorStream");
}

}  // namespace
