// How often a trial with random numbers is repeated.
#pragma once

#include <cmath>
#include <cstdlib>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ZU_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ZU_SANITIZED 1
#endif
#endif
#ifndef ZU_SANITIZED
#define ZU_SANITIZED 0
#endif

// With ZU_LONG_TRIALS in the environment the trials have their full number.
inline bool AreLongTrials() { return std::getenv("ZU_LONG_TRIALS") != nullptr; }

// A twentieth of the runs, one at least, under sanitizers: there a trial looks for faults of memory
// and arithmetic, and each run takes many times as long.
constexpr int Runs(int iRuns) {
  if constexpr (ZU_SANITIZED != 0) return iRuns < 20 ? 1 : iRuns / 20;
  return iRuns;
}

// What a mean of that many runs may be off where that of iRuns may by d.
inline double TrialTolerance(double d, int iRuns) {
  return d * std::sqrt(static_cast<double>(iRuns) / Runs(iRuns));
}
