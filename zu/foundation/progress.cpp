#include "zu/foundation/progress.h"

#include <algorithm>
#include <limits>

namespace {

constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSteps = 100;  // positions told from start to end

constinit ZuProgressHandler theHandler;

}  // namespace

ZuProgressHandler ZuSetProgressHandler(ZuProgressHandler handler) {
  const ZuProgressHandler former = theHandler;
  theHandler = handler;
  return former;
}

ZuProgress::ZuProgress(char const* szTitle)
    : m_szTitle(szTitle), m_handler(theHandler), m_nNext(theHandler.pfnNotify ? 0 : kNever) {
  if (m_handler.pfnNotify == nullptr) return;
  m_bGoOn = m_handler.pfnNotify(m_handler.pContext, eZuProgressShow, m_szTitle, 0.0);
}

ZuProgress::~ZuProgress() {
  if (m_handler.pfnNotify == nullptr) return;
  m_handler.pfnNotify(m_handler.pContext, eZuProgressHide, m_szTitle, 1.0);
}

bool ZuProgress::Advance(std::int64_t nDone, std::int64_t nAll) {
  if (m_handler.pfnNotify == nullptr || !m_bGoOn) return m_bGoOn;
  const double dPosition =
      nAll > 0 ? std::clamp(static_cast<double>(nDone) / static_cast<double>(nAll), 0.0, 1.0) : 1.0;
  m_bGoOn = m_handler.pfnNotify(m_handler.pContext, eZuProgressPosition, m_szTitle, dPosition);
  m_nNext = nDone < nAll ? std::min(nDone + nAll / kSteps + 1, nAll) : kNever;
  return m_bGoOn;
}
