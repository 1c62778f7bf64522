#include "progress_line.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

#include "interrupt.h"
#include "output_file.h"

namespace cli {

constexpr std::chrono::milliseconds kPatience(500);
constexpr std::chrono::milliseconds kPeriod(100);

ProgressLine::ProgressLine(std::string strTitle, bool bQuiet)
    : m_strTitle(std::move(strTitle)),
      m_bTerminal(!bQuiet && isatty(STDERR_FILENO) == 1),
      m_next(Clock::now() + kPatience) {}

ProgressLine::~ProgressLine() {
  if (m_bShown) SetProgressLine(false);
}

void ProgressLine::Update(double dFraction) {
  if (!m_bTerminal || Clock::now() < m_next) return;
  m_next = Clock::now() + kPeriod;
  m_bShown = true;
  SetProgressLine(true);
  const int iPercent = dFraction > 0.0 ? static_cast<int>(100.0 * std::min(dFraction, 1.0)) : 0;
  const std::string strLine = "\r" + m_strTitle + " " + std::to_string(iPercent) + " %\033[K";
  WriteAll(STDERR_FILENO, strLine.data(), strLine.size());
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
