#include "progress_line.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

#include "interrupt.h"
#include "output_file.h"

namespace cli {

namespace {

constexpr std::chrono::milliseconds kPatience(500);
constexpr std::chrono::milliseconds kPeriod(100);
constexpr std::chrono::seconds kStale(1);  // a line that nobody has moved for so long tells nothing

// The one line of the terminal, which the thread of a WorkLine and the program write to.
std::mutex g_mutex;
bool g_bShown = false;
std::chrono::steady_clock::time_point g_moved;

void Show(const std::string& strText, bool bMoves) {
  const std::lock_guard<std::mutex> lock(g_mutex);
  const auto now = std::chrono::steady_clock::now();
  if (!bMoves && g_bShown && now < g_moved + kStale) return;
  if (bMoves) g_moved = now;
  g_bShown = true;
  SetProgressLine(true);
  const std::string strLine = "\r" + strText + "\033[K";
  WriteAll(STDERR_FILENO, strLine.data(), strLine.size());
}

}  // namespace

void ClearProgress() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  if (g_bShown) SetProgressLine(false);
  g_bShown = false;
  g_moved = {};
}

ProgressLine::ProgressLine(std::string strTitle, bool bQuiet)
    : m_strTitle(std::move(strTitle)),
      m_bTerminal(!bQuiet && isatty(STDERR_FILENO) == 1),
      m_next(Clock::now() + kPatience) {}

ProgressLine::~ProgressLine() {
  if (m_bShown) ClearProgress();
}

void ProgressLine::Update(double dFraction) {
  if (!m_bTerminal || Clock::now() < m_next) return;
  m_next = Clock::now() + kPeriod;
  m_bShown = true;
  const int iPercent = dFraction > 0.0 ? static_cast<int>(100.0 * std::min(dFraction, 1.0)) : 0;
  Show(m_strTitle + " " + std::to_string(iPercent) + " %", true);
}

WorkLine::WorkLine(std::string strTitle, bool bQuiet) : m_strTitle(std::move(strTitle)) {
  if (bQuiet || isatty(STDERR_FILENO) != 1) return;
  const SignalPause pause;  // signals are for the first thread, which holds them back at times
  m_thread = std::thread([this] { ShowWork(); });
}

WorkLine::~WorkLine() {
  if (!m_thread.joinable()) return;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_bEnded = true;
  }
  m_ended.notify_one();
  m_thread.join();
  ClearProgress();
}

void WorkLine::ShowWork() {
  const auto start = std::chrono::steady_clock::now();
  auto next = start + kPatience;
  std::unique_lock<std::mutex> lock(m_mutex);
  while (!m_ended.wait_until(lock, next, [this] { return m_bEnded; })) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(next - start).count();
    Show(m_strTitle + " works, " + std::to_string(seconds) + " s", false);
    next += kPeriod;
  }
}

LibraryProgress::LibraryProgress(bool bQuiet)
    : m_bQuiet(bQuiet), m_former(ZuSetProgressHandler({&LibraryProgress::Notify, this})) {}

LibraryProgress::~LibraryProgress() { ZuSetProgressHandler(m_former); }

bool LibraryProgress::Notify(void* pContext, eZuProgress eWhat, const char* szTitle,
                             double dPosition) {
  auto* pThis = static_cast<LibraryProgress*>(pContext);
  if (eWhat == eZuProgressShow) pThis->m_line.emplace(szTitle, pThis->m_bQuiet);
  if (eWhat == eZuProgressPosition && pThis->m_line) pThis->m_line->Update(dPosition);
  if (eWhat == eZuProgressHide) pThis->m_line.reset();
  return true;
}

}  // namespace cli
