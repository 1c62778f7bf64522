// Draws of subsets by the standard generator.
#include "zu/transform/random_index.h"

#include <set>

#include "tests/support/test.h"

namespace {

ZuIdTable Ids(int n) {
  ZuIdTable ids;
  for (int i = 0; i < n; ++i) ids.Add(static_cast<unsigned int>(1000 - 7 * i));
  return ids;
}

}  // namespace

// Ascending, without repetition, inside the table, and of the size wanted or of all there are.
TEST(RandomIndex, DrawsAscendingIndices) {
  std::srand(1);
  for (const int n : {0, 1, 3, 4, 5, 17, 100}) {
    for (const int k : {-1, 0, 1, 4, 6}) {
      ZuGenerateRandomIndex random;
      const ZuIdTable ids = Ids(n);
      for (int i = 0; i < 100; ++i) {
        const auto& drawn = random.Draw(ids, k);
        ASSERT_EQ(drawn.size(), static_cast<std::size_t>(std::clamp(k, 0, n)));
        EXPECT_TRUE(std::is_sorted(drawn.begin(), drawn.end()));
        EXPECT_EQ(std::adjacent_find(drawn.begin(), drawn.end()), drawn.end());
        if (!drawn.empty()) {
          EXPECT_LT(drawn.back(), static_cast<unsigned int>(n));
        }
      }
    }
  }
}

// The number of subsets; an exact value comes out one too large.
TEST(RandomIndex, CountsTheSubsets) {
  for (const auto& [n, k, dExpected] : Cases<int, int, double>{
           {10, 4, 211.0}, {30, 4, 27406.0}, {30, 26, 27406.0}, {4, 4, 2.0}, {3, 4, 0.0}}) {
    ZuGenerateRandomIndex random;
    EXPECT_EQ(random.GetCombinations(), 0.0);
    random.Draw(Ids(n), k);
    EXPECT_EQ(random.GetCombinations(), dExpected) << n << " over " << k;
  }
}

// The sum of three uniform numbers: with t = i / n the share below t is 4.5 t^3 up to a third, and
// the distribution is symmetrical.
TEST(RandomIndex, PrefersTheMiddle) {
  constexpr int kDraws = 60000, kTable = 30;
  std::srand(4711);
  const ZuIdTable ids = Ids(kTable);
  int aiCount[kTable] = {};
  for (int i = 0; i < kDraws; ++i) {
    ZuGenerateRandomIndex random;  // one that has seen nothing
    ++aiCount[random.Draw(ids, 1)[0]];
  }
  const auto share = [&](int iFrom, int iTo) {
    double dSum = 0.0;
    for (int i = iFrom; i < iTo; ++i) dSum += aiCount[i];
    return dSum / kDraws;
  };
  EXPECT_NEAR(share(0, 10), 1.0 / 6.0, 0.01);
  EXPECT_NEAR(share(10, 20), 2.0 / 3.0, 0.01);
  EXPECT_NEAR(share(20, 30), 1.0 / 6.0, 0.01);
  EXPECT_NEAR(share(0, 5), 1.0 / 48.0, 0.005);
  EXPECT_GT(aiCount[14], 10 * aiCount[1]);
}

// The first draws of many subsets are all different, where an object without memory repeats some;
// when most were seen, repetitions come and the draw still ends.
TEST(RandomIndex, AvoidsSubsetsSeenBefore) {
  std::srand(5);
  const ZuIdTable ids = Ids(10);
  ZuGenerateRandomIndex random;
  std::set<std::vector<unsigned int>> withMemory, without;
  for (int i = 0; i < 40; ++i) {
    withMemory.insert(random.Draw(ids, 4));
    ZuGenerateRandomIndex fresh;
    without.insert(fresh.Draw(ids, 4));
  }
  EXPECT_EQ(withMemory.size(), 40u);
  EXPECT_LT(without.size(), 38u);
  for (int i = 0; i < 400; ++i) withMemory.insert(random.Draw(ids, 4));
  EXPECT_LE(withMemory.size(), 210u);
  EXPECT_GT(withMemory.size(), 120u);
}
