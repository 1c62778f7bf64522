#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "zu/foundation/locale.h"
#include "zu/foundation/string.h"
#include "zu/foundation/unicode.h"

namespace {

std::vector<std::string> Texts(String const results[], int n) {
  std::vector<std::string> texts;
  for (int i = 0; i < n; ++i) texts.emplace_back(results[i].chars());
  return texts;
}

using Strings = std::vector<std::string>;

TEST(StringFunctions, CompareGivesTheFirstDifference) {
  EXPECT_EQ(compare("abc", "abd"), -1);
  EXPECT_EQ(compare(String("abc"), String("ab")), 'c');
  EXPECT_EQ(compare(String("\xE4"), String("a")), static_cast<signed char>('\xE4') - 'a');
  EXPECT_EQ(compare(String("a"), static_cast<char const*>(nullptr)), 1);
  EXPECT_EQ(compare(String(), static_cast<char const*>(nullptr)), 0);
  String s("abcdef");
  EXPECT_EQ(compare(s.at(0, 3), "abcde"), -2);
  EXPECT_EQ(compare(s, s.at(0, 2)), 4);
  EXPECT_EQ(compare(s.at(1, 2), s.at(1, 2)), 0);

  EXPECT_EQ(fcompare("abc", "ABCD"), -1);
  EXPECT_EQ(fcompare("aBcd", "AbC"), 1);
  EXPECT_EQ(fcompare("a", "B"), -1);
  EXPECT_NE(fcompare("\xE4", "\xC4"), 0);  // ASCII letters alone
  EXPECT_EQ(fcompare("[", "{"), '[' - '{');

  EXPECT_TRUE(String("a") < "b" && String("b") > String("a") && "x" == String("x"));
}

TEST(StringFunctions, CommonEnds) {
  EXPECT_EQ(common_prefix("abcdef", "abcxef"), "abc");
  EXPECT_EQ(common_prefix("abcdef", "xbcdxx", 1), "bcd");
  EXPECT_EQ(common_prefix("abc", "abc", 5), "");
  EXPECT_EQ(common_prefix("abc", "abc", -1), "");
  EXPECT_EQ(common_suffix("photo.jpg", "oto.jpg"), "oto.jpg");
  EXPECT_EQ(common_suffix("ab1", "cb2", -2), "b");
  EXPECT_EQ(common_suffix("ab", "ab", -5), "");
  EXPECT_EQ(common_suffix("ab", "ab", 0), "");
}

TEST(StringFunctions, SplitAndJoin) {
  String results[9];
  EXPECT_EQ(split("a,,b", results, 9, ","), 3);
  EXPECT_EQ(Texts(results, 3), (Strings{"a", "", "b"}));
  EXPECT_EQ(split("a,", results, 9, ','), 1);
  EXPECT_EQ(split("", results, 9, ","), 0);
  EXPECT_EQ(split("a--b--c", results, 2, "--"), 2);
  EXPECT_EQ(Texts(results, 2), (Strings{"a", "b"}));
  EXPECT_EQ(split("abc", results, 9, ""), 1);
  results[0] = "1:2:3";
  EXPECT_EQ(split(results[0], results, 9, ":"), 3);
  EXPECT_EQ(join(results, 3, "; "), "1; 2; 3");
  EXPECT_EQ(join(results, 1, "; "), "1");
}

TEST(StringFunctions, TokenizeCollapsesDelimiters) {
  String results[3];
  EXPECT_EQ(tokenize("  one, two ,,three four", results, 3, " ,"), 3);
  EXPECT_EQ(Texts(results, 3), (Strings{"one", "two", "three"}));
  EXPECT_EQ(tokenize("  ", results, 3, " "), 0);
  EXPECT_EQ(tokenize("a", results, 0, " "), 0);
  EXPECT_EQ(tokenize("a b", results, 3, ""), 1);

  std::vector<String> tokens{"kept"};
  EXPECT_EQ(tokenize("x;y", tokens, ";"), 3);
  EXPECT_EQ(Texts(tokens.data(), 3), (Strings{"kept", "x", "y"}));
}

TEST(StringFunctions, Replicate) {
  EXPECT_EQ(replicate('a', 3), "aaa");
  EXPECT_EQ(replicate(String("ab"), 3), "ababab");
  EXPECT_TRUE(replicate('a', 0).empty() && replicate(String("ab"), -1).empty());
}

TEST(StringFunctions, ReadlineReadsLines) {
  std::istringstream stream("first\n\nthird;rest");
  String line("old");
  EXPECT_EQ(readline(stream, line), 5);
  EXPECT_EQ(line, "first");
  EXPECT_EQ(readline(stream, line), 0);
  EXPECT_TRUE(line.empty() && line.OK());
  EXPECT_EQ(readline(stream, line, ';', 0), 6);
  EXPECT_EQ(line, "third;");
  EXPECT_FALSE(stream.eof());
  EXPECT_EQ(readline(stream, line), 4);
  EXPECT_TRUE(stream.eof());
  EXPECT_EQ(readline(stream, line), 0);
  EXPECT_TRUE(line.empty());
  EXPECT_EQ(line.allocation(), 118);

  std::istringstream big(std::string(200000, 'x') + "\nnext");
  EXPECT_EQ(readline(big, line), 200000);
  EXPECT_EQ(line.length(), 200000 % 65536);
  EXPECT_TRUE(line.OK());
  EXPECT_EQ(readline(big, line), 4);
  EXPECT_EQ(line, "next");
}

TEST(StringFunctions, SprintfFillsPlaceholders) {
  String out;
  EXPECT_EQ(Sprintf(out, "%2-%1", "x", "y"), 2);
  EXPECT_EQ(out, "y-x");
  EXPECT_EQ(Sprintf(out, "%1 %1 %6 %", "a"), 2);
  EXPECT_EQ(out, "a a %6 %");
  EXPECT_EQ(Sprintf(out, "<%5>"), 1);
  EXPECT_EQ(out, "<>");
  // Placeholders of higher numbers inside an argument are replaced too.
  EXPECT_EQ(Sprintf(out, "%1", "(%2)", "b"), 2);
  EXPECT_EQ(out, "(b)");
  out = "me";
  EXPECT_EQ(Sprintf(out, "[%1]", out), 1);
  EXPECT_EQ(out, "[me]");
}

TEST(StringFunctions, StreamsKeepTheWidth) {
  std::ostringstream stream;
  stream.width(6);
  stream << String("ab");
  stream << std::left;
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
  const struct {
    char const* szBytes;
    wchar_t const* szText;
  } cases[] = {{"\xE2\x82", L"\uFFFD"},                  // cut by the terminator
               {"\xF0\x9F\x98", L"\uFFFD"},              //
               {"a\x80z", L"a\uFFFDz"},                  // follower without a start
               {"\xC0\xAF", L"\uFFFD\uFFFD"},            // overlong
               {"\xED\xA0\x80", L"\uFFFD\uFFFD\uFFFD"},  // surrogate
               {"\xF4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD"},
               {"\xC3(", L"\uFFFD("},
               {"\xFF\xFE", L"\uFFFD\uFFFD"}};
  for (const auto& c : cases) EXPECT_STREQ(AnsiToUni(c.szBytes)(), c.szText) << c.szBytes;
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
