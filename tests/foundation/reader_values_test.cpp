// How readers of values, alone and in chains, share the tokens of a file with the reader.
#include "tests/foundation/reader_cases.h"
#include "tests/support/keyword_file.h"
#include "tests/support/test.h"

namespace {

constexpr int kGoOn = Trace::kGoOn;

// The same values give the same notes with and without braces, whatever item follows.
TEST(ReaderValues, ChainsReadAlikeWithAndWithoutBlock) {
  const struct {
    const char *szKeyword, *szValues, *szNotes;
  } items[] = {{"PAIR", "1 2.5", "(1 2.5)"},
               {"NAMED", "1 2 3\n4 \"x\"", "(1 2)(3 4)x"},
               {"VALUES", "1 2 3.5 4", "[1 2 3.5 4]"},
               {"INT", "7", "7"},
               {"LOOK", "7", "L1"}};
  for (const auto& a : items) {
    for (const auto& b : items) {
      for (int nBlocks = 0; nBlocks < 8; ++nBlocks) {
        const auto item = [](const auto& i, bool bBlock) {
          return std::string(i.szKeyword) + (bBlock ? " { " : " ") + i.szValues +
                 (bBlock ? " } " : " ");
        };
        const std::string strItems = item(a, nBlocks & 1) + item(b, nBlocks & 2);
        const std::string strNotes = std::string(a.szNotes) + b.szNotes;
        const bool bOuter = (nBlocks & 4) != 0;
        const std::string strText = bOuter ? "BLOCK { " + strItems + "} INT 9" : strItems + "INT 9";
        ExpectNotes({{strText, bOuter ? "<" + strNotes + ">9" : strNotes + "9"}});
      }
    }
  }
}

TEST(ReaderValues, TokenBehindTheLastValueIsTheNextItem) {
  ExpectNotes({
      {"PAIR 1 2 UNKNOWN 5 INT 3", "(1 2)3"},
      {"PAIR 1 2 UNKNOWN { 5 } INT 3", "(1 2)3 | 0@1"},
      {"BLOCK { PAIR 1 2 } INT 3", "<(1 2)>3"},
      {"PAIR 1 2 { 3 4 } INT 5", "(1 2)(3 4)5", Trace::kUnnamed},
      {"PAIR 1 2 { 3 4 } INT 5", "(1 2)!5@15", kGoOn},
      {"PAIR 1 2 3 4", "(1 2)(3 4)", Trace::kUnnamed},
      {"PAIR 1 2", "(1 2)"},
      {"PAIR 1 2 12abc INT 3", "(1 2)!4@13 | 4@1", kGoOn},
      {"PAIR 1 2\n\"open\nINT 3", "(1 2)!3@23 | 3@2", kGoOn},
      {"PAIR 1 2 12abc INT 3", "(1 2) | 4@1"},
      {"PAIR { 1 2 12abc 7 } INT 3", "(1 2)3", kGoOn},
      {"GIVE INT 5 INT 6", "G56"},
      {"LOOK INT 5 INT 6", "L4!5@16", kGoOn},  // a token only looked at is used up
  });
}

// Braces and the end of the file are never values.
TEST(ReaderValues, BracesAndEndStayInHand) {
  ExpectNotes({
      {"VALUES { 3 1 } INT 5", "[3 1 0 0]5"},
      {"BLOCK { VALUES 3 1 } INT 5", "<[3 1 0 0]>5"},
      {"VALUES 3 1 2 { 9 } INT 5", "[3 1 2 0]!5@15", kGoOn},
      {"VALUES 3 1", "[3 1 0 0]"},
      {"VALUES { 3 A \"x\" - 9 } INT 5", "[3 0 0 0]5"},  // any other token counts as 0
      {"VALUES { 3 1 2x 4 } INT 5", "[3 1!4@15 | 4@1", kGoOn},
      {"VALUES { } INT 5", "!5@15", kGoOn},
      {"BLOCK { NAMED 1 2 3 4 } INT 5", "<(1 2)(3 4)!5@1>5", kGoOn},
  });
}

TEST(ReaderValues, RowsEndAtTheirClosingBrace) {
  ExpectNotes({
      {"ROWS { 1 2 3 4 } INT 5", "(1 2)(3 4).5"},
      {"ROWS { 1 2\n3 } INT 5", "(1 2).5"},  // the cut row is lost, without a trace
      {"ROWS { } INT 5", ".5"},
      {"BLOCK { ROWS { 1 2 } INT 5 ROWS { 3 4 } } INT 6", "<(1 2).5(3 4).>6"},
      {"BLOCK { INT 1 ROWS { 1 2 3", "<1(1 2).>"},
      {"ROWS { 1 2 X 4 } INT 5", "(1 2)"},  // any other misfit is a fault
      {"ROWS { 1 2 X 4 } INT 5", "(1 2)!5@15", kGoOn},
      {"ROWS { 1 2 3 4x 5 6 } INT 5", "(1 2)!4@15 | 4@1", kGoOn},
      {"ROWS { 1 2 { 3 4 } } INT 5", "(1 2)!5@15", kGoOn},
      {"ROWS { 1 2 3 4", "(1 2)(3 4)."},
  });
}

TEST(ReaderValues, ListOfRowsEndsAtARowThatMovesNothing) {
  KeywordFile file("E { 1 2 3 } I 5 E 6");
  int iRows = 0, i = 0;
  file.On("I", &i).On("E", [&](ZuReaderObject* pObject) {
    pObject->ReadRows([&] { ++iRows; });
    return 1;
  });
  EXPECT_ROW("0 2 5", file.Run(), iRows, i);
}

// A reader that takes more than one block by itself: the reader goes on behind what it took.
TEST(ReaderValues, BracesOfARecord) {
  for (const char* szText : {"{ X 1 } { \"x\" 20 } I 5", "R { { X 1 } { 3 20 } } I 5",
                             "R { { X 1 } { 3 20 } 7 { 8 } } I 5"}) {
    int iSum = 0, i = 0;
    const auto read = [&](ZuReaderObject* pObject) {
      do {
        pObject->TakeBlockOpen();
        pObject->Skip();
        iSum += pObject->TakeInt();
        pObject->TakeBlockClose();
      } while (pObject->IsBlockOpen());
      return 1;
    };
    KeywordFile file(szText);
    EXPECT_ROW("0 21 5", file.On("_NOT_DEFINED", read).On("R", read).On("I", &i).Run(), iSum, i)
        << szText;
  }
}

// Keywords die with the handler that registered them, with and without a block.
TEST(ReaderValues, KeywordsNeverOutliveTheirHandler) {
  for (bool bProcess : {true, false}) {
    for (const char* szText : {"B { LOCAL 1 } LOCAL 2 I 5", "X { } B 7 LOCAL 2 I 5"}) {
      BasicKeywordFile<OpenReader> file(szText);
      int iSum = 0, i = 0;
      file.On("I", &i).On("B", [&](ZuReaderObject* pObject) {
        int iLocal = 0;
        ZuReaderObject local("LOCAL", &iLocal);
        pObject->RegisterObject(local);
        if (bProcess) pObject->DoProcess();
        return iSum += iLocal, 1;
      });
      file.Run();
      EXPECT_TRUE(file.reader.IsAtRest(2)) << szText;
      EXPECT_ROW(bProcess && szText[0] == 'B' ? "5 1" : "5 0", i, iSum) << szText;
    }
  }
}

}  // namespace
