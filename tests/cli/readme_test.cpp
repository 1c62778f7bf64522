// What the documents say of the program: their command lines run and give what stands below them,
// and docs/command_line.md tells of every command and option, and of no other.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/cli/program.h"

namespace {

struct Shown {
  std::string strLine;             // "zu ...", perhaps behind a pipe
  std::vector<std::string> lines;  // what follows it in its block
};

std::vector<std::string> LinesOf(const std::string& strText) {
  std::vector<std::string> lines;
  std::istringstream stream(strText);
  for (std::string strLine; std::getline(stream, strLine);) lines.push_back(strLine);
  return lines;
}

bool IsCommand(const std::string& strLine) {
  return strLine.rfind("zu ", 0) == 0 || strLine.find("| zu ") != std::string::npos;
}

// Command lines of indented and fenced blocks; "$ " may stand before them.
std::vector<Shown> ShownCommands(const std::string& strPath) {
  std::vector<Shown> shown;
  bool bFence = false, bInside = false;
  for (std::string strLine : LinesOf(ReadFile(strPath))) {
    if (strLine.rfind("```", 0) == 0) {
      bFence = !bFence;
      bInside = false;
      continue;
    }
    const bool bIndented = strLine.rfind("    ", 0) == 0;
    if (!bFence && !bIndented && !strLine.empty()) bInside = false;
    if (!bFence && bIndented) strLine.erase(0, 4);
    if ((bFence || bIndented) && strLine.rfind("$ ", 0) == 0) strLine.erase(0, 2);
    if ((bFence || bIndented) && IsCommand(strLine)) {
      shown.push_back({strLine, {}});
      bInside = true;
    } else if (bInside) {
      shown.back().lines.push_back(strLine);
    }
  }
  return shown;
}

// The folder of a fresh clone, with the program in the path.
class Clone {
 public:
  Clone() {
    std::filesystem::create_symlink(Source("samples"), m_folder.Path("samples"));
    std::filesystem::create_symlink(ZU_PROGRAM, m_folder.Path("zu"));
    std::filesystem::create_directory(m_folder.Path("out"));
  }
  int Run(const std::string& strLine, std::string* pOut) const {
    const std::string strScript = "cd '" + m_folder.Path("") + "' && PATH=.:$PATH && " + strLine;
    m_folder.Write("line.sh", strScript);
    const std::string strCall =
        "bash '" + m_folder.Path("line.sh") + "' >'" + m_folder.Path("text") + "' 2>&1";
    const int iStatus = std::system(strCall.c_str());
    *pOut = ReadFile(m_folder.Path("text"));
    return iStatus;
  }

 private:
  ScratchFolder m_folder;
};

TEST(Documents, CommandLinesRun) {
  const Clone clone;
  std::vector<std::string> paths = {Source("README.md")};
  for (const auto& entry : std::filesystem::recursive_directory_iterator(Source("docs"))) {
    if (entry.path().extension() == ".md") paths.push_back(entry.path().string());
  }
  int iRun = 0;
  for (const std::string& strPath : paths) {
    for (const Shown& shown : ShownCommands(strPath)) {
      SCOPED_TRACE(strPath + ": " + shown.strLine);
      std::string strOut;
      EXPECT_EQ(clone.Run(shown.strLine, &strOut), 0) << strOut;
      ++iRun;
      std::vector<std::string> expected = shown.lines;
      while (!expected.empty() && expected.back().empty()) expected.pop_back();
      if (expected.empty()) continue;
      EXPECT_EQ(LinesOf(strOut), expected);
    }
  }
  EXPECT_GE(iRun, 10);
}

// The long options, or the short one where there is no other, that a help text lists.
std::set<std::string> OptionsIn(const std::string& strHelp) {
  std::set<std::string> options;
  for (const std::string& strLine : LinesOf(strHelp)) {
    if (strLine.rfind("  -", 0) != 0) continue;
    const size_t uLong = strLine.find("--");
    options.insert(strLine.substr(uLong, strLine.find_first_of(" ,", uLong) - uLong));
  }
  return options;
}

// Everything in a text that looks like a long option.
std::set<std::string> OptionsNamed(const std::string& strText) {
  std::set<std::string> options;
  for (size_t u = 0; (u = strText.find("--", u)) != std::string::npos;) {
    const size_t uEnd = strText.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-", u);
    if (u > 0 && (strText[u - 1] == '`' || strText[u - 1] == ' ') && uEnd > u + 2) {
      options.insert(strText.substr(u, uEnd - u));
    }
    u = uEnd == std::string::npos ? uEnd : uEnd + 1;
  }
  return options;
}

// The name of the value of --control is CONTROL, and a text that tells of CONTROL tells of it.
std::string Upper(std::string strText) {
  for (char& c : strText) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  return strText;
}

TEST(Documents, TellOfEveryCommandAndOption) {
  const std::string strPage = ReadFile(Source("docs/command_line.md"));
  std::string strGeneral = strPage;  // what stands in no command's section
  for (size_t u = 0; (u = strGeneral.find("## `zu ")) != std::string::npos;) {
    strGeneral.erase(u, strGeneral.find("\n## ", u) - u);
  }
  for (const std::string& strName : CommandsIn(RunZu({"--help"}).strOut)) {
    SCOPED_TRACE("zu " + strName);
    const size_t uStart = strPage.find("## `zu " + strName + "`");
    if (uStart == std::string::npos) {
      ADD_FAILURE() << "no section";
      continue;
    }
    const std::string strSection = strPage.substr(uStart, strPage.find("\n## ", uStart) - uStart);
    std::set<std::string> known = OptionsNamed(strGeneral);
    known.insert({"--help", "--output"});  // told as -o
    const auto told = OptionsNamed(strSection);
    const auto take = [&](const std::string& strHelp) {
      for (const std::string& strOption : OptionsIn(strHelp)) {
        EXPECT_TRUE(told.count(strOption) + known.count(strOption) > 0 ||
                    strSection.find(Upper(strOption.substr(2))) != std::string::npos)
            << strOption;
        known.insert(strOption);
      }
    };
    const std::string strHelp = RunZu({strName, "--help"}).strOut;
    take(strHelp);
    for (const std::string& strInner : CommandsIn(strHelp)) {
      EXPECT_NE(strSection.find("zu " + strName + " " + strInner), std::string::npos) << strInner;
      take(RunZu({strName, strInner, "--help"}).strOut);
    }
    for (const std::string& strOption : told) EXPECT_TRUE(known.count(strOption) > 0) << strOption;
  }
}

}  // namespace
