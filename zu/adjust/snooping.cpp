#include "zu/adjust/internal/snooping.h"

#include <cmath>
#include <cstddef>

namespace zu::internal {
namespace {

double Excess(const SnoopTest& test) {
  return std::isfinite(test.dLimit) ? test.dTest / test.dLimit : 0.0;
}

class Snooper {
 public:
  Snooper(const std::vector<char>& start, const SnoopAdjust& adjust)
      : m_adjust(adjust),
        m_tests(start.size()),
        m_returned(start.size(), 0),
        m_kept(start.size(), 0) {
    m_result.used = start;
  }

  SnoopResult Run() {
    m_result.bGood = Adjust();
    if (m_result.bGood) NoteStart();
    while (m_result.bGood && (TakeBack() || SetWorstAside())) {
    }
    return m_result;
  }

 private:
  void NoteStart() {
    for (std::size_t u = 0; u < m_tests.size(); ++u) {
      if (m_result.used[u]) continue;
      m_result.setAside.push_back({static_cast<int>(u), m_tests[u].dTest, m_tests[u].dLimit});
    }
  }

  bool Adjust() { return m_adjust(m_result.used, &m_tests, &m_iRedundancy); }

  // Goes back to a state that was good, so that the last adjustment is that of the result.
  bool Restore(std::size_t uGroup, char cUsed) {
    m_result.used[uGroup] = cUsed;
    m_result.bGood = Adjust();
    return m_result.bGood;
  }

  bool TakeBack() {
    const std::size_t uBest = BestAside();
    if (uBest == m_tests.size()) return false;
    m_returned[uBest] = 1;
    m_result.used[uBest] = 1;
    if (!Adjust() || Excess(m_tests[uBest]) > 1.0) return Restore(uBest, 0);
    std::erase_if(m_result.setAside, [uBest](const SetAside& aside) {
      return static_cast<std::size_t>(aside.iGroup) == uBest;
    });
    return true;
  }

  // The group aside that fits best, of those that fit and were never taken back; else the number
  // of groups.
  std::size_t BestAside() const {
    std::size_t uBest = m_tests.size();
    for (std::size_t u = 0; u < m_tests.size(); ++u) {
      if (m_result.used[u] || m_returned[u] || !std::isfinite(m_tests[u].dLimit)) continue;
      if (!(Excess(m_tests[u]) <= 1.0)) continue;
      if (uBest == m_tests.size() || Excess(m_tests[u]) < Excess(m_tests[uBest])) uBest = u;
    }
    return uBest;
  }

  bool SetWorstAside() {
    std::size_t uWorst = m_tests.size();
    double dWorst = 1.0;
    for (std::size_t u = 0; u < m_tests.size(); ++u) {
      if (!m_result.used[u] || m_kept[u] || !(Excess(m_tests[u]) > dWorst)) continue;
      dWorst = Excess(m_tests[u]);
      uWorst = u;
    }
    if (uWorst == m_tests.size()) return false;
    if (2 * (m_result.setAside.size() + 1) > m_tests.size()) {
      m_result.bLimited = true;
      return false;
    }
    const SnoopTest test = m_tests[uWorst];
    m_result.used[uWorst] = 0;
    if (!Adjust() || m_iRedundancy < 1) {
      m_result.bLimited = true;
      m_kept[uWorst] = 1;
      return Restore(uWorst, 1);
    }
    m_result.setAside.push_back({static_cast<int>(uWorst), test.dTest, test.dLimit});
    return true;
  }

  const SnoopAdjust& m_adjust;
  SnoopResult m_result;
  std::vector<SnoopTest> m_tests;
  std::vector<char> m_returned;  // came back once
  std::vector<char> m_kept;      // the rest would not do without it
  int m_iRedundancy = 0;
};

}  // namespace

SnoopResult Snoop(int iGroups, const SnoopAdjust& adjust) {
  return Snoop(std::vector<char>(static_cast<std::size_t>(iGroups), 1), adjust);
}

SnoopResult Snoop(const std::vector<char>& start, const SnoopAdjust& adjust) {
  return Snooper(start, adjust).Run();
}

}  // namespace zu::internal
