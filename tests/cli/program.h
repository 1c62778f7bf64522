// Runs the program as a shell would, and looks at what it leaves.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

struct Outcome {
  int iExit = -1;  // exit code; 128 + signal if a signal ended it
  std::string strOut;
  std::string strErr;

  // The result of --json. The test fails where it is no JSON.
  nlohmann::json Json() const;
};

struct RunOptions {
  std::string strInput;       // standard input
  std::string strStdout;      // file for standard output instead of Outcome::strOut
  long long iFileLimit = -1;  // largest file the program may write [bytes]
  bool bClosedPipe = false;   // nobody reads standard output
  // Nobody reads standard output for a while, and then this signal comes.
  int iSignalWhileBlocked = 0;
};

Outcome RunZu(const std::vector<std::string>& arguments, const RunOptions& options = {});

// A command line as a user types it, run by a shell in the folder; $S are the samples. Where it has
// pipes, the code of the last part that failed counts.
Outcome RunLine(const std::string& strLine, const class ScratchFolder& folder);

// A command line, its exit code, and what its streams hold; a text that begins with '!' must not be
// there. A code above 1 goes with an empty standard output and at most three lines of message.
struct LineCase {
  const char* szLine;
  int iExit;
  const char* szOut;
  const char* szErr;
};
void ExpectLines(std::initializer_list<LineCase> cases, const class ScratchFolder& folder);

// A failing call gives its code, nothing on standard output, and one message of at most three lines
// that holds the text.
void ExpectFailure(const Outcome& outcome, int iExit, const std::string& strMessage);

// The names of the commands that a help text lists.
std::vector<std::string> CommandsIn(const std::string& strHelp);

// A path below the root of the project.
std::string Source(const std::string& strPath);

// An empty folder that is removed at the end of the test.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  std::string Path(const std::string& strName) const { return m_strPath + "/" + strName; }
  // Writes a file and returns its path.
  std::string Write(const std::string& strName, const std::string& strText) const;
  // Names of everything in the folder, sorted.
  std::vector<std::string> Names() const;

 private:
  std::string m_strPath;
};

std::string ReadFile(const std::string& strPath);
