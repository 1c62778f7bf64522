#include "zu/foundation/numbers.h"

#include "tests/support/test.h"

namespace {

std::uint64_t Bits(double d) { return std::bit_cast<std::uint64_t>(d); }

int Saturated(char const* szText) {
  const long n = std::strtol(szText, nullptr, 10);
  return n > INT_MAX ? INT_MAX : n < INT_MIN ? INT_MIN : static_cast<int>(n);
}

// All forms of reading, the bounded ones on a heap block that ends with the text.
void ExpectReadsLikeTheRuntime(std::string const& text) {
  char* pStop = nullptr;
  const double dExpected = std::strtod(text.c_str(), &pStop);
  const auto nTaken = pStop - text.c_str();
  const auto block = std::make_unique<char[]>(text.size());
  std::memcpy(block.get(), text.data(), text.size());
  char const *const pBegin = block.get(), *const pEnd = pBegin + text.size();
  char const* pNumberEnd = nullptr;

  ASSERT_EQ(Bits(ZuAtof(text.c_str())), Bits(dExpected)) << text;
  ASSERT_EQ(Bits(ZuAtof(pBegin, pEnd)), Bits(dExpected)) << text;
  ASSERT_EQ(Bits(ZuAtof(pBegin, pEnd, &pNumberEnd)), Bits(dExpected)) << text;
  ASSERT_EQ(pNumberEnd - pBegin, nTaken) << text;
  ASSERT_EQ(ZuAtoi(text.c_str()), Saturated(text.c_str())) << text;
  ASSERT_EQ(ZuAtoi(pBegin, pEnd), Saturated(text.c_str())) << text;
}

TEST(NumbersRead, FormsOfTheRuntime) {
  std::istringstream texts(
      "| |+|-|.|-.|e5|+e5|.e5|1|+1|-1|+-1|--1|+ 1|1.|.5|-.5|1e|1e+|1e-|1e+5|1E-5|1e5e5|1.5.5|"
      "1-2|12abc|12 34|1,5|\t\n\v\f\r 7|\xA0 7|0x|0x1|0X1.8p3|-0x.8p-2|0xg|0x.p1|0x1p|0x1p+|"
      "0x1.fffffffffffff8p0|00012|-0|-0.0|0e999999999999|inf|-INF|infinity|infinit|+Infinityx|"
      "nan|-nan|NaN(123)|nan(|nan(12|nan(a_Z9)x|nan(-)|in|na|n|i|1e308|1.8e308|-1e309|"
      "1e999999999999999999999|1e-323|2e-324|3e-324|-1e-400|4.9406564584124654e-324|"
      "2.2250738585072011e-308|2.2250738585072014e-308|1.7976931348623158e308|"
      "1.7976931348623159e308|9007199254740993|9007199254740992.5|"
      "9007199254740993.0000000000000000000000000000000001|123456789012345678901234567890|"
      "0.1234567890123456789012345678901234567890e30|2147483647|2147483648|-2147483648|"
      "-2147483649|9223372036854775807|9223372036854775808|-99999999999999999999|"
      "000000000000000000000000000000000001|8.5e+00|1_000|0b1");
  for (std::string text; std::getline(texts, text, '|');) ExpectReadsLikeTheRuntime(text);
  ExpectReadsLikeTheRuntime("");
  ExpectReadsLikeTheRuntime(std::string(5000, '0') + "." + std::string(5000, '9') + "e5001");
  ExpectReadsLikeTheRuntime(std::string(400, '9'));
  ExpectReadsLikeTheRuntime("0." + std::string(400, '0') + "1e390");
  ExpectReadsLikeTheRuntime("0x" + std::string(400, 'f') + "p-1600");
}

TEST(NumbersRead, RandomTextsReadLikeTheRuntime) {
  constexpr unsigned kSeed = 4711;
  SCOPED_TRACE(::testing::Message() << "seed " << kSeed);
  std::mt19937_64 random(kSeed);
  char szText[512];
  for (int i = 0; i < 60000; ++i) {
    const double dAny = std::bit_cast<double>(random());
    const double dNear = (static_cast<double>(random() >> 11) - 4.5e15) * 1e-11;
    std::snprintf(szText, sizeof(szText), "%.*g", static_cast<int>(1 + random() % 24), dAny);
    ExpectReadsLikeTheRuntime(szText);
    std::snprintf(szText, sizeof(szText), "  %+.*f ", static_cast<int>(random() % 20), dNear);
    ExpectReadsLikeTheRuntime(szText);
    // Half way between two doubles, and a little beside it.
    const double dHalf = std::bit_cast<double>(
        (random() & 0x0FFFFFFFFFFFFFFF) % 0x5FF0000000000000 + 0x0010000000000000);
    const long double dMiddle =
        (static_cast<long double>(dHalf) + std::nextafter(dHalf, INFINITY)) / 2;
    std::snprintf(szText, sizeof(szText), "%.*Le", static_cast<int>(14 + random() % 12), dMiddle);
    ExpectReadsLikeTheRuntime(szText);
  }
  const std::string alphabet = " +-.eE0123456789xpinfa(";
  for (int i = 0; i < 100000; ++i) {
    std::string text(random() % 14, ' ');
    for (char& c : text) c = alphabet[random() % alphabet.size()];
    ExpectReadsLikeTheRuntime(text);
  }
}

// All forms of writing, into a block of the promised size.
void ExpectWritesLikePrintf(double d) {
  char szExpected[512];
  const auto expect = [&](char const* szWhat, int nRoom, auto write) {
    const auto block = std::make_unique<char[]>(static_cast<std::size_t>(nRoom));
    const std::string text(block.get(), write(block.get()));
    ASSERT_EQ(text, szExpected) << szWhat << " of bits " << std::hex << Bits(d);
  };
  std::snprintf(szExpected, sizeof(szExpected), "%.16g", d);
  expect("general 16", kZuGeneral16Size, [d](char* p) { return ZuFormatGeneral16(p, d); });
  std::snprintf(szExpected, sizeof(szExpected), "%.9f", d);
  expect("fixed 9", kZuFixed9Size, [d](char* p) { return ZuFormatFixed9(p, d); });
  std::snprintf(szExpected, sizeof(szExpected), "%18.9f", d);
  expect("fixed 18.9", kZuFixed9Size, [d](char* p) { return ZuFormatFixed9(p, d, 18); });
}

TEST(NumbersWrite, EdgeValuesWriteLikePrintf) {
  std::istringstream edges(
      "0.0 0.5 1.5 2.5 1e15 1e16 9999999999999999.0 99999999999999995.0 1e17 123456789.5 "
      "0.0001 0.00001 0.00009999999999999999 0.00099999999999999999 5e-10 1.5e-9 2.5e-9 "
      "4.9999999999999995e-10 0.9999999995 0.99999999949999996 1.0000000005 "
      "9007199254740993.0 1.7976931348623157e308 2.2250738585072014e-308 4.9e-324 1e22 1e23 "
      "9.5367431640625e-7 0.30000000000000004 18446744073.709551615 18446744073709551616.0 "
      "4503599627370496.5 inf nan");
  for (std::string text; edges >> text;) {
    const double d = std::strtod(text.c_str(), nullptr);
    ExpectWritesLikePrintf(d);
    ExpectWritesLikePrintf(-d);
  }
  for (int i = -1074; i <= 1023; ++i) ExpectWritesLikePrintf(std::ldexp(1.0, i));
  for (int i = -324; i <= 308; ++i) {
    const double d = std::strtod(("1e" + std::to_string(i)).c_str(), nullptr);
    ExpectWritesLikePrintf(d);
    ExpectWritesLikePrintf(std::nextafter(d, 0.0));
    ExpectWritesLikePrintf(std::nextafter(d, INFINITY));
  }
}

TEST(NumbersWrite, RandomValuesWriteLikePrintf) {
  constexpr unsigned kSeed = 815;
  SCOPED_TRACE(::testing::Message() << "seed " << kSeed);
  std::mt19937_64 random(kSeed);
  for (int i = 0; i < 100000; ++i) {
    ExpectWritesLikePrintf(std::bit_cast<double>(random()));
    // Measured values, and values that lie half way between two texts.
    const double dMeasured = (static_cast<double>(random() % 2000000000000) - 1e12) * 1e-6;
    ExpectWritesLikePrintf(dMeasured);
    ExpectWritesLikePrintf(std::ldexp(static_cast<double>(random() >> (11 + random() % 52)),
                                      -static_cast<int>(random() % 70)));
    ExpectWritesLikePrintf(static_cast<double>(random() % 100000) * 0.5e-9);
  }
}

TEST(NumbersWrite, OtherPrecisionsWriteLikePrintf) {
  std::mt19937_64 random(3);
  char szExpected[1024], szText[1024];
  for (int i = 0; i < 20000; ++i) {
    const double d = std::bit_cast<double>(random());
    const int iPrecision = static_cast<int>(random() % 40) - 1;
    std::snprintf(szExpected, sizeof(szExpected), "%.*g", iPrecision, d);
    ASSERT_EQ(std::string(szText, ZuFormatGeneral(szText, d, iPrecision)), szExpected);
    std::snprintf(szExpected, sizeof(szExpected), "%.*f", iPrecision, d);
    ASSERT_EQ(std::string(szText, ZuFormatFixed(szText, d, iPrecision)), szExpected);
  }
}

}  // namespace
