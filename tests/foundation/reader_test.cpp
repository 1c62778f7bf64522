#include "zu/foundation/reader.h"

#include <filesystem>
#include <fstream>

#include "tests/foundation/reader_cases.h"
#include "tests/support/keyword_file.h"
#include "tests/support/test.h"
#include "zu/foundation/logger.h"

namespace {

constexpr int kGoOn = Trace::kGoOn;

static_assert(!std::has_virtual_destructor_v<ZuReader>);  // required

// Keywords bound to data of every kind.
struct Values : KeywordFile {
  explicit Values(const std::string& strText) : KeywordFile(strText) {
    On("A", &iA).On("I", &i).On("U", &u).On("D", &d).On("S", &str).On("B", &b).Run();
  }
  std::string Told() const { return Row{iA, i, u, d, str, b}.str; }
  int iA = 0, i = -1;
  unsigned int u = 0;
  double d = -1.0;
  String str{"-"};
  bool b = false;
};

TEST(Reader, StoresValuesOfOneToken) {
  Values values("I -5 U 7 D 2 S \"a b\" B 3 ; values\nD 2.5 I { 6 } B 0 A 3 B 4 !\n");
  EXPECT_ROW("3 6 7 2.5 a b 1 0 -1 0 -1 - 0", values.Told(), Values("B 3 B 0").Told());
  EXPECT_ROW("0 1", values.reader.GetReadErrorCount(),
             values.reader.GetParser().GetStatus().m_eStatus);
  EXPECT_EQ(values.reader.DoProcess(false), 1);  // nothing left to do
  int i = 0;
  ZuReaderObject object("N", &i);
  const ZuReaderObject* pCopy = values.reader.RegisterObject(object);
  EXPECT_TRUE(pCopy != &object && pCopy->GetReader() == &values.reader);
}

// A value of the wrong kind ends the run; what was read before stays, the target of the value too.
TEST(Reader, WrongKindOfValueEndsTheRun) {
  for (const char* szWrong :
       {"I 2.5", "I A", "I \"5\"", "D \"5\"", "S 5", "S A", "B \"1\"", "I }"}) {
    const Values values(std::string("A 1 ") + szWrong + " A 2");
    EXPECT_EQ(values.Told(), "1 -1 0 -1 - 0") << szWrong;
    EXPECT_EQ(values.reader.GetReadErrorCount(),
              0);  // required: the last entry of this status goes
  }
}

TEST(Reader, LongKeywordsAreComparedByTheirFirst29Characters) {
  const std::string str29(29, 'K');
  for (const auto& [strRegistered, strInFile, bFound] : Cases<std::string, std::string, bool>{
           {str29, str29, true},
           {str29, str29 + "X", false},
           {str29 + "A", str29 + "A", true},
           {str29 + "A", str29 + "BCD", true},
           {str29 + "A", str29, true},
           {str29 + "A", str29.substr(1), false},
           {"Key", "KEY", false},
       }) {
    int i = 0;
    KeywordFile(strInFile + " 5").On(strRegistered.c_str(), &i).Run();
    EXPECT_EQ(i, bFound ? 5 : 0) << strRegistered << " / " << strInFile;
    EXPECT_EQ(ZuReaderObject(strRegistered.c_str(), &i).IsKeyword(strInFile.c_str()), bFound);
  }
}

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
  KeywordFile file("1 2 3");
  file.reader.SetSimpleMode(true);
  EXPECT_EQ(file.reader.DoProcess(false), 1);  // no object: ends at once
}

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
    EXPECT_EQ(Values(szText).reader.GetParser().GetStatus().m_eStatus, ParserStatusEOF) << szText;
  }
}

TEST(Reader, PathThatCannotBeReadIsAFailedStream) {
  const std::string strFolder = std::filesystem::temp_directory_path().string();
  for (const std::string& strPath : {strFolder + "/zu_test_missing", strFolder, std::string()}) {
    ZuReader reader(strPath.c_str());
    int i = 0;
    ZuReaderObject object("I", &i);
    reader.RegisterObject(object);
    for (int iRun = 0; iRun < 2; ++iRun) {
      EXPECT_ROW("1 1 2", reader.DoProcess(false), reader.GetReadErrorCount(),
                 reader.GetReaderErrorList().First()->m_eStatus)
          << strPath;
    }
  }
  EXPECT_EQ(ZuReader(static_cast<const char*>(nullptr)).DoProcess(false), 1);
}

TEST(Reader, WidePathIsUtf8) {
  const TempFile file("I 5", "\xC3\xA4\xE2\x82\xAC.prj");
  const std::string strPath = file.Path();
  ZuReader reader((std::wstring(strPath.begin(), strPath.end() - 9) + L"\u00E4\u20AC.prj").c_str());
  int i = 0;
  ZuReaderObject object("I", &i);
  reader.RegisterObject(object);
  reader.DoProcess(false);
  EXPECT_EQ(i, 5);
  EXPECT_STREQ(reader.GetFileName(), strPath.c_str());
}

// An exception that is none of the parser's passes through; blocks and keywords are given back.
TEST(Reader, ForeignExceptionGivesEverythingBack) {
  struct Thrower : LinkHdl {
    int Boom(ZuReaderObject* pObject) {
      pObject->GetStreamParser().SkipNextParse(true);
      throw std::runtime_error("boom");
    }
  } thrower;
  for (const char* szText : {"BLOCK { BOOM 1 BOOM 2 } I 5", "BLOCK BOOM { 1 } I 5"}) {
    BasicKeywordFile<OpenReader> file(szText);
    int i = 0;
    file.On("I", &i).On("BLOCK", [&](ZuReaderObject* pObject) {
      ZuReaderObject boom("BOOM", Link(&thrower, &Thrower::Boom));
      pObject->RegisterObject(boom);
      return pObject->DoProcess();
    });
    EXPECT_THROW(file.Run(), std::runtime_error);
    EXPECT_TRUE(file.reader.IsAtRest(2) && !file.reader.GetParser().IsSkipNextParse());
  }
}

TEST(Reader, ShapeErrorIsEnteredWithoutAnyCall) {
  struct Shape : LinkHdl {
    long Fault(ZuReader*) { return ++m_iFaults; }
    int m_iFaults = 0;
  } shape;
  KeywordFile file("M {\n1 2 3\n4.5 -6 } I 5");
  int i = 0;
  file.reader.SetParserErrorHdl(Link(&shape, &Shape::Fault));
  file.On("I", &i).On("M", [](ZuReaderObject* pObject) {
    const unsigned int uLine = pObject->GetLine();
    pObject->SkipNumbers();
    pObject->AddShapeError(uLine);
    pObject->AddShapeError();
    return 1;
  });
  EXPECT_EQ(file.Run(), 2);
  const auto& errors = file.reader.GetReaderErrorList();
  EXPECT_ROW("5 0 4 2 3", i, shape.m_iFaults, errors.First()->m_eStatus, errors.First()->m_uLine,
             errors.Last()->m_uLine);
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
