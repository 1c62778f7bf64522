// What people type first gives what they want: first_tries.txt, row by row.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "tests/cli/program.h"

namespace {

// A file of the script, in the form that its words name.
struct ScriptFile {
  std::string strName, strForm, strText;

  void WriteTo(const ScratchFolder& folder) const {
    std::string strBytes = Has("utf16") ? "\xff\xfe" : Has("bom") ? "\xef\xbb\xbf" : "";
    for (size_t u = 0; u < strText.size(); ++u) {
      unsigned uCode = static_cast<unsigned char>(strText[u]);
      if (uCode >= 0xc2 && (Has("latin1") || Has("utf16"))) {  // two bytes of UTF-8
        uCode = (uCode & 0x1f) << 6 | (static_cast<unsigned char>(strText[++u]) & 0x3f);
      }
      if (uCode == '\n' && Has("crlf")) strBytes += Has("utf16") ? std::string("\r\0", 2) : "\r";
      strBytes += static_cast<char>(uCode);
      if (Has("utf16")) strBytes += '\0';
    }
    folder.Write(strName, strBytes);
  }
  bool Has(const char* szWord) const { return strForm.find(szWord) != std::string::npos; }
};

struct Step {
  std::string strLine, strText;
  int iExit;
};

struct Row {
  std::string strTitle;
  std::vector<Step> steps;
};

bool StartsWith(const std::string& strText, const char* szStart) {
  return strText.rfind(szStart, 0) == 0;
}

void ReadScript(std::vector<ScriptFile>* pFiles, std::vector<Row>* pRows) {
  std::ifstream script(Source("tests/cli/first_tries.txt"));
  std::string strCommand;
  for (std::string strLine; std::getline(script, strLine);) {
    if (StartsWith(strLine, "file ")) {
      const size_t uEnd = std::min(strLine.find(' ', 5), strLine.size());
      pFiles->push_back({strLine.substr(5, uEnd - 5), strLine.substr(uEnd), ""});
    } else if (StartsWith(strLine, "    $ ")) {
      strCommand = strLine.substr(6);
    } else if (StartsWith(strLine, "    = ")) {
      const size_t uText = std::min(strLine.find(' ', 6), strLine.size() - 1) + 1;
      pRows->back().steps.push_back(
          {strCommand, strLine.substr(uText), std::stoi(strLine.substr(6))});
    } else if (StartsWith(strLine, "    ")) {
      pFiles->back().strText += strLine.substr(4) + "\n";
    } else if (!strLine.empty() && strLine[0] >= '0' && strLine[0] <= '9') {
      pRows->push_back({strLine, {}});
    }
  }
}

TEST(FirstTries, GiveWhatIsWanted) {
  std::vector<ScriptFile> files;
  std::vector<Row> rows;
  ReadScript(&files, &rows);
  const ScratchFolder folder;
  for (const ScriptFile& file : files) file.WriteTo(folder);
  int iAtOnce = 0;
  for (const Row& row : rows) {
    iAtOnce += row.steps.size() == 1 ? 1 : 0;
    ASSERT_FALSE(row.steps.empty()) << row.strTitle;
    for (const Step& step : row.steps) {
      const bool bLast = &step == &row.steps.back();
      const Outcome outcome = RunLine(step.strLine, folder);
      EXPECT_EQ(step.iExit <= 1, bLast) << row.strTitle;
      EXPECT_TRUE(outcome.iExit == step.iExit &&
                  (outcome.strOut + outcome.strErr).find(step.strText) != std::string::npos)
          << row.strTitle << "\n  " << step.strLine << "\n  " << outcome.iExit << "\n"
          << outcome.strErr << outcome.strOut;
    }
  }
  EXPECT_GE(rows.size(), 60U);
  EXPECT_GE(iAtOnce, 55);
}

// Two lists joined although two of their points are wrong: they are named and left out.
TEST(Stories, JoinsListsWithTwoWrongPoints) {
  const ScratchFolder folder;
  folder.Write("first.csv",
               "Name;East;North;Height\nA;0,00;0,00;1,00\nB;20,00;0,00;1,50\nC;20,00;15,00;0,80\n"
               "D;0,00;15,00;1,20\nE;10,00;7,00;4,00\nF;5,00;12,00;2,00\nG;17,00;3,00;3,10\n");
  folder.Write("second.txt",
               "A\t100.00\t200.00\t51.00\nB\t100.01\t220.00\t51.50\nC\t85.00\t220.01\t50.80\n"
               "D\t85.40\t200.00\t51.20\nE\t93.00\t210.00\t54.00\nF\t88.00\t205.00\t52.35\n"
               "G\t97.00\t217.00\t53.10\nH\t90.00\t202.00\t60.00\n");
  ExpectLines(
      {{"zu transform second.txt --control first.csv", 0, "RMS",
        "points D and F do not fit the others: RMS 0.0"},
       {"zu merge first.csv second.txt --tolerance 0.05 -o joined.csv --json | tr -d '\\n '", 0,
        "\"rejected\":[\"D\",\"F\"]", ""},
       {"grep H joined.csv", 0, "H;1,999", ""}},
      folder);
}

// A facade photographed and oriented elsewhere: measured and drawn to scale.
TEST(Stories, PlansAFacadeFromOtherCameras) {
  const ScratchFolder folder;
  ExpectLines(
      {{"zu import colmap $S/colmap -o facade.prj", 0, "13 photos", ""},
       {"zu measure facade.prj --plane $S/chessboard/board.coo --check "
        "$S/chessboard/board.coo --json | tr -d '\\n '",
        0, "\"checked\":54", ""},
       {"zu rectify --image facade.prj --photo 1 --plane $S/chessboard/board.coo --pictures "
        "$S/chessboard --pixel 1 -o plan.png --sheet 1:2 --unit mm",
        0, "plan.png", ""}},
      folder);
}

}  // namespace
