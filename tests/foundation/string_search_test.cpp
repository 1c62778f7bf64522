#include "tests/support/test.h"
#include "zu/foundation/string.h"

namespace {

bool StandsAt(std::string const& text, std::string const& pattern, int i) {
  return i >= 0 && !pattern.empty() &&
         static_cast<std::size_t>(i) + pattern.size() <= text.size() &&
         text.compare(static_cast<std::size_t>(i), pattern.size(), pattern) == 0;
}

// The definition: from `start` upward, or below 0 the last match that ends at that position.
int FirstMatch(std::string const& text, std::string const& pattern, int start) {
  const int n = static_cast<int>(text.size()), m = static_cast<int>(pattern.size());
  if (start >= 0) {
    for (int i = start; i < n; ++i) {
      if (StandsAt(text, pattern, i)) return i;
    }
  } else {
    for (int i = n + start - m + 1; i >= 0; --i) {
      if (StandsAt(text, pattern, i)) return i;
    }
  }
  return -1;
}

TEST(StringSearch, AgreesWithItsDefinition) {
  constexpr unsigned kSeed = 77;
  SCOPED_TRACE(::testing::Message() << "seed " << kSeed);
  std::mt19937 random(kSeed);
  for (int iRun = 0; iRun < 20000; ++iRun) {
    std::string text(random() % 12, 'a'), pattern(random() % 4, 'a');
    for (char& c : text) c = static_cast<char>('a' + random() % 2);
    for (char& c : pattern) c = static_cast<char>('a' + random() % 2);
    const int start = static_cast<int>(random() % 30) - 15;
    SCOPED_TRACE(::testing::Message() << text << " " << pattern << " " << start);
    const String s(text.c_str()), p(pattern.c_str());

    const int i = FirstMatch(text, pattern, start);
    ASSERT_EQ(s.index(p, start), i);
    ASSERT_EQ(s.index(pattern.c_str(), start), i);
    if (pattern.size() == 1) {
      ASSERT_EQ(s.index(pattern[0], start), i);
    }
    ASSERT_EQ(Text(s.at(p, start)), i < 0 ? "" : pattern);
    const auto from = static_cast<std::size_t>(i < 0 ? 0 : i);
    ASSERT_EQ(Text(s.before(p, start)), i < 0 ? "" : text.substr(0, from));
    ASSERT_EQ(Text(s.through(p, start)), i < 0 ? "" : text.substr(0, from + pattern.size()));
    ASSERT_EQ(Text(s.from(p, start)), i < 0 ? "" : text.substr(from));
    ASSERT_EQ(Text(s.after(p, start)), i < 0 ? "" : text.substr(from + pattern.size()));

    int nCount = 0;
    for (int k = 0; k < s.length(); ++k) nCount += StandsAt(text, pattern, k);
    ASSERT_EQ(s.freq(p), nCount);
    ASSERT_EQ(s.contains(p), nCount > 0);
    const int nPattern = static_cast<int>(pattern.size());
    const int iAt = start >= 0 ? start : s.length() + start + 1 - nPattern;
    ASSERT_EQ(s.contains(p, start), StandsAt(text, pattern, iAt));
    const bool bWhole = start >= 0 ? iAt + nPattern == s.length() : iAt == 0;
    ASSERT_EQ(s.matches(p, start), bWhole && StandsAt(text, pattern, iAt));
  }
}

TEST(StringSearch, CutsByPosition) {
  String s("abcabc");
  EXPECT_ROW("ab abc cabc abc abcabc bc", s.before(2), s.through(2), s.from(2), s.after(2),
             s.after(-1), s(1, 2));
  EXPECT_ROW("5 2", s.index('c', -1), s.index('c', -2));
  for (int i : {-2147483647 - 1, -2, 7, 2147483647}) {
    EXPECT_EQ(Text(s.before(i)) + Text(s.through(i)) + Text(s.from(i)) + Text(s.after(i)), "") << i;
    s.before(i) = s.through(i) = s.from(i) = s.after(i) = "changed";
    EXPECT_EQ(s, "abcabc");
  }
}

TEST(StringSearch, WorksInViews) {
  String s("key = value");
  EXPECT_TRUE(s.after('=').contains("val") && s.contains(s.at(4, 3)));
  EXPECT_FALSE(s.before('=').contains("val") || s.before('=').contains(""));
  EXPECT_ROW("2 key=value", s.gsub(s.at(3, 1), ""), s);
  EXPECT_ROW("1 0", s.del("="), s.del("="));
  EXPECT_FALSE(s.del(0, 0) || s.del(-1, 1) || s.del(5, 2147483647));
  EXPECT_ROW("1 eyvalue", s.del('k', 0), s);
}

}  // namespace
