// What a fault costs: where nobody asks for the token, nothing.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "tests/foundation/reader_cases.h"

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

// At the top of a file a fault among plain values ends the run, in a block of keywords that block.
TEST(ReaderFaults, FaultEndsTheItemsAmongWhichItStands) {
  ExpectNotes({
      {"BLOCK { PAIR 1 X INT 2 } INT 3", "<>3"},
      {"BLOCK { PAIR { 1 12abc } INT 2 } INT 3", "<>3 | 4@1"},
      {"PAIR { 1 12abc } INT 3", " | 4@1"},
      {"BLOCK { BLOCK { 12abc } INT 2 } INT 3", "<>3 | 4@1"},
  });
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

class Values : public LinkHdl {
 public:
  int Ids(ZuReaderObject* pObject) {
    pObject->ReadRows([&] { m_aIds.push_back(pObject->TakeId()); });
    return 1;
  }
  int Numbers(ZuReaderObject* pObject) {
    m_aNumbers = {pObject->TakeNumber(), pObject->TakeValue()};
    pObject->ReadRows([&] { m_aNumbers.push_back(pObject->TakeNumber()); });
    return 1;
  }
  std::vector<unsigned int> m_aIds;
  std::vector<double> m_aNumbers;
};

TEST(ReaderFaults, IdsAreUnsignedAndNumbersMayBeNotFinite) {
  const TempFile file(
      "IDS { 0 2147483647 2147483648 +3000000000 4294967295 4294967296 99999999999999999999 -2 }\n"
      "ID 4294967295 INT 4294967295 D -inf E inf N nan\n"
      "NUMBERS { inf -inf nan -nan +inf 1e5 -inf} inf 1 nan { 3D } ID 4000000000\n");
  Values values;
  unsigned int uId = 0;
  int i = 0;
  double d = 0.0, e = 0.0, n = 0.0;
  ZuReader reader(file.Path());
  ZuReaderObject objects[] = {{"IDS", Link(&values, &Values::Ids)},
                              {"NUMBERS", Link(&values, &Values::Numbers)},
                              {"ID", &uId},
                              {"INT", &i},
                              {"D", &d},
                              {"E", &e},
                              {"N", &n}};
  for (ZuReaderObject& object : objects) reader.RegisterObject(object);
  reader.DoProcess(false);
  EXPECT_EQ(values.m_aIds,
            (std::vector<unsigned int>{0u, 2147483647u, 2147483648u, 3000000000u, 4294967295u,
                                       4294967295u, 4294967295u, 4294967294u}));
  EXPECT_EQ(uId, 4000000000u);  // inf and nan are keywords too where one is expected
  EXPECT_EQ(i, std::numeric_limits<int>::max());
  constexpr double kInf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(d, -kInf);
  EXPECT_EQ(e, kInf);
  EXPECT_TRUE(std::isnan(n));
  ASSERT_EQ(values.m_aNumbers.size(), 7u);
  for (const std::size_t k : {0u, 4u}) EXPECT_EQ(values.m_aNumbers[k], kInf);
  for (const std::size_t k : {1u, 6u}) EXPECT_EQ(values.m_aNumbers[k], -kInf);
  for (const std::size_t k : {2u, 3u}) EXPECT_TRUE(std::isnan(values.m_aNumbers[k]));
}

}  // namespace
