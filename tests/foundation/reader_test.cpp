#include "zu/foundation/reader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/foundation/reader_cases.h"
#include "zu/foundation/logger.h"

namespace {

constexpr int kGoOn = Trace::kGoOn;

static_assert(!std::has_virtual_destructor_v<ZuReader>);  // required

// --- Keywords bound to data ----------------------------------------------------------------------

TEST(Reader, StoresValuesOfOneToken) {
  TempFile file(
      "I -5 U 7 D 2 S \"a b\" B 3 ; values\n"
      "D 2.5 I { 6 } B 0 !\n");
  ZuReader reader(file.Path());
  int i = 0;
  unsigned int u = 0;
  double d = 0.0;
  String str;
  bool b = true;
  ZuReaderObject objects[] = {{"I", &i}, {"U", &u}, {"D", &d}, {"S", &str}, {"B", &b}};
  for (ZuReaderObject& object : objects) {
    const ZuReaderObject* pCopy = reader.RegisterObject(object);
    EXPECT_NE(pCopy, &object);
    EXPECT_EQ(pCopy->GetReader(), &reader);
  }
  EXPECT_EQ(reader.DoProcess(false), 1);
  EXPECT_EQ(i, 6);
  EXPECT_EQ(u, 7u);
  EXPECT_EQ(d, 2.5);
  EXPECT_STREQ(str, "a b");
  EXPECT_FALSE(b);
  EXPECT_EQ(reader.GetReadErrorCount(), 0);
  EXPECT_EQ(reader.GetParser().GetStatus().m_eStatus, ParserStatusEOF);
  EXPECT_EQ(reader.DoProcess(false), 1);  // nothing left to do
}

// A value of the wrong kind ends the run; what was read before stays, the target of the value too.
TEST(Reader, WrongKindOfValueEndsTheRun) {
  for (const char* szWrong :
       {"I 2.5", "I A", "I \"5\"", "D \"5\"", "S 5", "S A", "B \"1\"", "I }"}) {
    SCOPED_TRACE(szWrong);
    TempFile file(std::string("A 1 ") + szWrong + " A 2");
    ZuReader reader(file.Path());
    int iA = 0, i = -1;
    double d = -1.0;
    String str("-");
    bool b = false;
    ZuReaderObject objects[] = {{"A", &iA}, {"I", &i}, {"D", &d}, {"S", &str}, {"B", &b}};
    for (ZuReaderObject& object : objects) reader.RegisterObject(object);
    reader.DoProcess(false);
    EXPECT_EQ(iA, 1);
    EXPECT_EQ(i, -1);
    EXPECT_EQ(d, -1.0);
    EXPECT_STREQ(str, "-");
    EXPECT_FALSE(b);
    EXPECT_EQ(reader.GetReadErrorCount(), 0);  // required: the last entry of this status goes
  }
}

TEST(Reader, LongKeywordsAreComparedByTheirFirst29Characters) {
  const std::string str29(29, 'K');
  const struct {
    std::string strRegistered, strInFile;
    bool bFound;
  } cases[] = {
      {str29, str29, true},
      {str29, str29 + "X", false},
      {str29 + "A", str29 + "A", true},
      {str29 + "A", str29 + "BCD", true},
      {str29 + "A", str29, true},
      {str29 + "A", str29.substr(1), false},
      {"Key", "KEY", false},
  };
  for (const auto& c : cases) {
    TempFile file(c.strInFile + " 5");
    ZuReader reader(file.Path());
    int i = 0;
    ZuReaderObject object(c.strRegistered.c_str(), &i);
    reader.RegisterObject(object);
    reader.DoProcess(false);
    EXPECT_EQ(i, c.bFound ? 5 : 0) << c.strRegistered << " / " << c.strInFile;
    EXPECT_EQ(object.IsKeyword(c.strInFile.c_str()), c.bFound);
  }
}

// --- Unknown keywords ----------------------------------------------------------------------------

TEST(Reader, UnknownKeywordCostsOneTokenOrItsBlock) {
  ExpectNotes({
      {"UNKNOWN 5 INT 1", "1"},
      {"UNKNOWN INT 1 INT 2", ""},  // the keyword goes with it, the stray 1 ends the run
      {"UNKNOWN INT 1 INT 2", "!5@12", kGoOn},
      {"UNKNOWN { A 1 { B } { { } } } INT 1", "1 | 0@1"},
      {"UNKNOWN\n{\n{ 1 } }\nINT 1 X { } INT 2", "12 | 0@2 0@4"},
      {"UNKNOWN", ""},
      {"UNKNOWN {", " | 0@1"},
      {"UNKNOWN { { } \"x\"", " | 0@1"},
      {"BLOCK { UNKNOWN } INT 1", "<>1"},  // but never a }
      {"BLOCK { UNKNOWN } INT 1", "<?UNKNOWN@1>1", Trace::kTellUnknown},
      {"A 1\nBLOCK {\nB { C } INT 1 }", "?A@1<?B@31> | 0@3", Trace::kTellUnknown},
  });
}

// --- Blocks --------------------------------------------------------------------------------------

TEST(Reader, BlocksNestAndEndAtTheirOwnBrace) {
  ExpectNotes({
      {"BLOCK { INT 1 BLOCK { INT 2 } INT 3 } INT 4", "<1<2>3>4"},
      {"BLOCK { } BLOCK{}INT 1", "<><>1"},
      {"PAIR { 1 2.5 } PAIR { 3 4 }", "(1 2.5)(3 4)"},
      {"BLOCK { PAIR { 1 2 9 \"new\" { 9 { } } 9 } INT 3 } INT 4", "<(1 2)3>4"},
      {"BLOCK { PAIR { 1 2 9x 9 } INT 3 } INT 4", "<(1 2)3>4"},
      {"PAIR { 1 2 9 9x \"open } \n } INT 3", "(1 2)3"},  // nobody asks for the rest
      {"LOOK { 1 2 { 3 } } INT 4", "L14"},
      {"OPEN 1 { 2 { 3 } } INT 4", "O4"},
      {"GIVE { INT 1 } INT 4", "G4"},  // the flag ends with the block
      {"INT 1 } INT 2", "1"},
      {"INT 1 } INT 2 BLOCK { INT 3 } } INT 4", "12<3>4", Trace::kOverBlockEnd},
      {"BLOCK { INT 1", "<1>"},  // a missing } is no error
      {"BLOCK {", "<>"},
      {"BLOCK", "<>"},
      {"PAIR {", ""},
  });
}

TEST(Reader, ItemsWithoutKeyword) {
  ExpectNotes({
      {"1 2 3 4", "(1 2)(3 4)", Trace::kUnnamed},
      {"{ 1 2 } { 3 4 }\n{ 5 6 7 { 8 } 9 } INT 1 { 7 8 }", "(1 2)(3 4)(5 6)1(7 8)",
       Trace::kUnnamed},
      {"1 2 INT 5 3 4 { 5 6 } 7 8", "(1 2)5(3 4)(5 6)(7 8)", Trace::kUnnamed},
      {"BLOCK { } 1 2", "<>(1 2)", Trace::kUnnamed},  // the token behind a block is an item
      {"{ 1 } { 3 4 }", "!5@1(3 4)", Trace::kUnnamed | kGoOn},
      {"{ 1 2 } INT 3", ""},
      {"{ 1 { 2 } INT 7 } INT 3", "!5@13", kGoOn},  // a { nobody handles: its block is skipped
      {"BLOCK { { INT 7 } INT 3 } INT 4", "<>4"},
      {"BLOCK { { INT 7 } INT 3 } INT 4", "<!5@13>4", kGoOn},
      {"BLOCK { 1 2 } 1 2", "<>(1 2)", Trace::kUnnamed},  // registered in the outer block alone
      {"5 INT 3", ""},
      {"- INT 3", "!5@13", kGoOn},
  });
}

TEST(Reader, SimpleModeGivesEveryTokenToTheFirstObject) {
  ExpectNotes({
      {"1 2 3 4\n5 6", "(1 2)(3 4)(5 6)", Trace::kSimple},
      {"", "", Trace::kSimple},
      {"1 2 3", "(1 2)", Trace::kSimple},
      {"1 2 X 3 4", "(1 2)", Trace::kSimple},
      {"1 2 X 3 4", "(1 2)!5@1(3 4)", Trace::kSimple | kGoOn},
      {"1 2\n" + std::string(10000, ' '), "(1 2) | 2@2", Trace::kSimple},
      {"1 2\n" + std::string(10000, ' '), "(1 2)!2@2 | 2@2", Trace::kSimple | kGoOn},
  });
  TempFile file("1 2 3");
  ZuReader reader(file.Path());
  reader.SetSimpleMode(true);
  EXPECT_EQ(reader.DoProcess(false), 1);  // no object: ends at once
}

// --- Faults --------------------------------------------------------------------------------------

TEST(Reader, FaultEndsItsItemsAndKeepsWhatWasRead) {
  ExpectNotes({
      {"INT 1\nINT 2x INT 3", "1 | 4@2"},
      {"INT 1 S \"open\nINT 3", "1 | 3@1"},
      {"BLOCK { INT 1 INT 2x INT 3 } INT 4", "<1>4 | 4@1"},
      {"BLOCK { INT 1 INT \"2\" INT 3 } INT 4", "<1>4"},
      {"PAIR 1 X INT 3", ""},
      {"BLOCK { 2x INT 3 } INT 4", " | 4@1"},
      {"BLOCK { PAIR { 1 X 3 } INT 3 } INT 4", "<>4"},
  });
}

TEST(Reader, ErrorHandlerLetsTheRunGoOn) {
  ExpectNotes({
      {"INT 1\nINT 2x INT 3\nINT 4x INT 5", "1!4@23!4@35 | 4@2 4@3", kGoOn},
      {"INT \"x\" INT 3", "!5@13", kGoOn},
      {"BLOCK { INT 1 INT 2x INT 3 } INT 4", "<1!4@13>4 | 4@1", kGoOn},
      {"BLOCK { INT } INT 4", "<!5@1>4", kGoOn},  // the } ends the block although no value
      {"BLOCK { PAIR 1 } INT 4", "<!5@1>4", kGoOn},
      {"BLOCK { PAIR { 1 X 3 { } } INT 3 } INT 4", "<!5@13>4", kGoOn},
      {"PAIR 1 { 2 } INT 4", "!5@14", kGoOn},
      {"BLOCK { 2x INT 3 } INT 4", "!4@14 | 4@1", kGoOn},
      {"INT 1 INT", "1", kGoOn},
      {"S \"open", "!3@1 | 3@1", kGoOn},
  });
  Trace trace;
  trace.Run("INT 2x INT 1 }", kGoOn);
  EXPECT_EQ(trace.m_eStatus, ParserStatusOK);
}

// The end of the file and a failed stream end all levels at once, whatever the handlers answer.
TEST(Reader, EndOfFileAndFailedStreamEndEveryLevel) {
  const std::string strLong = "\n" + std::string(9000, 'x');
  ExpectNotes({
      {"BLOCK { BLOCK { INT 1", "<<1>>", kGoOn},
      {"BLOCK { BLOCK { INT", "<<>>", kGoOn},
      {"BLOCK { ROWS { 1 2 3", "<(1 2).>", kGoOn},
      {"BLOCK { UNKNOWN { {", "<> | 0@1", kGoOn},
      {"BLOCK { PAIR { 1 2 {", "<(1 2)>", kGoOn},
      {"BLOCK { BLOCK { INT 1" + strLong, "<<1!2@2>> | 2@2", kGoOn},
      {"BLOCK { BLOCK { INT 1" + strLong, "<<1>> | 2@2"},
      {"BLOCK { ROWS { 1 2" + strLong, "<(1 2).!2@2> | 2@2", kGoOn},
      {"BLOCK { ROWS { 1 " + strLong, "<!2@2> | 2@2", kGoOn},
      {"BLOCK { PAIR 1 2" + strLong + "\nINT 1 } INT 2", "<(1 2)!2@2> | 2@2", kGoOn},
      {"BLOCK { PAIR { 1 2 9" + strLong + "\n } } INT 2", "<(1 2)!2@2> | 2@2", kGoOn},
      {"BLOCK { UNKNOWN {" + strLong, "<!2@2> | 0@1 2@2", kGoOn},
      {strLong, "!2@2 | 2@2", kGoOn},
  });
  for (const char* szText : {"D", "D ", "BLOCK { D", "I"}) {
    TempFile file(szText);
    ZuReader reader(file.Path());
    double d = 1.0;
    int i = 1;
    ZuReaderObject objects[] = {{"D", &d}, {"I", &i}};
    for (ZuReaderObject& object : objects) reader.RegisterObject(object);
    reader.DoProcess(false);
    EXPECT_EQ(reader.GetParser().GetStatus().m_eStatus, ParserStatusEOF) << szText;
  }
}

TEST(Reader, PathThatCannotBeReadIsAFailedStream) {
  const std::string strFolder = std::filesystem::temp_directory_path().string();
  for (const std::string& strPath : {strFolder + "/zu_test_missing", strFolder, std::string()}) {
    ZuReader reader(strPath.c_str());
    int i = 0;
    ZuReaderObject object("I", &i);
    reader.RegisterObject(object);
    EXPECT_EQ(reader.DoProcess(false), 1);
    EXPECT_EQ(reader.GetParser().GetStatus().m_eStatus, ParserErrorStream) << strPath;
    ASSERT_EQ(reader.GetReadErrorCount(), 1) << strPath;
    EXPECT_EQ(reader.GetReaderErrorList().First()->m_eStatus, ParserErrorStream);
    EXPECT_EQ(reader.DoProcess(false), 1);
    EXPECT_EQ(reader.GetReadErrorCount(), 1);
  }
  ZuReader none(static_cast<const char*>(nullptr));
  EXPECT_EQ(none.DoProcess(false), 1);
}

TEST(Reader, WidePathIsUtf8) {
  const std::filesystem::path folder = std::filesystem::temp_directory_path();
  const std::string strPath = (folder / "zu_test_\xC3\xA4\xE2\x82\xAC.prj").string();
  { std::ofstream(strPath) << "I 5"; }
  ZuReader reader((folder.wstring() + L"/zu_test_\u00E4\u20AC.prj").c_str());
  int i = 0;
  ZuReaderObject object("I", &i);
  reader.RegisterObject(object);
  reader.DoProcess(false);
  EXPECT_EQ(i, 5);
  EXPECT_STREQ(reader.GetFileName(), strPath.c_str());
  std::filesystem::remove(strPath);
}

// An exception that is none of the parser's passes through; blocks and keywords are given back.
class Thrower : public LinkHdl {
 public:
  int Block(ZuReaderObject* pObject) {
    ZuReaderObject boom("BOOM", Link(this, &Thrower::Boom));
    pObject->RegisterObject(boom);
    return pObject->DoProcess();
  }
  int Boom(ZuReaderObject* pObject) {
    pObject->GetStreamParser().SkipNextParse(true);
    throw std::runtime_error("boom");
  }
};

TEST(Reader, ForeignExceptionGivesEverythingBack) {
  for (const char* szText : {"BLOCK { BOOM 1 BOOM 2 } I 5", "BLOCK BOOM { 1 } I 5"}) {
    TempFile file(szText);
    OpenReader reader(file.Path());
    Thrower thrower;
    int i = 0;
    ZuReaderObject objects[] = {{"BLOCK", Link(&thrower, &Thrower::Block)}, {"I", &i}};
    for (ZuReaderObject& object : objects) reader.RegisterObject(object);
    EXPECT_THROW(reader.DoProcess(false), std::runtime_error);
    EXPECT_TRUE(reader.IsAtRest(2));
    EXPECT_FALSE(reader.GetParser().IsSkipNextParse());
  }
}

// --- The error list ------------------------------------------------------------------------------

TEST(Reader, ShapeErrorIsEnteredWithoutAnyCall) {
  class Shape : public LinkHdl {
   public:
    int Read(ZuReaderObject* pObject) {
      const unsigned int uLine = pObject->GetLine();
      pObject->SkipNumbers();
      pObject->AddShapeError(uLine);
      pObject->AddShapeError();
      return 1;
    }
    long Fault(ZuReader*) { return ++m_iFaults; }
    int m_iFaults = 0;
  } shape;
  TempFile file("M {\n1 2 3\n4.5 -6 } I 5");
  ZuReader reader(file.Path());
  int i = 0;
  ZuReaderObject objects[] = {{"M", Link(&shape, &Shape::Read)}, {"I", &i}};
  for (ZuReaderObject& object : objects) reader.RegisterObject(object);
  reader.SetParserErrorHdl(Link(&shape, &Shape::Fault));
  reader.DoProcess(false);
  EXPECT_EQ(i, 5);
  EXPECT_EQ(shape.m_iFaults, 0);
  ASSERT_EQ(reader.GetReadErrorCount(), 2);
  EXPECT_EQ(reader.GetReaderErrorList().First()->m_eStatus, ParserErrorInvalidNumber);
  EXPECT_EQ(reader.GetReaderErrorList().First()->m_uLine, 2u);
  EXPECT_EQ(reader.GetReaderErrorList().Last()->m_uLine, 3u);
}

TEST(Reader, ErrorsGoToTheApplicationLogger) {
  class Lines : public ZuLogger {
   public:
    int Log(int iLevel, const wchar_t* szText) override {
      m_strLines += std::to_wstring(iLevel) + szText + L"\n";
      return 0;
    }
    std::wstring m_strLines;
  } lines;
  ZuMasterLogger master;
  master.SetFormat(L"$mesg");
  master.AddLogger(&lines);
  ZuApplicationLogger::RegisterMasterLogger(&master);
  TempFile file("X { }\nI 12x");
  ZuReader reader(file.Path());
  reader.LogErrorsToApplicationLogger();
  EXPECT_TRUE(lines.m_strLines.empty());
  reader.DoProcess(false);
  reader.LogErrorsToApplicationLogger();
  ZuApplicationLogger::RegisterMasterLogger(nullptr);
  const std::string strPath(file.Path());
  EXPECT_EQ(lines.m_strLines, L"2 2 Read Error(s) in " +
                                  std::wstring(strPath.begin(), strPath.end()) +
                                  L":\n2 - Line: 000001, Status: ParserStatusOK\n"
                                  L"2 - Line: 000002, Status: ParserErrorInvalidNumber\n");
}

}  // namespace
