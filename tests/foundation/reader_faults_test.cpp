// What a fault costs: where nobody asks for the token, nothing.
#include "tests/foundation/reader_cases.h"
#include "tests/support/keyword_file.h"
#include "tests/support/test.h"

namespace {

constexpr int kGoOn = Trace::kGoOn;

// The entry of the block, with the line of its {, is the only one; no handler is called.
TEST(ReaderFaults, BlockThatNobodyKnowsCostsItselfAlone) {
  for (const char* szInside : {"3D", "1 { 12abc } \"open\n", "{ { 9x } 9x }x { 7 } \"open }\n"}) {
    for (const int nOptions : {int{Trace::kPlain}, kGoOn}) {
      ExpectNotes({{"INT 1\nUNKNOWN { " + std::string(szInside) + " } INT 2", "12 | 0@2", nOptions},
                   {"BLOCK { UNKNOWN {\n" + std::string(szInside) + " } INT 2 } INT 3",
                    "<2>3 | 0@1", nOptions}});
    }
  }
  ExpectNotes({
      // The status of the entry is 0 whatever was dropped before.
      {"PAIR { 1 2 12abc \"open\n } UNKNOWN { 1 }\nUNKNOWN { } INT 3", "(1 2)3 | 0@2 0@3"},
      {"UNKNOWN { 3D", " | 0@1"},
      {"UNKNOWN 3D INT 1", " | 4@1"},  // a token that is dropped is read
      {"UNKNOWN { 3D } INT 1", "?UNKNOWN@11 | 0@1", Trace::kTellUnknown},
  });
}

// Directly behind the last value as further behind it: the rest of the block is dropped.
TEST(ReaderFaults, FaultBehindTheValuesOfABlock) {
  for (const char* szRest : {"12abc", "\"open\n", "7 12abc", "12abc { \"x\" 3D }"}) {
    for (const int nOptions : {int{Trace::kUnnamed}, Trace::kUnnamed | kGoOn}) {
      const std::string strBlock = "{ 1 2 " + std::string(szRest) + " } ";
      ExpectNotes({{strBlock + "{ 3 4 } INT 5", "(1 2)(3 4)5", nOptions},
                   {"PAIR " + strBlock + "INT 5", "(1 2)5", nOptions},
                   {"BLOCK { PAIR " + strBlock + "INT 5 } INT 6", "<(1 2)5>6", nOptions}});
    }
  }
}

class Learner : public LinkHdl {
 public:
  long Learn(ZuReader* pReader) {
    ++m_iAsked;
    ZuReaderObject object("NEW", &m_iValue);
    pReader->RegisterObject(object);
    pReader->GetParser().SkipNextParse(true);
    return 1;
  }
  int m_iAsked = 0, m_iValue = 0;
};

TEST(ReaderFaults, WordThatItsHandlerRegistersIsRead) {
  const TempFile file("NEW 5 NEW 6");
  Learner learner;
  ZuReader reader(file.Path());
  reader.SkipUnknownToken(false);
  reader.SetUnknownTokenHdl(Link(&learner, &Learner::Learn));
  reader.DoProcess(false);
  EXPECT_EQ(learner.m_iAsked, 1);
  EXPECT_EQ(learner.m_iValue, 6);
  EXPECT_EQ(reader.GetReadErrorCount(), 0);
}

TEST(ReaderFaults, IdsAreUnsignedAndNumbersMayBeNotFinite) {
  std::string strIds, strNumbers;
  unsigned int uId = 0;
  int i = 0;
  double d = 0.0, e = 0.0, n = 0.0;
  KeywordFile(
      "IDS { 0 2147483647 2147483648 +3000000000 4294967295 4294967296 99999999999999999999 -2 }\n"
      "ID 4294967295 INT 4294967295 D -inf E inf N nan\n"
      "NUMBERS { inf -inf nan +inf 1e5 -inf} inf 1 nan { 3D } ID 4000000000\n")
      .On("IDS",
          [&](auto* p) { return p->ReadRows([&] { strIds += Text(p->TakeId()) + ' '; }), 1; })
      .On("NUMBERS",
          [&](auto* p) {
            strNumbers = Text(p->TakeNumber()) + ' ';
            strNumbers += Text(p->TakeValue()) + ' ';
            p->ReadRows([&] { strNumbers += Text(p->TakeNumber()) + ' '; });
            return 1;
          })
      .On("ID", &uId)
      .On("INT", &i)
      .On("D", &d)
      .On("E", &e)
      .On("N", &n)
      .Run();
  EXPECT_EQ(strIds,
            "0 2147483647 2147483648 3000000000 4294967295 4294967295 4294967295 4294967294 ");
  EXPECT_EQ(strNumbers, "inf -inf nan inf 1e+05 -inf ");
  // inf and nan are keywords too where one is expected
  EXPECT_ROW("4000000000 2147483647 -inf inf nan", uId, i, d, e, n);
}

}  // namespace
