#include "zu/foundation/parser.h"

#include "tests/support/test.h"

namespace {

// One token in a short form: i12 f2.5 kWORD "text" o{other} { } and $ for the end of the file.
std::string Show(const ZuParserToken& token) {
  const std::string strText = token.m_szText;
  switch (token.m_eType) {
    case eZuTokenInt:
      return 'i' + Text(token.m_iValue);
    case eZuTokenFloat:
      return 'f' + Text(token.m_dValue);
    case eZuTokenKeyword:
      return 'k' + strText;
    case eZuTokenString:
      return '"' + strText + '"';
    case eZuTokenBlockOpen:
      return "{";
    case eZuTokenBlockClose:
      return "}";
    case eZuTokenEof:
      return "$";
    default:
      return 'o' + strText;
  }
}

// All tokens up to the end of the text; a fault shows as !status@line and reading goes on.
std::string Tokens(const std::string& strText, ZuParser& parser) {
  std::istringstream stream(strText);
  std::string strTokens;
  do {
    try {
      strTokens += Show(parser.ParseForToken(stream)) + ' ';
    } catch (const ZuParserStatus& status) {
      strTokens +=
          '!' + std::to_string(status.m_eStatus) + '@' + std::to_string(status.m_uLine) + ' ';
      if (status.m_eStatus == ParserErrorStream) break;
    }
  } while (parser.GetToken().m_eType != eZuTokenEof);
  return strTokens;
}

std::string Tokens(const std::string& strText) {
  ZuParser parser;
  return Tokens(strText, parser);
}

void ExpectTokens(const std::vector<std::pair<std::string, std::string>>& cases) {
  for (const auto& [strText, strTokens] : cases) {
    EXPECT_EQ(Tokens(strText), strTokens) << strText.substr(0, 80);
  }
}

TEST(Parser, CutsLinesIntoTokens) {
  ExpectTokens({
      {"", "$ "},
      {"A 1\tB  2.5", "kA i1 kB f2.5 $ "},
      {"A{1}{}B\"x\"2", "kA { i1 } { } kB \"x\" i2 $ "},
      {"A ; B { \"\nC!D", "kA kC $ "},
      {"A;B\nC", "kA kC $ "},
      {"\"a ; { } b\" \"\"", "\"a ; { } b\" \"\" $ "},
      {"\n\n  \n A \n\n", "kA $ "},
      {"P1 A_1 A-B Ab", "kP1 kA_1 kA-B kAb $ "},
      // A token at the end of a line, then a shorter line: nothing of the longer one is seen.
      {"AAAAAAAAAA 12345\nB\n\nC 1", "kAAAAAAAAAA i12345 kB kC i1 $ "},
      // Required: the text of a word runs on over a } behind it; the cursor does not.
      {"{ 1}", "{ i1 } $ "},
      {"{ 2.5}}", "{ f2.5 } } $ "},
      {"A} B", "kA} B } kB $ "},
  });
}

TEST(Parser, TellsNumbersFromWords) {
  ExpectTokens({
      {"1 -1 +7 007", "i1 i-1 i7 i7 $ "},
      {"1. .5 -.5 1e5 1E-2 1.5e1", "f1 f0.5 f-0.5 f1e+05 f0.01 f15 $ "},
      {"1e999 -1e999 1e-999", "finf f-inf f0 $ "},
      {"9999999999 -9999999999", "i2147483647 i-2147483648 $ "},
      {"- . +- ,", "o- o. o+- o, $ "},
      {"e1 E", "ke1 kE $ "},                              // the letter stands before any digit
      {"12e 5ee 1.2.3 1:30 #5", "f12 f5 f1.2 i1 i0 $ "},  // what atof and atoi make of it
      {"1,5", "i1 $ "},
  });
}

TEST(Parser, FaultsLineEndsAndByteOrderMark) {
  ExpectTokens({
      {"A\n12abc B", "kA !4@2 kB $ "},
      {"0x10 _A \xC3\x9C"
       "ber",
       "!4@1 !4@1 !4@1 $ "},
      {"A \"text\nB", "kA !3@1 kB $ "},
      {"\"", "!3@1 $ "},
      {"A 1\r\nB \"x\"\r\n\r\nC\r\r\n", "kA i1 kB \"x\" kC $ "},
      {"\xEF\xBB\xBF"
       "A 1\n",
       "kA i1 $ "},
      {"\xEF\xBB\xBF", "$ "},
      {"A\n\xEF\xBB\xBF"
       "B",
       "kA !4@2 $ "},                             // only the first line may begin with it
      {std::string("A\0B 1\nC", 7), "kA kC $ "},  // a NUL byte costs the rest of its line
      {"A \"x\r\nB", "kA !3@1 kB $ "},
  });
}

// A line longer than the buffer is a failure of the stream; nothing behind it is read.
TEST(Parser, LengthOfALine) {
  const std::string strLongest(ZuParser::kLineSize - 3, ' ');
  ExpectTokens({
      {strLongest + "1\nB", "i1 kB $ "},
      {strLongest + "12", "i12 $ "},
      {"\xEF\xBB\xBF" + strLongest + "12\r\n3", "i12 i3 $ "},
      {"A\n" + strLongest + "123\nB", "kA !2@2 "},
      {"A\n" + strLongest + "123", "kA !2@2 "},
      {std::string(100000, 'x'), "!2@1 "},
  });
}

TEST(Parser, CountsTokensAndBraces) {
  ZuParser parser;
  std::istringstream stream("A { { } 1 } } }");
  const struct {
    std::int64_t iDepth, iTokenDepth;
  } expected[] = {{0, 0}, {1, 0}, {2, 1}, {1, 2}, {1, 1}, {0, 1}, {0, 0}, {0, 0}};
  unsigned int uCount = 0;
  for (const auto& e : expected) {
    parser.ParseForToken(stream);
    EXPECT_EQ(parser.GetDepth(), e.iDepth) << uCount;
    EXPECT_EQ(parser.GetTokenDepth(), e.iTokenDepth) << uCount;
    EXPECT_EQ(parser.GetStatus().m_uTokenCount, ++uCount);
  }
}

TEST(Parser, ClassesOfBytesCanBeSwitched) {
  ZuParser parser;
  parser.SetTokenseperator(';', true);
  parser.SetCommentChar('!', false);
  parser.SetCommentChar('#', true);
  EXPECT_EQ(Tokens("A;B!C # D", parser), "kA kB!C $ ");
  parser.SetCommentChar(';', true);
  EXPECT_EQ(Tokens("A;B", parser), "kA $ ");
  parser.SetTokenseperator(',', true);
  EXPECT_EQ(Tokens("1,5", parser), "i1 i5 $ ");
  parser.SetDecPoint(',');
  EXPECT_EQ(Tokens("1,5 1.5 2,5e1", parser), "f1.5 i1 f25 $ ");

  ZuParser other;
  other.GetChLookup().SetFlags("[(", eZuChBlockOpen);
  other.GetChLookup().SetFlags("])", eZuChBlockClose);
  other.GetChLookup().ClearFlags("{}", eZuChBlockOpen | eZuChBlockClose);
  other.GetChLookup().SetFlags('x', 1024);  // a bit of the application's own ends no word
  EXPECT_EQ(Tokens("[(1)] y{x", other), "{ { i1 } } ky{x $ ");
}

TEST(Parser, GetTokenTestsTheType) {
  const eZuTokentype types[] = {eZuTokenInt,    eZuTokenFloat,     eZuTokenKeyword,
                                eZuTokenString, eZuTokenBlockOpen, eZuTokenBlockClose,
                                eZuTokenOther,  eZuTokenEof};
  ZuParser parser;
  const auto statusOf = [&](const auto& take) {
    try {
      take();
    } catch (const ZuParserStatus& status) {
      return status.m_eStatus;
    }
    return ParserStatusOK;
  };
  std::istringstream stream("1 2.5 A \"s\" { } -");
  for (eZuTokentype eIs : types) {
    parser.ParseForToken(stream);
    const bool bEnd = eIs == eZuTokenEof;
    parser.SetStatus(bEnd ? ParserStatusEOF : ParserStatusOK);
    for (eZuTokentype eWanted : types) {
      const auto eStatus = statusOf([&] { EXPECT_EQ(parser.GetToken(eWanted).m_eType, eWanted); });
      EXPECT_EQ(eStatus, eIs == eWanted ? ParserStatusOK
                         : bEnd         ? ParserStatusEOF
                                        : ParserErrorNotSpecifiedToken)
          << "is " << eIs << ", wanted " << eWanted;
    }
    const bool bNumber = eIs == eZuTokenInt || eIs == eZuTokenFloat;
    const auto eStatus =
        statusOf([&] { EXPECT_EQ(parser.GetTokenNumber(), eIs == eZuTokenInt ? 1.0 : 2.5); });
    // Required: this status at the end of the file too.
    EXPECT_EQ(eStatus, bNumber ? ParserStatusOK : ParserErrorNotSpecifiedToken) << eIs;
  }
}

// A fault met by MoveOn is thrown by whoever takes the token or reads on, once.
TEST(Parser, FaultWaitsForTheTokenToBeTaken) {
  const std::string strTooLong(10000, 'x');
  const struct {
    std::string strFault;
    eZuParserStatus eStatus;
  } faults[] = {{"12abc 7", ParserErrorInvalidNumber},
                {"\"open\n7", ParserErrorUnterminatedString},
                {"\n" + strTooLong, ParserErrorStream}};
  for (const auto& fault : faults) {
    for (int iWay = 0; iWay < 4; ++iWay) {
      SCOPED_TRACE(::testing::Message() << fault.eStatus << " way " << iWay);
      ZuParser parser;
      std::istringstream stream("1 " + fault.strFault);
      parser.ParseForToken(stream);
      parser.MoveOn(stream);
      EXPECT_TRUE(parser.IsUnused());
      try {
        if (iWay == 0) parser.GetToken(eZuTokenKeyword);
        if (iWay == 1) parser.ParseForToken(stream);
        if (iWay == 2) parser.MoveOn(stream);
        if (iWay == 3) {
          parser.SkipNextParse(true);
          parser.Fetch(stream);
        }
        ADD_FAILURE() << "no fault";
      } catch (const ZuParserStatus& status) {
        EXPECT_EQ(status.m_eStatus, fault.eStatus);
      }
      if (fault.eStatus == ParserErrorStream) continue;
      EXPECT_EQ(parser.ParseForToken(stream).m_iValue, 7);
    }
  }
}

TEST(Parser, SkipLineDropsTheRestOfTheLine) {
  for (const char* szText : {"A B C\nD", "A;x\nD", "A{ B\nD", "A\nD"}) {
    ZuParser parser;
    std::istringstream stream(szText);
    parser.ParseForToken(stream);
    parser.SkipLine();
    EXPECT_STREQ(parser.ParseForToken(stream).m_szText, "D") << szText;
    EXPECT_EQ(parser.GetDepth(), 0);
  }
}

}  // namespace
