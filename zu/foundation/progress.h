// Progress of long operations, for an application to show, and its wish to stop one.
//
//   ZuProgress progress("Reading scan.pts");
//   while (ReadLine()) {
//     if (!progress.SetPosition(nRead, nSize)) break;  // the user wants no more
//   }
//
// An operation that is stopped ends as it does at the end of its data, and says so. Without a
// handler all of this costs one comparison a call. One thread at a time.
#pragma once

#include <cstdint>

#include "zu/export.h"

// What a handler is told: a title at the start, positions from 0 to 1, the end.
enum eZuProgress : int { eZuProgressShow, eZuProgressPosition, eZuProgressHide };

struct ZuProgressHandler {
  // False asks the operation to stop; at the end the answer counts for nothing.
  bool (*pfnNotify)(void* pContext, eZuProgress eWhat, char const* szTitle,
                    double dPosition) = nullptr;
  void* pContext = nullptr;
};

// Replaces the handler, which is null at the start, and returns the former one.
ZU_API ZuProgressHandler ZuSetProgressHandler(ZuProgressHandler handler);

class ZU_API ZuProgress {
 public:
  // The title is not copied.
  explicit ZuProgress(char const* szTitle);
  ~ZuProgress();
  ZuProgress(ZuProgress const&) = delete;
  ZuProgress& operator=(ZuProgress const&) = delete;

  // Tells how much is done. The handler is called when a hundredth is full, not more often. False
  // once it has asked to stop.
  bool SetPosition(std::int64_t nDone, std::int64_t nAll) {
    return nDone < m_nNext ? m_bGoOn : Advance(nDone, nAll);
  }

  bool IsStopped() const { return !m_bGoOn; }

 protected:
  bool Advance(std::int64_t nDone, std::int64_t nAll);

  char const* m_szTitle;
  ZuProgressHandler m_handler;  // the one at the start, to the end
  std::int64_t m_nNext;         // where the handler is called next
  bool m_bGoOn = true;
};
