#include "zu/points/filter.h"

#include <gtest/gtest.h>

#include <vector>

#include "zu/foundation/object.h"

namespace {

std::vector<int> g_aiAsked;

template <int i, unsigned int uResult>
unsigned int Leaf(const ZuObject*) {
  g_aiAsked.push_back(i);
  return uResult;
}

unsigned int IdOf(const ZuObject* pObject) { return pObject->GetId(); }

// Counts its destructions, for the order in which children go.
class TracedFilter : public ZuTrueFilter {
 public:
  explicit TracedFilter(int i) : m_i(i) {}
  ~TracedFilter() override { g_aiAsked.push_back(m_i); }

 private:
  int m_i;
};

}  // namespace

TEST(Filter, BinaryFiltersAskTheRightTestOnlyWhenItDecides) {
  const auto yes = &Leaf<1, 2>, no = &Leaf<2, 0>;
  const struct {
    const char* szCase;
    ZuFilter* pFilter;
    unsigned int uResult;
    std::vector<int> aiAsked;
  } cases[] = {
      {"or, yes", new ZuOrFilter(new ZuTestFilter(yes), new ZuTestFilter(no)), 1, {1}},
      {"or, no", new ZuOrFilter(new ZuTestFilter(no), new ZuTestFilter(yes)), 1, {2, 1}},
      {"or, none", new ZuOrFilter(new ZuTestFilter(no), new ZuFalseFilter), 0, {2}},
      {"and, no", new ZuAndFilter(new ZuTestFilter(no), new ZuTestFilter(yes)), 0, {2}},
      {"and, yes", new ZuAndFilter(new ZuTestFilter(yes), new ZuTrueFilter), 1, {1}},
      {"and, half", new ZuAndFilter(new ZuTestFilter(yes), new ZuTestFilter(no)), 0, {1, 2}},
      {"bare", new ZuBinaryFilter(new ZuTestFilter(no), new ZuTestFilter(yes)), 1, {2, 1}},
      {"not yes", new ZuNotFilter(new ZuTestFilter(yes)), 0, {1}},
      {"not no", new ZuNotFilter(new ZuTestFilter(no)), 1, {2}},
      {"leaf as it is", new ZuTestFilter(yes), 2, {1}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.szCase);
    g_aiAsked.clear();
    EXPECT_EQ(test.pFilter->Test(nullptr), test.uResult);
    EXPECT_EQ(g_aiAsked, test.aiAsked);
    delete test.pFilter;
  }
}

TEST(Filter, LeafSeesTheRecord) {
  const ZuObject object(5u);
  EXPECT_EQ(ZuTestFilter(&IdOf).Test(&object), 5u);
}

TEST(Filter, InnerNodesDeleteTheirChildrenLeftFirst) {
  g_aiAsked.clear();
  delete new ZuAndFilter(new ZuNotFilter(new TracedFilter(1)), new TracedFilter(2));
  EXPECT_EQ(g_aiAsked, (std::vector<int>{1, 2}));
  delete new ZuOrFilter(nullptr, nullptr);
  delete new ZuNotFilter(nullptr);
}
