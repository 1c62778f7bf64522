// Camera files, in the full and the simple form.
#include "fuzz/photo_use.h"
#include "zu/photo/camera_list.h"

namespace {

void CheckCopies(const ZuCameraList& cameras) {
  const ZuCameraList copy(cameras);
  Require(copy.Count() == cameras.Count());
  std::ostringstream os;
  copy.WriteFile(os, true);
  copy.WriteFile(os, false);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  const char* const szPath = input.Path();
  const bool bTable = input.OneIn(64);  // a table takes most of a second here

  ZuCameraList cameras;
  Require(cameras.Read(szPath) == 1 && cameras.GetReadErrorText() != nullptr);
  cameras.ContainsOnlyGentriCams();
  CheckCopies(cameras);
  int iLeft = 8;
  for (const ZuCamera* p = cameras.First(); p != nullptr && iLeft-- > 0; p = p->Next()) {
    UseCamera(*p, bTable && iLeft == 7);
  }

  ZuCameraList simple;
  simple.ReadFileFormatSimple(szPath);
  for (const ZuCamera* p = simple.First(); p != nullptr; p = p->Next()) Require(!(p->m_dC < 0.0));
  return 0;
}
