// A watch that is started and stopped.
//
//   ZuStopwatch watch;  // runs
//   ...
//   show(watch.GetSeconds());
//
// By a clock that nobody sets. A plain value; one thread at a time.
#pragma once

#include <chrono>

template <class Clock>
class TZuStopwatch {
 public:
  TZuStopwatch() { Start(); }

  // Goes on from what it shows; a watch that runs goes on running.
  void Start() {
    if (m_bRuns) return;
    m_start = Clock::now();
    m_bRuns = true;
  }
  void Stop() {
    m_shown = GetElapsed();
    m_bRuns = false;
  }
  // Shows 0 and runs.
  void Restart() { *this = TZuStopwatch(); }

  bool IsRunning() const { return m_bRuns; }
  typename Clock::duration GetElapsed() const {
    return m_bRuns ? m_shown + (Clock::now() - m_start) : m_shown;
  }
  double GetSeconds() const { return std::chrono::duration<double>(GetElapsed()).count(); }

 private:
  typename Clock::time_point m_start = {};
  typename Clock::duration m_shown = {};  // of the times it ran before
  bool m_bRuns = false;
};

using ZuStopwatch = TZuStopwatch<std::chrono::steady_clock>;
