// A line on standard error that tells how far long work has come. It appears only when standard
// error is a terminal and the work has taken half a second, and is gone when the object ends.
#pragma once

#include <chrono>
#include <string>

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

}  // namespace cli
