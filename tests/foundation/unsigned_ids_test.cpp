// Ids have 32 bits without a sign wherever they stand as text.
#include <gtest/gtest.h>

#include <cstring>

#include "zu/foundation/numbers.h"

namespace {

TEST(Numbers, ReadIdsWholeUpTo32Bits) {
  const struct {
    const char* szText;
    unsigned int u;
  } ids[] = {{"2147483647", 2147483647u},
             {" +2147483648x", 2147483648u},
             {"4294967295", 4294967295u},
             {"4294967296", 4294967295u},
             {"99999999999999999999", 4294967295u},
             {"-1", 4294967295u},
             {"-2147483649", 2147483648u},
             {"", 0u},
             {"0", 0u}};
  for (const auto& id : ids) {
    EXPECT_EQ(ZuAtou(id.szText, id.szText + std::strlen(id.szText)), id.u) << id.szText;
  }
}

}  // namespace
