// Camera files, in the full and the simple form. Cameras written in both forms read back to the
// last bit, their lines for the adjustment program to its digits.
#include "fuzz/photo_use.h"
#include "fuzz/there_and_back.h"
#include "zu/photo/camera_list.h"

namespace {

constexpr double kDigits8 = 1e-7;  // relative, of eight digits and the rounding of the last

// What a line of the adjustment program and a block of the simple form hold, with |c|.
ZuCamera Simple(const ZuCamera& camera) {
  ZuCamera simple(camera.GetId());
  simple.SetName(camera.GetName());
  simple.m_dC = std::fabs(camera.m_dC);
  for (const auto pdValue :
       {&ZuCamera::m_dXh, &ZuCamera::m_dYh, &ZuCamera::m_dA1, &ZuCamera::m_dA2, &ZuCamera::m_dR0}) {
    simple.*pdValue = camera.*pdValue;
  }
  return simple;
}

void CheckForms(const ZuCamera& camera) {
  CheckThereAndBack(camera, ZuCamera(), &FieldsOf<ZuCamera>, &ZuCamera::ExportFullData,
                    &ZuCamera::ReadFullData);
  CheckThereAndBack(Simple(camera), ZuCamera(),
                    [](const ZuCamera& read) { return FieldsOf(Simple(read)); });
}

bool IsWritable(const ZuCamera& camera) {
  for (const double d :
       {camera.m_dC, camera.m_dXh, camera.m_dYh, camera.m_dA1, camera.m_dA2, camera.m_dR0}) {
    if (!std::isfinite(d)) return false;
  }
  return camera.GetName().length() < 4000;
}

bool IsNear(double a, double b) { return std::fabs(a - b) <= kDigits8 * std::fabs(a) + 1e-320; }

void CheckLine(const ZuCamera& camera) {
  std::ostringstream os;
  camera.WriteGentriFormat(os << "{ ") << " \"" << camera.GetName().chars() << "\" }\n";
  ZuCameraList again;
  again.ReadFileFormatSimple(Input::Path(os.str()));
  Require(again.Count() == 1 && again.GetReadErrorCount() == 0);
  const ZuCamera& read = *again.First();
  const double dKept = camera.m_iMode == eCameraModeCap ? 0.0 : 1.0;
  Require(read.GetId() == camera.GetId() && read.GetName() == camera.GetName());
  Require(IsNear(std::fabs(camera.m_dC), read.m_dC));
  for (const auto pdValue :
       {&ZuCamera::m_dXh, &ZuCamera::m_dYh, &ZuCamera::m_dA1, &ZuCamera::m_dA2, &ZuCamera::m_dR0}) {
    Require(IsNear(dKept * (camera.*pdValue), read.*pdValue));
  }
}

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

  ZuCameraList cameras, simple;
  Require(cameras.Read(szPath) == 1 && cameras.GetReadErrorText() != nullptr);
  simple.ReadFileFormatSimple(szPath);
  for (const ZuCamera* p = simple.First(); p != nullptr; p = p->Next()) Require(!(p->m_dC < 0.0));
  cameras.ContainsOnlyGentriCams();
  CheckCopies(cameras);
  int iLeft = 8;
  for (const ZuCamera* p = cameras.First(); p != nullptr && iLeft-- > 0; p = p->Next()) {
    UseCamera(*p, iLeft == 7);
    CheckForms(*p);
    if (!IsWritable(*p)) continue;
    CheckLine(*p);
  }
  return 0;
}
