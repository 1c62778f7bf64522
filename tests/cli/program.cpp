#include "tests/cli/program.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

void Move(int fd, int fdTo) {
  if (fd < 0 || dup2(fd, fdTo) < 0) _exit(126);
  if (fd != fdTo) close(fd);
}

// What becomes of the child: its three streams and limits, then the program.
[[noreturn]] void BecomeZu(const std::vector<std::string>& arguments, const RunOptions& options,
                           const ScratchFolder& scratch, int fdPipe) {
  Move(open(scratch.Path("in").c_str(), O_RDONLY), STDIN_FILENO);
  Move(open(scratch.Path("err").c_str(), O_WRONLY | O_CREAT, 0600), STDERR_FILENO);
  if (fdPipe >= 0) {
    Move(fdPipe, STDOUT_FILENO);
  } else {
    const std::string strFile = options.strStdout.empty() ? scratch.Path("out") : options.strStdout;
    Move(open(strFile.c_str(), O_WRONLY | O_CREAT, 0600), STDOUT_FILENO);
  }
  if (options.iFileLimit >= 0) {
    const rlim_t limit = static_cast<rlim_t>(options.iFileLimit);
    const rlimit both = {limit, limit};
    setrlimit(RLIMIT_FSIZE, &both);
  }
  std::vector<char*> argv = {const_cast<char*>("zu")};
  for (const auto& strArgument : arguments) argv.push_back(const_cast<char*>(strArgument.c_str()));
  argv.push_back(nullptr);
  execv(ZU_PROGRAM, argv.data());
  _exit(127);
}

// Until the pipe holds as much as it can: the program hangs on its standard output then.
void WaitUntilFull(int fdRead, pid_t pid) {
  const int iCapacity = fcntl(fdRead, F_GETPIPE_SZ);
  siginfo_t ended = {};
  for (int i = 0, iWaiting = 0; i < 6000; ++i) {
    if (ioctl(fdRead, FIONREAD, &iWaiting) == 0 && iWaiting >= iCapacity) return;
    waitid(P_PID, static_cast<id_t>(pid), &ended, WEXITED | WNOHANG | WNOWAIT);
    if (ended.si_pid == pid) break;
    usleep(10000);
  }
  ADD_FAILURE() << "standard output never filled the pipe";
}

int ExitCodeOf(pid_t pid) {
  int iStatus = 0;
  if (waitpid(pid, &iStatus, 0) != pid) return -1;
  return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : 128 + WTERMSIG(iStatus);
}

}  // namespace

nlohmann::json Outcome::Json() const {
  const auto json = nlohmann::json::parse(strOut, nullptr, false);
  EXPECT_FALSE(json.is_discarded()) << strOut << strErr;
  return json;
}

Outcome RunZu(const std::vector<std::string>& arguments, const RunOptions& options) {
  const ScratchFolder scratch;
  scratch.Write("in", options.strInput);
  int aPipe[2] = {-1, -1};
  if (options.bClosedPipe || options.iSignalWhileBlocked != 0) {
    EXPECT_EQ(pipe2(aPipe, O_CLOEXEC), 0);
  }
  const pid_t pid = fork();
  if (pid == 0) BecomeZu(arguments, options, scratch, aPipe[1]);
  close(aPipe[1]);
  if (options.bClosedPipe) close(aPipe[0]);
  if (options.iSignalWhileBlocked != 0) {
    WaitUntilFull(aPipe[0], pid);
    kill(pid, options.iSignalWhileBlocked);
  }
  Outcome outcome;
  outcome.iExit = ExitCodeOf(pid);
  if (options.iSignalWhileBlocked != 0) close(aPipe[0]);
  outcome.strOut = ReadFile(scratch.Path("out"));
  outcome.strErr = ReadFile(scratch.Path("err"));
  return outcome;
}

Outcome RunLine(const std::string& strLine, const ScratchFolder& folder) {
  const ScratchFolder streams;
  const std::string strScript = "set -o pipefail; zu() { '" ZU_PROGRAM "' \"$@\"; }; S='" +
                                Source("samples") + "'; cd '" + folder.Path(".") + "'; { " +
                                strLine + "\n} >'" + streams.Path("out") + "' 2>'" +
                                streams.Path("err") + "' </dev/null";
  const pid_t pid = fork();
  if (pid == 0) {
    execlp("bash", "bash", "-c", strScript.c_str(), nullptr);
    _exit(127);
  }
  Outcome outcome;
  outcome.iExit = ExitCodeOf(pid);
  outcome.strOut = ReadFile(streams.Path("out"));
  outcome.strErr = ReadFile(streams.Path("err"));
  return outcome;
}

void ExpectLines(std::initializer_list<LineCase> cases, const ScratchFolder& folder) {
  const auto holds = [](const std::string& strText, const char* szWanted) {
    const bool bNot = szWanted[0] == '!';
    return (strText.find(szWanted + (bNot ? 1 : 0)) == std::string::npos) == bNot;
  };
  for (const LineCase& line : cases) {
    SCOPED_TRACE(line.szLine);
    const Outcome outcome = RunLine(line.szLine, folder);
    EXPECT_EQ(outcome.iExit, line.iExit) << outcome.strErr;
    EXPECT_TRUE(holds(outcome.strOut, line.szOut)) << line.szOut << "\nin standard output:\n"
                                                   << outcome.strOut;
    EXPECT_TRUE(holds(outcome.strErr, line.szErr)) << line.szErr << "\nin standard error:\n"
                                                   << outcome.strErr;
    if (line.iExit < 2) continue;
    EXPECT_EQ(outcome.strOut, "");
    EXPECT_LE(std::count(outcome.strErr.begin(), outcome.strErr.end(), '\n'), 3) << outcome.strErr;
  }
}

void ExpectFailure(const Outcome& outcome, int iExit, const std::string& strMessage) {
  EXPECT_EQ(outcome.iExit, iExit) << outcome.strErr;
  EXPECT_EQ(outcome.strOut, "");
  EXPECT_NE(outcome.strErr.find(strMessage), std::string::npos)
      << "expected: " << strMessage << "\nfound: " << outcome.strErr;
  EXPECT_LE(std::count(outcome.strErr.begin(), outcome.strErr.end(), '\n'), 3) << outcome.strErr;
}

std::vector<std::string> CommandsIn(const std::string& strHelp) {
  std::vector<std::string> names;
  std::istringstream stream(strHelp.substr(std::min(strHelp.find("Subcommands:"), strHelp.size())));
  for (std::string strLine; std::getline(stream, strLine);) {
    if (strLine.rfind("  ", 0) == 0 && strLine[2] != ' ') {
      names.push_back(strLine.substr(2, strLine.find(' ', 2) - 2));
    }
  }
  return names;
}

std::string Source(const std::string& strPath) { return ZU_SOURCE_DIR "/" + strPath; }

ScratchFolder::ScratchFolder() {
  std::string strPath = (std::filesystem::temp_directory_path() / "zu-test-XXXXXX").string();
  if (mkdtemp(strPath.data()) == nullptr) std::abort();
  m_strPath = strPath;
}

ScratchFolder::~ScratchFolder() {
  std::error_code error;
  std::filesystem::remove_all(m_strPath, error);
}

std::string ScratchFolder::Write(const std::string& strName, const std::string& strText) const {
  std::ofstream(Path(strName), std::ios::binary) << strText;
  return Path(strName);
}

std::vector<std::string> ScratchFolder::Names() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(m_strPath)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string ReadFile(const std::string& strPath) {
  std::ifstream file(strPath, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}
