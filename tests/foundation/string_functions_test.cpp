#include <clocale>

#include "tests/support/test.h"
#include "zu/foundation/locale.h"
#include "zu/foundation/string.h"
#include "zu/foundation/unicode.h"

namespace {

// The first n texts with bars between them.
std::string Joined(String const results[], int n) {
  std::string text;
  for (int i = 0; i < n; ++i) text += (i > 0 ? "|" : "") + Text(results[i]);
  return text;
}

TEST(StringFunctions, CompareGivesTheFirstDifference) {
  String s("abcdef");
  EXPECT_ROW("-1 99 -125 1 0 -2 4 0", compare("abc", "abd"), compare(String("abc"), String("ab")),
             compare(String("\xE4"), String("a")),
             compare(String("a"), static_cast<char const*>(nullptr)),
             compare(String(), static_cast<char const*>(nullptr)), compare(s.at(0, 3), "abcde"),
             compare(s, s.at(0, 2)), compare(s.at(1, 2), s.at(1, 2)));
  EXPECT_ROW("-1 1 -1 -32", fcompare("abc", "ABCD"), fcompare("aBcd", "AbC"), fcompare("a", "B"),
             fcompare("[", "{"));
  EXPECT_NE(fcompare("\xE4", "\xC4"), 0);  // ASCII letters alone
  EXPECT_TRUE(String("a") < "b" && String("b") > String("a") && "x" == String("x"));
}

TEST(StringFunctions, CommonEnds) {
  EXPECT_ROW("abc bcd ,,", common_prefix("abcdef", "abcxef"), common_prefix("abcdef", "xbcdxx", 1),
             common_prefix("abc", "abc", 5) + "," + common_prefix("abc", "abc", -1) + ",");
  EXPECT_ROW("oto.jpg b ,,", common_suffix("photo.jpg", "oto.jpg"), common_suffix("ab1", "cb2", -2),
             common_suffix("ab", "ab", -5) + "," + common_suffix("ab", "ab", 0) + ",");
}

TEST(StringFunctions, SplitJoinTokenizeAndReplicate) {
  String results[9];
  const auto split9 = [&](const char* szText, const char* szSeparator, int n = 9) {
    return Joined(results, split(szText, results, n, szSeparator));
  };
  EXPECT_EQ(split9("a,,b", ","), "a||b");
  EXPECT_ROW("1 0", split("a,", results, 9, ','), split("", results, 9, ","));
  EXPECT_ROW("a|b abc", split9("a--b--c", "--", 2), split9("abc", ""));
  results[0] = "1:2:3";
  EXPECT_EQ(split(results[0], results, 9, ":"), 3);
  EXPECT_EQ(join(results, 3, "; ") + join(results, 1, "; "), "1; 2; 31");

  EXPECT_EQ(Joined(results, tokenize("  one, two ,,three four", results, 3, " ,")),
            "one|two|three");
  EXPECT_ROW("0 0 1", tokenize("  ", results, 3, " "), tokenize("a", results, 0, " "),
             tokenize("a b", results, 3, ""));
  std::vector<String> tokens{"kept"};
  EXPECT_ROW("3 kept|x|y", tokenize("x;y", tokens, ";"), Joined(tokens.data(), 3));
  EXPECT_ROW("aaa ababab ", replicate('a', 3), replicate(String("ab"), 3),
             replicate('a', 0) + replicate(String("ab"), -1));
}

TEST(StringFunctions, ReadlineReadsLines) {
  std::istringstream stream("first\n\nthird;rest");
  String line("old");
  EXPECT_ROW("5 first", readline(stream, line), line);
  EXPECT_EQ(readline(stream, line), 0);
  EXPECT_TRUE(line.empty() && line.OK());
  EXPECT_ROW("6 third; 0", readline(stream, line, ';', 0), line, stream.eof());
  EXPECT_ROW("4 1 0", readline(stream, line), stream.eof(), readline(stream, line));
  EXPECT_TRUE(line.empty() && line.allocation() == 118);

  std::istringstream big(std::string(200000, 'x') + "\nnext");
  EXPECT_ROW("200000 3392 1", readline(big, line), line.length(), line.OK());  // 200000 % 65536
  EXPECT_ROW("4 next", readline(big, line), line);
}

TEST(StringFunctions, SprintfFillsPlaceholders) {
  String out;
  EXPECT_ROW("2 y-x", Sprintf(out, "%2-%1", "x", "y"), out);
  EXPECT_ROW("2 a a %6 %", Sprintf(out, "%1 %1 %6 %", "a"), out);
  EXPECT_ROW("1 <>", Sprintf(out, "<%5>"), out);
  EXPECT_ROW("2 (b)", Sprintf(out, "%1", "(%2)", "b"), out);  // placeholders inside an argument too
  EXPECT_ROW("1 [(b)]", Sprintf(out, "[%1]", out), out);
}

TEST(StringFunctions, StreamsKeepTheWidth) {
  std::ostringstream stream;
  stream.width(6);
  stream << String("ab") << std::left;
  stream.width(4);
  stream << String("xyz").at(1, 2) << '|';
  EXPECT_EQ(stream.str(), "    abyz  |");
}

TEST(Unicode, GoesThereAndBack) {
  const wchar_t szText[] = L"a\u00E9\u20AC\U0001F600\U0010FFFF\u0080\u07FF\uFFFF";
  const UniToAnsi narrow(szText);
  EXPECT_STREQ(narrow(),
               "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF\xC2\x80\xDF\xBF\xEF\xBF\xBF");
  EXPECT_STREQ(AnsiToUni(narrow())(), szText);
  EXPECT_STREQ(AnsiToUni(std::string("abc"))(), L"abc");
  EXPECT_EQ(AnsiToUni("")(), nullptr);
  EXPECT_EQ(UniToAnsi(static_cast<wchar_t const*>(nullptr))(), nullptr);
}

TEST(Unicode, BytesThatAreNoCharacterAreReplaced) {
  for (const auto& [szBytes, szText] :
       Cases<char const*, wchar_t const*>{{"\xE2\x82", L"\uFFFD"},      // cut by the terminator
                                          {"\xF0\x9F\x98", L"\uFFFD"},  //
                                          {"a\x80z", L"a\uFFFDz"},      // follower without a start
                                          {"\xC0\xAF", L"\uFFFD\uFFFD"},            // overlong
                                          {"\xED\xA0\x80", L"\uFFFD\uFFFD\uFFFD"},  // surrogate
                                          {"\xF4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD"},
                                          {"\xC3(", L"\uFFFD("},
                                          {"\xFF\xFE", L"\uFFFD\uFFFD"}})
    EXPECT_STREQ(AnsiToUni(szBytes)(), szText) << szBytes;
  const wchar_t szBad[] = {static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0x110000), 0};
  EXPECT_STREQ(UniToAnsi(szBad)(), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

// A copy holds the same buffer; one of the two alone is destroyed.
TEST(Unicode, CopyTakesThePointerAlone) {
  alignas(UniToAnsi) unsigned char room[sizeof(UniToAnsi)];
  auto* const pFirst = new (room) UniToAnsi(L"text");
  const UniToAnsi copy(*pFirst);
  EXPECT_EQ(copy(), (*pFirst)());
}

TEST(Locale, ComesBack) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
  {
    const ZuCLocale locale;
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
  }
  EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C.UTF-8");
  std::setlocale(LC_ALL, before.c_str());
}

}  // namespace
