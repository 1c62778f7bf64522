// The two forms in which cameras are read.
#include <cmath>

#include "zu/foundation/file_name.h"
#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/reader.h"
#include "zu/photo/camera_list.h"

// { 1 4.915686 0.227808 0.065727 -0.00966481955 -0.000198009113 2.5 "left radial" }
int ZuCamera::Read(ZuReaderObject* pObject) {
  SetId(pObject->TakeId());
  for (double* pdTarget : {&m_dC, &m_dXh, &m_dYh, &m_dA1, &m_dA2, &m_dR0}) {
    *pdTarget = pObject->TakeValue();
  }
  SetName(pObject->TakeString());

  m_dC = std::fabs(m_dC);
  m_dLastInX = m_dLastInY = m_dLastOutX = m_dLastOutY = 0.0;
  m_dRMax = kTableReach * m_dR0;
  return 1;
}

// { ID 2 NAME "left CAP" MD 2 C 4.914537 XH 0.216378 R0 2.5 ... }
int ZuCamera::ReadFullData(ZuReaderObject* pObject) {
  const struct {
    const char* szKeyword;
    double* pdTarget;
  } values[] = {
      {"C", &m_dC},        {"CV", &m_dCViva},   {"XH", &m_dXh},   {"YH", &m_dYh},
      {"X0", &m_dXh},      {"Y0", &m_dYh},  // two names each: the later one in a block wins
      {"XHV", &m_dXhViva}, {"YHV", &m_dYhViva}, {"A1", &m_dA1},   {"A2", &m_dA2},
      {"A3", &m_dA3},      {"R0", &m_dR0},      {"RM", &m_dRMax}, {"B1", &m_dB1},
      {"B2", &m_dB2},      {"C1", &m_dC1},      {"C2", &m_dC2},
  };
  for (const auto& value : values) {
    ZuReaderObject object(value.szKeyword, value.pdTarget);
    pObject->RegisterObject(object);
  }
  ZuReaderObject id("ID", &m_uId), name("NAME", &m_strName), mode("MD", &m_iMode);
  for (ZuReaderObject* pKeyword : {&id, &name, &mode}) pObject->RegisterObject(*pKeyword);
  pObject->DoProcess();

  if (m_dRMax == 0.0) m_dRMax = kTableReach * m_dR0;
  return 1;
}

int ZuCameraList::Read(const char* szPath) {
  const int iBefore = Count();
  ReadFileFormatFull(szPath);
  if (Count() == iBefore) ReadFileFormatSimple(szPath);
  const auto test = [this] { return TestForMultipleCameras(); };
  zu::internal::OrWithoutMemory(test, 0);
  return 1;
}

int ZuCameraList::ReadFileFormatFull(const char* szPath) {
  ZuReaderObject object("CAMERA", Link(this, &ZuCameraList::ReadFormatFull));
  const auto read = [&] {
    if (szPath != nullptr && ZuExistFile(szPath)) ReadItems(szPath, &object);
    return 1;
  };
  return zu::internal::OrWithoutMemory(read, 1);
}

int ZuCameraList::ReadFileFormatSimple(const char* szPath) {
  ZuReaderObject object(Link(this, &ZuCameraList::ReadFormatSimple));
  const auto read = [&] {
    if (szPath != nullptr) ReadItems(szPath, &object);
    return 1;
  };
  return zu::internal::OrWithoutMemory(read, 1);
}

void ZuCameraList::ReadItems(const char* szPath, ZuReaderObject* pItem) {
  m_ReadFaults.Begin();
  ZuReader reader(szPath);
  reader.RegisterObject(*pItem);
  m_ReadFaults.Follow(&reader);
  reader.DoProcess(false);
}

int ZuCameraList::ReadFormatFull(ZuReaderObject* pObject) {
  AddCamera(pObject, true);
  return 1;
}

int ZuCameraList::ReadFormatSimple(ZuReaderObject* pObject) {
  pObject->TakeBlockOpen();
  AddCamera(pObject, false);
  return 1;
}

ZuCamera* ZuCameraList::AddCamera(ZuReaderObject* pObject, bool bFullData) {
  return Add(new ZuCamera(pObject, bFullData));
}
