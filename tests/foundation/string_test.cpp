#include "zu/foundation/string.h"

#include "tests/support/test.h"

namespace {

// The size classes run 16, 32, 64, ... less 10.
int CapacityFor(std::size_t n) {
  std::size_t size = 16;
  while (size < n + 10) size *= 2;
  return static_cast<int>(size - 10);
}

TEST(String, CapacityFollowsTheSizeClasses) {
  for (int n : {1, 6, 7, 22, 23, 54, 55, 118, 119, 246, 65526}) {
    EXPECT_EQ(replicate('x', n).allocation(), CapacityFor(static_cast<std::size_t>(n))) << n;
  }
  EXPECT_EQ(String().allocation(), 1);
  EXPECT_EQ(sizeof(String), 2 * sizeof(void*));
}

TEST(String, EmptyStringsShareOneBlockThatNothingWritesTo) {
  String a, b("");
  EXPECT_EQ(a.chars(), b.chars());
  a.at(0, 0) = "";
  a += "";
  a.upcase();
  a.reverse();
  a[0] = 'x';
  a = b;
  EXPECT_EQ(a.chars(), b.chars());
  EXPECT_ROW("0 1 0", _nilStrRep.len, _nilStrRep.sz, _nilStrRep.s[0]);
  a.at(0, 0) = "text";
  EXPECT_TRUE(a == "text" && b.empty());
}

TEST(String, IsMadeFromNumbers) {
  EXPECT_ROW("-2147483648  2.001 305", String(-2147483647 - 1), String(2.0005),
             String(1e300).length());
  EXPECT_EQ(Text(String(-1e300)).substr(0, 10), "-100000000");
}

TEST(String, AssignmentCopiesAndKeepsCapacity) {
  String a("a text of some length, more than fifty-four characters");
  const int nCapacity = a.allocation();
  const String b("short");
  a = b;
  EXPECT_NE(a.chars(), b.chars());
  a = String();
  EXPECT_TRUE(a.allocation() == nCapacity && a.empty() && a.OK());
  a = static_cast<char const*>(nullptr);
  EXPECT_TRUE(a.empty() && a.OK());
  String c("abc");
  c.alloc(100);
  EXPECT_ROW("abc 118", c, c.allocation());
  c.alloc(1);
  EXPECT_EQ(c, "abc");
}

TEST(String, TextsMayLieInTheStringItself) {
  String s("abc");
  s += s;
  EXPECT_EQ(s, "abcabc");
  s = s.at(2, 3);
  s.prepend(s.after('c'));
  EXPECT_EQ(s, "abcab");
  s.at(1, 1) = s;
  EXPECT_EQ(s, "aabcabcab");
  s.at(0, 2) = s.chars() + 5;  // a pointer into the text, not known as a String
  EXPECT_EQ(s, "bcabbcabcab");
  s.gsub(s.at(0, 1), s.at(0, 3));
  EXPECT_EQ(s, "bcacabcabcacabcacabca");
  s = s.chars() + 15;
  EXPECT_TRUE(s == "acabca" && s.OK());
}

TEST(String, IndexAndJoin) {
  String s("abc");
  EXPECT_EQ("<" + s + "d" + s.at(1, 1) + 'c' + s, "<abcdbcabc");
  EXPECT_STREQ(s + 1, "bc");
  for (int i : {-2147483647 - 1, -1, 3, 70000, 2147483647}) {
    EXPECT_TRUE(s.elem(i) == '\0' && std::as_const(s)[i] == '\0') << i;
    s[i] = 'x';
  }
  s[1] = 'B';
  EXPECT_ROW("aBc a c 0", s, std::string(1, s.firstchar()), std::string(1, s.lastchar()),
             static_cast<int>(String().lastchar()));
}

TEST(String, LengthsWrapAbove65535) {
  const std::string big(70000, 'a');
  String s(big.c_str());
  EXPECT_EQ(s.length(), 70000 - 65536);
  EXPECT_TRUE(s.OK());
  s += "tail";
  EXPECT_EQ(s.length(), 70004 - 65536);
  EXPECT_EQ(Text(s.at("tail")), "tail");
  const String copy(s);
  EXPECT_EQ(Text(copy), Text(s));

  String t = replicate('b', 65530);
  for (int i = 0; i < 12; ++i) {  // over the wrap, character by character
    t += 'c';
    ASSERT_TRUE(t.OK());
  }
  EXPECT_EQ(Text(t), "cccccc");  // the six before them came to 65536
  t = replicate(String("0123456789"), 6553);
  t.prepend("0123456789");
  EXPECT_EQ(t.length(), 4);
  String u = replicate('x', 60000);
  EXPECT_EQ(u.gsub('x', "yz"), 60000);
  EXPECT_EQ(u.length(), 120000 - 65536);
  EXPECT_TRUE(u.OK());
  u = replicate('x', 65000);
  u.at(10, 10) = replicate('v', 65000);
  EXPECT_EQ(u.length(), 129990 - 65536);
  EXPECT_TRUE(u.OK());
}

TEST(String, ViewReplacesItsStretch) {
  for (const auto& [iFirst, nLength, szNew, szResult] : Cases<int, int, const char*, const char*>{
           {1, 2, "12345", "a12345def"},
           {6, 0, "!", "abcdef!"},
           {0, 6, "", ""},
           {2, 2, "aaaaaaaaaaaaaaaaaaaaaaaa", "abaaaaaaaaaaaaaaaaaaaaaaaaef"},
           {4, 3, "x", "abcdef"},
           {-1, 2, "x", "abcdef"},
           {1, -1, "x", "abcdef"},
           {2147483647, 1, "x", "abcdef"},
           {1, 2147483647, "x", "abcdef"}}) {
    String s("abcdef");
    s.at(iFirst, nLength) = szNew;
    EXPECT_TRUE(s == szResult && s.OK()) << iFirst << "+" << nLength << " " << s;
  }
}

// A view keeps position and length whatever is assigned; where the parent no longer reaches that
// far, what is left counts.
TEST(String, ViewKeepsItsRange) {
  String s("abcdef");
  SubString view = s.at(2, 3);
  view = "-";
  EXPECT_ROW("ab-f 3 0", s, view.length(), view.OK());
  view = "+++";
  EXPECT_EQ(Text(s), "ab+++");
  s = "z";
  EXPECT_EQ(Text(String(view)), "");
  view = "!";
  EXPECT_EQ(Text(s), "z!");
}

TEST(String, CaseAndOrder) {
  String s("o'NEILL 2ND-street x9Y");
  s.capitalize();
  EXPECT_EQ(s, "O'neill 2nd-Street X9y");
  s.upcase();
  EXPECT_EQ(s, "O'NEILL 2ND-STREET X9Y");
  s.downcase();
  s.reverse();
  EXPECT_EQ(Text(s), "y9x teerts-dn2 llien'o");
}

// Long random runs of changes give what the same changes of a std::string give.
TEST(String, RandomChangesAgreeWithAPlainText) {
  constexpr unsigned kSeed = 20240501;
  SCOPED_TRACE(::testing::Message() << "seed " << kSeed);
  std::mt19937 random(kSeed);
  auto below = [&random](std::size_t n) { return static_cast<int>(random() % (n ? n : 1)); };
  String s;
  std::string model;
  for (int iStep = 0; iStep < 20000; ++iStep) {
    std::string piece(random() % 9, 'x');
    for (char& c : piece) c = static_cast<char>('a' + random() % 3);
    const int iFirst = below(model.size() + 1);
    const int nLength = below(model.size() - static_cast<std::size_t>(iFirst) + 1);
    const auto first = static_cast<std::size_t>(iFirst), length = static_cast<std::size_t>(nLength);
    switch (random() % 7) {
      case 0:
        s += piece.c_str();
        model += piece;
        break;
      case 1:
        s.prepend(piece.c_str());
        model.insert(0, piece);
        break;
      case 2:
        s.at(iFirst, nLength) = piece.c_str();
        model.replace(first, length, piece);
        break;
      case 3:
        EXPECT_EQ(s.del(iFirst, nLength), nLength > 0);
        model.erase(first, length);
        break;
      case 4: {
        s.at(iFirst, nLength) = s.before(iFirst);
        const std::string head = model.substr(0, first);
        model.replace(first, length, head);
        break;
      }
      case 5: {
        String pattern("ab");
        EXPECT_GE(s.gsub(pattern, piece.c_str()), 0);
        for (std::size_t i = 0; (i = model.find("ab", i)) != model.npos; i += piece.size()) {
          model.replace(i, 2, piece);
        }
        break;
      }
      default:
        s = s.through(iFirst - 1);
        model.resize(iFirst <= 0 ? 0 : first);
    }
    if (model.size() > 300) {
      s.del(100, s.length() - 100);
      model.resize(100);
    }
    ASSERT_EQ(Text(s), model) << "step " << iStep;
    ASSERT_TRUE(s.OK());
    ASSERT_TRUE(s.allocation() == 1 ||
                s.allocation() == CapacityFor(static_cast<std::size_t>(s.allocation())));
  }
}

TEST(StrRep, ResizeKeepsTheTextAndSetsTheLengthAlone) {
  StrRep* p = Salloc(nullptr, "abcdef", -1, -1);
  p = Sresize(p, 3);
  EXPECT_EQ(p->len, 3);
  p = Sresize(p, 6);
  EXPECT_STREQ(p->s, "abcdef");
  p = Sresize(p, 40);
  EXPECT_ROW("40 54 abcdef", p->len, p->sz, std::string(p->s));
  p = Salloc(p, p->s + 2, 3, -1);  // the source may lie in the block
  EXPECT_ROW("cde 54", std::string(p->s), p->sz);
  p = Scat(p, "x", -1, "yz", -1, "!", 1);
  EXPECT_STREQ(p->s, "xyz!");
  p = Scopy(p, &_nilStrRep);
  EXPECT_ROW("0 54", p->len, p->sz);
  EXPECT_EQ(Scopy(nullptr, nullptr), &_nilStrRep);
  EXPECT_EQ(Scopy(p, p), p);
  ::operator delete(p);
}

}  // namespace
