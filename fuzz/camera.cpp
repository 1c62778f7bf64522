// Camera files, in the full and the simple form. Cameras written in the full form, and their lines
// for the adjustment program in a simple file, read back.
#include <cstdio>

#include "fuzz/photo_use.h"
#include "fuzz/points_use.h"
#include "zu/photo/camera_list.h"

namespace {

constexpr double kDigits8 = 1e-7;  // relative, of eight digits and the rounding of the last

struct Parameter {
  const char* szKeyword;
  double ZuCamera::*pdValue;
};
constexpr Parameter kParameters[] = {
    {"C", &ZuCamera::m_dC},   {"CV", &ZuCamera::m_dCViva},   {"XH", &ZuCamera::m_dXh},
    {"YH", &ZuCamera::m_dYh}, {"XHV", &ZuCamera::m_dXhViva}, {"YHV", &ZuCamera::m_dYhViva},
    {"A1", &ZuCamera::m_dA1}, {"A2", &ZuCamera::m_dA2},      {"A3", &ZuCamera::m_dA3},
    {"R0", &ZuCamera::m_dR0}, {"RM", &ZuCamera::m_dRMax},    {"B1", &ZuCamera::m_dB1},
    {"B2", &ZuCamera::m_dB2}, {"C1", &ZuCamera::m_dC1},      {"C2", &ZuCamera::m_dC2},
};

bool IsWritable(const ZuCamera& camera) {
  for (const Parameter& p : kParameters) {
    if (!std::isfinite(camera.*p.pdValue)) return false;
  }
  return IsKept(camera.GetId()) && camera.GetName().length() < 4000 &&
         !camera.GetName().contains('"');
}

std::string FullForm(const ZuCamera& camera) {
  std::string strText = "CAMERA { ID " + std::to_string(camera.GetId()) + " NAME \"" +
                        camera.GetName().chars() + "\" MD " + std::to_string(camera.m_iMode);
  for (const Parameter& p : kParameters) {
    char szValue[48];
    std::snprintf(szValue, sizeof(szValue), " %s %.17e", p.szKeyword, camera.*p.pdValue);
    strText += szValue;
  }
  return strText + " }\n";
}

bool IsNear(double a, double b) { return std::fabs(a - b) <= kDigits8 * std::fabs(a) + 1e-320; }

void CheckFullForm(const ZuCamera& camera) {
  ZuCameraList again;
  again.ReadFileFormatFull(Input::Path(FullForm(camera)));
  Require(again.Count() == 1 && again.GetReadErrorCount() == 0);
  const ZuCamera& read = *again.First();
  Require(read.GetId() == camera.GetId() && read.GetName() == camera.GetName());
  Require(read.m_iMode == camera.m_iMode);
  for (const Parameter& p : kParameters) {
    const bool bDerived = p.pdValue == &ZuCamera::m_dRMax && camera.m_dRMax == 0.0;
    Require(bDerived || read.*p.pdValue == camera.*p.pdValue);
  }
}

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
    if (!IsWritable(*p)) continue;
    CheckFullForm(*p);
    CheckLine(*p);
  }
  return 0;
}
