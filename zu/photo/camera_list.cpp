#include "zu/photo/camera_list.h"

#include <map>

#include "zu/foundation/beep.h"
#include "zu/foundation/debug.h"

namespace {

// An id may stand twice, in the project and in a camera file read beside it.
constexpr int kTolerated = 2;

}  // namespace

ZuCameraList::ZuCameraList(const ZuCameraList& other) : TZuListHeader<ZuCamera>(other), LinkHdl() {}

ZuCameraList& ZuCameraList::operator=(const ZuCameraList& other) {
  TZuListHeader<ZuCamera>::operator=(other);
  return *this;
}

int ZuCameraList::TestForMultipleCameras() {
  std::map<unsigned int, int> counts;
  for (const ZuCamera* p = First(); p != nullptr; p = p->Next()) {
    ++counts[p->GetId()];
  }
  int iResult = 0;
  for (const auto& [uId, iCount] : counts) {
    if (iCount <= kTolerated) continue;
    ++iResult;
    ZuvoBeep(1000, 100);
    dbgprintf("** ZuCameraList::TestForMultipleCameras Id %d %d Entries", static_cast<int>(uId),
              iCount);
  }
  return iResult;
}

bool ZuCameraList::ContainsOnlyGentriCams() const {
  for (const ZuCamera* p = First(); p != nullptr; p = p->Next()) {
    if (!p->IsOldZuvo()) return false;
  }
  return true;
}
