#include "child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef __linux__
#include <sys/prctl.h>
#endif

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "exit_code.h"

namespace cli {

namespace {

constexpr char kProgram[] = "/proc/self/exe";

int OpenResult(const std::string& strPath) {
  const int i = open(strPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (i >= 0) return i;
  throw CommandError(kCannotWrite, strPath + ": " + std::strerror(errno) +
                                       "; --results FOLDER names another folder");
}

// Between fork and exec: only what a signal handler may call.
[[noreturn]] void Become(char* const* apArguments, int iOutput, int iMessages, pid_t parent) {
#ifdef __linux__
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != parent) _exit(127);
#else
  static_cast<void>(parent);
#endif
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  const int iInput = open("/dev/null", O_RDONLY);
  if (iInput < 0 || dup2(iInput, 0) < 0 || dup2(iOutput, 1) < 0 || dup2(iMessages, 2) < 0)
    _exit(127);
  execv(kProgram, apArguments);
  _exit(127);
}

}  // namespace

ChildProcesses::~ChildProcesses() {
  for (const pid_t pid : m_running) kill(pid, SIGTERM);
  while (!m_running.empty()) Wait();
}

pid_t ChildProcesses::Start(const std::vector<std::string>& words, const std::string& strOutput,
                            const std::string& strMessages, bool bOneThread) {
  if (bOneThread) setenv("OMP_NUM_THREADS", "1", 0);
  std::string strProgram = "zu";
  std::vector<std::string> copies = words;
  std::vector<char*> arguments = {strProgram.data()};
  for (std::string& strWord : copies) arguments.push_back(strWord.data());
  arguments.push_back(nullptr);
  const int iOutput = OpenResult(strOutput);
  int iMessages = -1;
  try {
    iMessages = OpenResult(strMessages);
  } catch (...) {
    close(iOutput);
    throw;
  }
  const pid_t parent = getpid();
  m_running.reserve(m_running.size() + 1);
  const pid_t pid = fork();
  if (pid == 0) Become(arguments.data(), iOutput, iMessages, parent);
  const int iError = errno;
  close(iOutput);
  close(iMessages);
  if (pid < 0) {
    throw CommandError(kCannotWrite, std::string("no further process can be started (") +
                                         std::strerror(iError) + "); --jobs 1 needs the fewest");
  }
  m_running.push_back(pid);
  return pid;
}

ChildEnd ChildProcesses::Wait() {
  ChildEnd end;
  int iStatus = 0;
  do {
    end.pid = waitpid(-1, &iStatus, 0);
  } while (end.pid < 0 && errno == EINTR);
  const auto found = std::find(m_running.begin(), m_running.end(), end.pid);
  if (found == m_running.end()) {  // nobody is left to wait for
    m_running.clear();
    return end;
  }
  m_running.erase(found);
  end.iCode = WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -1;
  end.iSignal = WIFSIGNALED(iStatus) ? WTERMSIG(iStatus) : 0;
  return end;
}

}  // namespace cli
