#include "tests/support/system_call_fault.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#if defined(__x86_64__)

namespace {

constexpr int kNotTraced = 125;  // exit code of a child that may not be traced

void Move(const std::string& strPath, int iFlags, int fdTo) {
  const int fd = open(strPath.c_str(), iFlags, 0600);
  if (fd < 0 || dup2(fd, fdTo) < 0) _exit(126);
  close(fd);
}

// The call's name if it changes files, else null.
const char* Name(const user_regs_struct& regs) {
  switch (regs.orig_rax) {
    case SYS_open:
      return (regs.rsi & (O_WRONLY | O_RDWR)) != 0 ? "open" : nullptr;
    case SYS_openat:
      return (regs.rdx & (O_WRONLY | O_RDWR)) != 0 ? "open" : nullptr;
    case SYS_write:
    case SYS_writev:
      return "write";
    case SYS_rename:
    case SYS_renameat:
    case SYS_renameat2:
      return "rename";
    case SYS_fsync:
    case SYS_fdatasync:
      return "fsync";
    case SYS_fchmod:
      return "fchmod";
    case SYS_ftruncate:
      return "ftruncate";
    case SYS_unlink:
    case SYS_unlinkat:
      return "unlink";
    default:
      return nullptr;
  }
}

// Sanitizers ask by writes to a pipe whether memory can be read.
bool IsPipe(pid_t pid, unsigned long long uDescriptor) {
  const std::string strLink = "/proc/" + std::to_string(pid) + "/fd/" + std::to_string(uDescriptor);
  char acTarget[5] = {};
  return readlink(strLink.c_str(), acTarget, 5) == 5 && std::string(acTarget, 5) == "pipe:";
}

class Tracer {
 public:
  Tracer(pid_t pid, SystemCallFault fault) : m_pid(pid), m_fault(fault) {}

  TracedRun Run() {
    TracedRun run;
    int iStatus = 0;
    if (waitpid(m_pid, &iStatus, 0) != m_pid || !WIFSTOPPED(iStatus)) return run;
    run.bTraced = true;
    ptrace(PTRACE_SETOPTIONS, m_pid, 0, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    int iSignal = 0;
    for (bool bEntry = true;;) {
      ptrace(PTRACE_SYSCALL, m_pid, 0, iSignal);
      iSignal = 0;
      if (waitpid(m_pid, &iStatus, 0) != m_pid) return run;
      if (WIFEXITED(iStatus) || WIFSIGNALED(iStatus)) break;
      if (WSTOPSIG(iStatus) != (SIGTRAP | 0x80)) {
        if (WSTOPSIG(iStatus) != SIGTRAP) iSignal = WSTOPSIG(iStatus);
        continue;
      }
      bEntry ? Enter(&run) : Leave();
      bEntry = !bEntry;
    }
    run.iExit = WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : 128 + WTERMSIG(iStatus);
    return run;
  }

 private:
  void Enter(TracedRun* pRun) {
    user_regs_struct regs;
    ptrace(PTRACE_GETREGS, m_pid, 0, &regs);
    const char* const szName = Name(regs);
    if (szName == nullptr || (*szName == 'w' && IsPipe(m_pid, regs.rdi))) return;
    pRun->calls.emplace_back(szName);
    if (static_cast<int>(pRun->calls.size()) != m_fault.iCall + 1) return;
    if (m_fault.iErrno == 0) {
      kill(m_pid, SIGKILL);
      return;
    }
    regs.orig_rax = static_cast<unsigned long long>(-1);  // no call
    ptrace(PTRACE_SETREGS, m_pid, 0, &regs);
    m_bFailing = true;
  }

  void Leave() {
    if (!m_bFailing) return;
    m_bFailing = false;
    user_regs_struct regs;
    ptrace(PTRACE_GETREGS, m_pid, 0, &regs);
    regs.rax = static_cast<unsigned long long>(-m_fault.iErrno);
    ptrace(PTRACE_SETREGS, m_pid, 0, &regs);
  }

  pid_t m_pid;
  SystemCallFault m_fault;
  bool m_bFailing = false;
};

}  // namespace

TracedRun RunTraced(const std::vector<std::string>& command, const std::string& strStdin,
                    const std::string& strStdout, const std::string& strStderr,
                    SystemCallFault fault) {
  std::vector<char*> argv;
  for (const auto& str : command) argv.push_back(const_cast<char*>(str.c_str()));
  argv.push_back(nullptr);
  const pid_t pid = fork();
  if (pid == 0) {
    // The search for leaks traces, too; only one can.
    setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
    Move(strStdin, O_RDONLY, STDIN_FILENO);
    Move(strStdout, O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO);
    Move(strStderr, O_WRONLY | O_CREAT | O_TRUNC, STDERR_FILENO);
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(kNotTraced);
    execv(argv[0], argv.data());
    _exit(127);
  }
  return Tracer(pid, fault).Run();
}

#else

TracedRun RunTraced(const std::vector<std::string>&, const std::string&, const std::string&,
                    const std::string&, SystemCallFault) {
  return {};
}

#endif
