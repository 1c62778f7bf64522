// The photo's block in a project file.
#include <limits>
#include <vector>

#include "zu/foundation/numbers.h"
#include "zu/foundation/reader.h"
#include "zu/photo/photo.h"
#include "zu/rectify/internal/read_shape.h"

namespace {

constexpr int kUserDataParts = 4;
constexpr int kRotationNone = 3;  // of older files; means 0

}  // namespace

int ZuPosition::Read(ZuReaderObject* pObject) {
  m_dX = pObject->TakeValue();
  m_dY = pObject->TakeValue();
  return 1;
}

// PHOTO { PHOTOID 1 "left01.jpg" DIGITAL 1 ORIENTED 1 DIGIREGION { 0 0 639 479 } CAMDATA { ... }
//         PRERESTRAFO { ... } MAINRESTRAFO { ... } AORM { 3 3 ... } AORV { 3 ... } ... }
int ZuPhoto::Read(ZuReaderObject* pObject) {
  m_RotAOR.SetIdent();
  m_bFieldOfViewValid = false;
  bool bCheckActive = false;
  String strReseau = m_ReseauData.GetName();
  unsigned int uReseauSubId = m_ReseauData.GetId();
  ZuReaderObject keywords[] = {
      {"PHOTOID", Link(this, &ZuObject::Read)},
      {"COMMENT", &m_sComment},
      {"USERDATA", Link(this, &ZuPhoto::ReadUserData)},
      {"DIGITALPAGE", &m_iDigPictPage},
      {"DIGITALROT", &m_iDigPictRot},
      {"TYPE", Link(this, &ZuPhoto::ReadType)},
      {"DIGITAL", Link(this, &ZuPhoto::ReadDigital)},
      {"DIGITIZERID", &m_uDigitizerId},
      {"CHECKACTIVE", &bCheckActive},
      {"STATE", &m_iState},
      {"ROTATION", &m_iRotation},
      {"SCALE", &m_dScale},
      {"ORIENTED", &m_bOriented},
      {"DIGIREGION", Link(&m_DigiRegion, &ZuRegion::Read)},
      {"AORM", Link(this, &ZuPhoto::ReadRotation)},
      {"AORV", Link(this, &ZuPhoto::ReadPosition)},
      {"TPS_SETUP_ID", &m_sTpsSetupId},
      {"CAMERA", Link(&m_Camera, &ZuCamera::Read)},
      {"CAMDATA", Link(&m_Camera, &ZuCamera::ReadFullData)},
      {"PRERESEAU", Link(this, &ZuPhoto::ReadTrafo<&ZuPhoto::m_PreTrafo, &ZuReseauTrafo::ReadV50>)},
      {"MAINRESEAU",
       Link(this, &ZuPhoto::ReadTrafo<&ZuPhoto::m_MainTrafo, &ZuReseauTrafo::ReadV50>)},
      {"POLYRESINV",
       Link(this, &ZuPhoto::ReadTrafo<&ZuPhoto::m_PolyInvTrafo, &ZuReseauTrafo::ReadV50>)},
      {"RESEAUFILE", &strReseau},
      {"RESEAUSUBID", &uReseauSubId},
      {"PRERESTRAFO", Link(this, &ZuPhoto::ReadTrafo<&ZuPhoto::m_PreTrafo, &ZuReseauTrafo::Read>)},
      {"MAINRESTRAFO",
       Link(this, &ZuPhoto::ReadTrafo<&ZuPhoto::m_MainTrafo, &ZuReseauTrafo::Read>)},
      {"POLYRESINVTRAFO",
       Link(this, &ZuPhoto::ReadTrafo<&ZuPhoto::m_PolyInvTrafo, &ZuReseauTrafo::Read>)},
      {"ZUSPTRAFO", Link(&m_ZuspList, &ZuZuspTrafoList::AddTrafoV50)},
      {"ZUSPPLANE", Link(&m_ZuspList, &ZuZuspTrafoList::AddTrafo)},
      {"LASTZUSPID", &m_uLastZuspId},
      {"SCREENPOS", Link(&m_ScreenPos, &ZuPosition::Read)},
      {"SCREENSIZE", &m_iScreenScale},
      {"SCREENFLAGS", &m_iScreenFlags},
      {"REGOI", Link(this, &ZuPhoto::ReadRegois)},
  };
  for (ZuReaderObject& keyword : keywords) pObject->RegisterObject(keyword);
  pObject->DoProcess();
  m_ReseauData.Set(strReseau, uReseauSubId);
  CompleteRead(bCheckActive);
  return 1;
}

void ZuPhoto::CompleteRead(bool bCheckActive) {
  if (bCheckActive) SetFlag(eZuFlagActive);
  // Older files name the reseau in the pre-transformation alone.
  if (!m_PreTrafo->GetName().empty()) {
    m_ReseauData.SetName(m_PreTrafo->GetName());
    if (!IsDigital()) {
      m_sComment = m_strName;
      m_strName = "";
    }
  }
  CompleteCamera();
}

int ZuPhoto::ReadRegois(ZuReaderObject* pObject) { return m_RegoiList.Own().Read(pObject); }

// USERDATA "text;page;rotation;text", of older files.
int ZuPhoto::ReadUserData(ZuReaderObject* pObject) {
  const String text = pObject->TakeString();
  String parts[kUserDataParts];
  split(text, parts, kUserDataParts, String(";"));
  const int iPage = ZuAtoi(parts[1]);
  m_iDigPictPage = iPage < std::numeric_limits<int>::max() ? iPage + 1 : iPage;
  m_iDigPictRot = ZuAtoi(parts[2]);
  if (m_iDigPictRot == kRotationNone) m_iDigPictRot = 0;
  return 1;
}

// TYPE 1 1, of older files.
int ZuPhoto::ReadType(ZuReaderObject* pObject) {
  ReadDigital(pObject);
  m_uDigitizerId = pObject->TakeId();
  return 1;
}

int ZuPhoto::ReadDigital(ZuReaderObject* pObject) {
  m_ePhototype = static_cast<eZuPhototype>(pObject->TakeInt());
  return 1;
}

int ZuPhoto::ReadRotation(ZuReaderObject* pObject) {
  zu::internal::ReadFixedShape(pObject, &m_RotAOR);
  return 1;
}

int ZuPhoto::ReadPosition(ZuReaderObject* pObject) {
  zu::internal::ReadFixedShape(pObject, &m_PosAOR);
  return 1;
}
