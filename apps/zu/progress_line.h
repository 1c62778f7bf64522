// A line on standard error that tells how far long work has come. It appears only when standard
// error is a terminal and the work has taken half a second, and is gone when the object ends.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "zu/foundation/progress.h"

namespace cli {

class ProgressLine {
 public:
  // Never shows anything when `bQuiet`.
  ProgressLine(std::string strTitle, bool bQuiet);
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  // `dFraction` from 0 to 1. Cheap: the terminal is written to ten times a second at most.
  void Update(double dFraction);

 private:
  using Clock = std::chrono::steady_clock;

  std::string m_strTitle;
  bool m_bTerminal;
  bool m_bShown = false;
  Clock::time_point m_next;
};

// Tells that the program works, and for how many seconds, while no ProgressLine tells more: a line
// of the same kind for work whose end nobody knows.
class WorkLine {
 public:
  WorkLine(std::string strTitle, bool bQuiet);
  ~WorkLine();
  WorkLine(const WorkLine&) = delete;
  WorkLine& operator=(const WorkLine&) = delete;

 private:
  void ShowWork();

  std::string m_strTitle;
  std::mutex m_mutex;
  std::condition_variable m_ended;
  bool m_bEnded = false;
  std::thread m_thread;  // none where nothing is shown
};

// Takes the line off the terminal before something else is written there.
void ClearProgress();

// Shows the progress of the library's own long operations while it lives.
class LibraryProgress {
 public:
  explicit LibraryProgress(bool bQuiet);
  ~LibraryProgress();
  LibraryProgress(const LibraryProgress&) = delete;
  LibraryProgress& operator=(const LibraryProgress&) = delete;

 private:
  static bool Notify(void* pContext, eZuProgress eWhat, const char* szTitle, double dPosition);

  bool m_bQuiet;
  std::optional<ProgressLine> m_line;
  ZuProgressHandler m_former;
};

}  // namespace cli
