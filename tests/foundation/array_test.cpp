#include "zu/foundation/array.h"

#include "tests/support/test.h"

namespace {

// Counts comparisons, and can run out of memory.
struct Value {
  Value(int i) : iValue(i) {}
  bool operator<(const Value& other) const { return ++lCompared, iValue < other.iValue; }
  bool operator==(const Value& other) const { return iValue == other.iValue; }

  static void* operator new(std::size_t uSize) { return std::malloc(uSize); }
  static void* operator new(std::size_t uSize, const std::nothrow_t&) noexcept {
    return bNoMemory ? nullptr : std::malloc(uSize);
  }
  static void operator delete(void* p) { std::free(p); }

  int iValue;
  static inline long long lCompared = 0;
  static inline bool bNoMemory = false;
};

class Array : public TZuArray<Value> {
 public:
  using TZuArray<Value>::TZuArray;
  using TZuArray<Value>::InsertSort;
  using TZuArray<Value>::Reallocate;

  explicit Array(const std::vector<int>& aValues) : TZuArray<Value>(1) {
    for (int iValue : aValues) Add(iValue);
  }
  std::vector<int> Values() const {
    std::vector<int> aValues;
    for (int i = 0; i < Count(); ++i) aValues.push_back((*this)[i].iValue);
    return aValues;
  }
  bool RestIsNull() const {
    return std::all_of(m_ppItems + m_iCount, m_ppItems + m_iSize, [](auto* p) { return !p; });
  }
};

std::vector<int> Filled(int n, const std::function<int(int)>& value) {
  std::vector<int> aValues;
  for (int i = 0; i < n; ++i) aValues.push_back(value(i));
  return aValues;
}

TEST(Array, DoublesWhenFullAndKeepsElementsInPlace) {
  Array array, none(0);
  const Value* pFirst = array.Add(0);
  EXPECT_TRUE(array.Size() == 256 && array.RestIsNull());
  for (int i = 1; i < 257; ++i) array.Add(i);
  EXPECT_TRUE(array.Size() == 512 && array.RestIsNull() && &array[0] == pFirst);
  none.Add(1);
  EXPECT_EQ(none.Size(), 1);
  none.Insert(2, 0);
  none.Clear();
  EXPECT_TRUE(none.Size() == 2 && none.RestIsNull());
}

TEST(Array, InsertsAndRemovesLikeAVector) {
  std::mt19937 random(7);
  Array array(3);
  std::vector<int> aModel;
  for (int i = 0; i < 2000; ++i) {
    const int n = static_cast<int>(aModel.size());
    const int at = static_cast<int>(random() % static_cast<unsigned>(n + 1));
    if (random() % 5 < 2 && at < n) {
      array.Remove(at);
      aModel.erase(aModel.begin() + at);
    } else {
      array.Insert(i, at);
      aModel.insert(aModel.begin() + at, i);
    }
    ASSERT_EQ(array.Values(), aModel);
  }
  EXPECT_TRUE(array.RestIsNull());
}

TEST(Array, CopiesElementsAndCapacity) {
  Array source(Filled(5, [](int i) { return i; })), target;
  target.Add(99);
  target = source;
  EXPECT_TRUE(target == source && target.Size() == source.Size() && &target[0] != &source[0]);
  target.Add(5);
  EXPECT_TRUE(target != source);
  Array copy(target);
  copy[5] = 6;
  EXPECT_EQ(copy == target, 0);
  copy = *&copy;
  EXPECT_EQ(copy.Count(), 6);

  Value* pLast = copy.Item(5);
  copy.Reallocate(5);  // lets go of what does not fit
  EXPECT_TRUE(copy == source);
  EXPECT_EQ(pLast->iValue, 6);
  delete pLast;
}

TEST(Array, SearchesStretches) {
  const Array array(std::vector<int>{4, 7, 4, 9});
  EXPECT_ROW("0 2 -1 3", array.Search(4), array.Search(4, 1, -1), array.Search(9, 0, 3),
             array.Search(9, 0, 100));
  EXPECT_EQ(Array(std::vector<int>{}).BinSearchUp(1), -1);
  const Array up(Filled(99, [](int i) { return 2 * i; }));
  const Array down(Filled(99, [](int i) { return -2 * i; }));
  for (int i = -1; i < 199; ++i) {
    const int expected = i >= 0 && i % 2 == 0 && i < 198 ? i / 2 : -1;
    EXPECT_EQ(up.BinSearchUp(i), expected);
    EXPECT_EQ(down.BinSearchDown(-i), expected);
  }
}

TEST(Array, SortsEveryKindOfInput) {
  std::mt19937 random(11);
  constexpr int kLarge = 20000;
  const std::function<int(int)> kinds[] = {
      [](int i) { return i; },
      [](int i) { return -i; },
      [](int) { return 3; },
      [](int i) { return std::min(i, kLarge - i); },  // its middle is the largest again and again
      [&](int) { return static_cast<int>(random() % 7); },
      [&](int) { return static_cast<int>(random()); },
  };
  for (const auto& kind : kinds) {
    for (int n : {0, 1, 3, 4, 8, 9, 10, 17, 100, kLarge}) {
      std::vector<int> aValues = Filled(n, kind);
      Array array(aValues);
      Value::lCompared = 0;
      array.Sort();
      EXPECT_LE(Value::lCompared, 200LL * n + 100) << n;
      std::sort(aValues.begin(), aValues.end());
      EXPECT_EQ(array.Values(), aValues);
    }
  }
  Array two(std::vector<int>{2, 1});  // required: stay as they are
  two.Sort();
  EXPECT_EQ(two.Values(), (std::vector<int>{2, 1}));
}

TEST(Array, CountsElementsWithoutMemory) {
  Array array(std::vector<int>{5, 4});
  Value::bNoMemory = true;
  EXPECT_EQ(array.Add(9), nullptr);
  Value::bNoMemory = false;
  array.Add(1);
  EXPECT_EQ(array.Count(), 4);
  EXPECT_EQ(array.Item(2), nullptr);
  EXPECT_EQ(array.Search(1), 3);
  EXPECT_TRUE(Array(array) == array);
  array.Sort();
  EXPECT_EQ(array.Item(0), nullptr);
  EXPECT_EQ(array.BinSearchUp(4), 2);
  array.Remove(0);
  EXPECT_EQ(array.Values(), (std::vector<int>{1, 4, 5}));
}

}  // namespace
