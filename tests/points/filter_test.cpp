#include "zu/points/filter.h"

#include "tests/support/test.h"
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
  for (const auto& [szCase, pFilter, uResult, aiAsked] :
       Cases<const char*, ZuFilter*, unsigned int, std::vector<int>>{
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
       }) {
    SCOPED_TRACE(szCase);
    g_aiAsked.clear();
    EXPECT_EQ(pFilter->Test(nullptr), uResult);
    EXPECT_EQ(g_aiAsked, aiAsked);
    delete pFilter;
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
