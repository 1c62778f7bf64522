#include "interrupt.h"

#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <unistd.h>

#include <cstring>

namespace cli {
namespace {

constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP};
constexpr int kMaxFiles = 16;

// The handler may run between any two instructions: a slot counts only while its flag is set, and
// the flag is set after the path is complete.
char g_aPath[kMaxFiles][PATH_MAX];
volatile sig_atomic_t g_aUsed[kMaxFiles];

volatile sig_atomic_t g_bProgressLine;

void EraseProgressLine() {
  static constexpr char kErase[] = "\r\033[K";
  // The line is an ornament: a terminal that is gone needs none.
  [[maybe_unused]] const ssize_t n = write(STDERR_FILENO, kErase, sizeof(kErase) - 1);
}

void EndBySignal(int iSignal) {
  for (int i = 0; i < kMaxFiles; ++i) {
    if (g_aUsed[i]) unlink(g_aPath[i]);
  }
  if (g_bProgressLine) EraseProgressLine();
  _exit(128 + iSignal);
}

sigset_t EndingSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (int iSignal : kEndingSignals) sigaddset(&set, iSignal);
  return set;
}

}  // namespace

void InstallSignalHandlers() {
  // Opened for reading: what is written to a standard output that was closed fails, as it should.
  for (int fd = 0; fd <= 2; ++fd) {
    if (fcntl(fd, F_GETFD) < 0 && open("/dev/null", O_RDONLY) < 0) _exit(5);
  }
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);

  struct sigaction action = {};
  action.sa_handler = EndBySignal;
  action.sa_mask = EndingSignals();
  for (int iSignal : kEndingSignals) {
    struct sigaction old = {};
    // A caller that ignores a signal (nohup) wants it ignored.
    if (sigaction(iSignal, nullptr, &old) == 0 && old.sa_handler == SIG_IGN) continue;
    sigaction(iSignal, &action, nullptr);
  }
}

int RememberUnfinishedFile(const char* szPath) {
  const size_t uLength = std::strlen(szPath);
  if (uLength >= PATH_MAX) return -1;
  for (int i = 0; i < kMaxFiles; ++i) {
    if (g_aUsed[i]) continue;
    std::memcpy(g_aPath[i], szPath, uLength + 1);
    g_aUsed[i] = 1;
    return i;
  }
  return -1;
}

void ForgetUnfinishedFile(int iSlot) {
  if (iSlot >= 0 && iSlot < kMaxFiles) g_aUsed[iSlot] = 0;
}

void SetProgressLine(bool bShown) {
  if (g_bProgressLine && !bShown) EraseProgressLine();
  g_bProgressLine = bShown ? 1 : 0;
}

SignalPause::SignalPause() {
  static_assert(sizeof(sigset_t) <= sizeof(m_aOldMask));
  const sigset_t set = EndingSignals();
  sigprocmask(SIG_BLOCK, &set, reinterpret_cast<sigset_t*>(m_aOldMask));
}

SignalPause::~SignalPause() {
  sigprocmask(SIG_SETMASK, reinterpret_cast<sigset_t*>(m_aOldMask), nullptr);
}

}  // namespace cli
