// Damaged and hostile files: reading ends, everything is given back, what was complete stays.
#include "tests/foundation/reader_trace.h"
#include "tests/support/keyword_file.h"
#include "tests/support/test.h"

namespace {

// Notes without the ends of blocks and lists, which a cut brings forward.
std::string Values(std::string strNotes) {
  strNotes.erase(std::min(strNotes.find(" |"), strNotes.size()));
  std::erase_if(strNotes, [](char c) { return c == '>' || c == '.'; });
  return strNotes;
}

// With one byte replaced, what stands before the damaged token is read as before.
TEST(ReaderDamage, OneByteReplaced) {
  const std::string strFile = "BLOCK { PAIR 1 2 ROWS { 3 4 5 6 } NAMED { 1 2 3 4 \"x\" } } INT 7\n";
  const std::string strBytes(" {}\"\n;A9.-\0\xFF\r", 13);
  for (std::size_t i = 1; i < strFile.size(); ++i) {
    const std::size_t nBefore = strFile.rfind(' ', i - 1);
    std::string strBefore =
        nBefore == std::string::npos ? "" : Values(Trace().Run(strFile.substr(0, nBefore)));
    // A handler is not called for a block whose first token is a fault.
    if (strBefore == "<") strBefore.clear();
    for (char c : strBytes) {
      std::string strDamaged = strFile;
      strDamaged[i] = c;
      for (int nOptions : {int{Trace::kPlain}, int{Trace::kGoOn}}) {
        Trace trace;
        EXPECT_EQ(Values(trace.Run(strDamaged, nOptions)).substr(0, strBefore.size()), strBefore)
            << strDamaged;
        EXPECT_TRUE(trace.m_bAtRest) << strDamaged;
      }
    }
  }
}

std::string Repeat(const std::string& strPiece, int n) {
  std::string strText;
  for (int i = 0; i < n; ++i) strText += strPiece;
  return strText;
}

// At most 64 handlers are open, however deep a file nests; the next one is a fault.
TEST(ReaderDamage, DepthOfHandlersIsBounded) {
  Trace trace;
  EXPECT_EQ(trace.Run(Repeat("BLOCK { ", 63) + "INT 1" + Repeat(" }", 63) + " INT 2"),
            Repeat("<", 63) + '1' + Repeat(">", 63) + '2');
  EXPECT_EQ(trace.Run(Repeat("BLOCK { ", 64) + "INT 1" + Repeat(" }", 64) + " INT 2"),
            Repeat("<", 64) + Repeat(">", 64) + '2');
  EXPECT_EQ(trace.Run(Repeat("BLOCK {\n", 65), Trace::kGoOn).find("!5@65"), 64u);
  const struct {
    const char* szPiece;
    int nOptions;
    int iDeepest;
  } cases[] = {
      {"BLOCK {\n", Trace::kPlain, 64},       {"BLOCK {\n", Trace::kGoOn, 64},
      {"BLOCK\n", Trace::kPlain, 64},         {"BLOCK\n", Trace::kGoOn, 64},
      {"BLOCK { BLOCK\n", Trace::kPlain, 64}, {"BLOCK { BLOCK\n", Trace::kGoOn, 64},
      {"BLOCK 1\n", Trace::kPlain, 1},  // the 1 ends the items of its handler
      {"BLOCK 1\n", Trace::kGoOn, 64},
  };
  for (const auto& c : cases) {
    Trace deep;
    int iOpen = 0, iDeepest = 0;
    for (char cNote : deep.Run(Repeat(c.szPiece, 20000), c.nOptions)) {
      iOpen += cNote == '<' ? 1 : cNote == '>' ? -1 : 0;
      iDeepest = std::max(iDeepest, iOpen);
    }
    EXPECT_EQ(iDeepest, c.iDeepest) << c.szPiece;
    EXPECT_TRUE(deep.m_bAtRest) << c.szPiece;
  }
}

// Data keywords are no handlers.
TEST(ReaderDamage, DataIsReadInTheDeepestBlock) {
  struct Nest : LinkHdl {
    int Read(ZuReaderObject* pObject) {
      ZuReaderObject objects[] = {{"N", Link(this, &Nest::Read)}, {"V", &m_iValue}};
      for (ZuReaderObject& object : objects) pObject->RegisterObject(object);
      return pObject->DoProcess();
    }
    int m_iValue = 0;
  } nest;
  KeywordFile(Repeat("N { ", 64) + "V 7" + Repeat(" }", 64))
      .On("N", [&](auto* p) { return nest.Read(p); })
      .Run();
  EXPECT_EQ(nest.m_iValue, 7);
}

// Handlers that give back what they got, or read nothing, end too.
TEST(ReaderDamage, HandlersThatUseNothingEnd) {
  struct Lazy : LinkHdl {
    int Read(ZuReaderObject* pObject) {
      if (m_bGiveBack) pObject->GetStreamParser().SkipNextParse(true);
      return ++m_iCalls;
    }
    long Unknown(ZuReader* pReader) {
      pReader->GetParser().SkipNextParse(true);
      return ++m_iCalls;
    }
    bool m_bGiveBack;
    int m_iCalls = 0;
  };
  for (int iWay = 0; iWay < 4; ++iWay) {
    Lazy lazy{{}, iWay < 2};
    TempFile file("1 { 2 } X \"3\" {");
    ZuReader reader(file.Path());
    ZuReaderObject object(Link(&lazy, &Lazy::Read));
    reader.RegisterObject(object);
    reader.SetSimpleMode(iWay % 2 != 0);
    reader.SkipUnknownToken(false);
    reader.SetUnknownTokenHdl(Link(&lazy, &Lazy::Unknown));
    EXPECT_EQ(reader.DoProcess(false), 1);
    EXPECT_TRUE(lazy.m_iCalls >= 4 && lazy.m_iCalls <= 10) << iWay;
  }
}

}  // namespace
