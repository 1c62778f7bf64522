// The two file forms of a rectification.
#include "zu/foundation/reader.h"
#include "zu/rectify/internal/read_shape.h"
#include "zu/rectify/zusp_trafo.h"

namespace {

constexpr eZuPointRWMask kColumnsXY[] = {eZuPointRWX, eZuPointRWY, eZuPointRWEnd};
constexpr int kCornersV50 = 4;

}  // namespace

int ZuZuspTrafo::ReadZuspMat(ZuReaderObject* pObject) {
  zu::internal::ReadFixedShape(pObject, &m_matZusp);
  return 1;
}

int ZuZuspTrafo::ReadTransMat(ZuReaderObject* pObject) {
  zu::internal::ReadFixedShape(pObject, &m_matTrans);
  return 1;
}

// { ZUSPID 1 "facade" ACTIV 1 ZUSPTRAFO { 3 3 ... } TRAFO3D { 4 4 ... } VALIDREGION { x y ... } }
int ZuZuspTrafo::Read(ZuReaderObject* pObject) {
  m_bInverseValid = false;
  m_polyBiko.SetMode(eLPolygonIdXY);
  m_polyPP.SetMode(eLPolygonIdXYZ);
  bool bDistortion = false, bActive = false, bRegionActive = false;
  ZuReaderObject keywords[] = {
      {"ZUSPID", Link(this, &ZuObject::Read)},
      {"KAMERA", &bDistortion},
      {"ACTIV", &bActive},
      {"DISTORTION", Link(&m_cameraDistort, &ZuCamera::Read)},
      {"REGIONACTIV", &bRegionActive},
      {"ZUSPTRAFO", Link(this, &ZuZuspTrafo::ReadZuspMat)},
      {"TRAFO3D", Link(this, &ZuZuspTrafo::ReadTransMat)},
      {"DEFPOINTS", Link(&m_polyPP, &ZuPolygon::Read)},
      {"MEASPOINTS", Link(&m_polyBiko, &ZuPolygon::Read)},
      {"VALIDREGION", Link(&m_polyRegion, &ZuPolygon::Read)},
      {"PARALLELDEF", Link(&m_parallelDef, &ZuZuspParallelDef::Read)},
  };
  for (ZuReaderObject& keyword : keywords) pObject->RegisterObject(keyword);
  pObject->DoProcess();

  m_polyRegion.GetPoints().Renumber(1, nullptr, 1);
  SetDistortCameraFlag(bDistortion);
  SetActive(bActive);
  SetRegionActive(bRegionActive);
  return 1;
}

// 1 "facade" 1  H02 H12 H22 H01 H11 H21 H00 H10 H20  { 4 4 ... } { x y ... } x y x y x y x y
int ZuZuspTrafo::ReadV50(ZuReaderObject* pObject) {
  m_bInverseValid = false;
  m_polyBiko.GetPoints().Destroy();
  ZuObject::Read(pObject);
  SetActive(pObject->TakeInt() != 0);
  for (int iColumn = 3; iColumn >= 1; --iColumn) {
    for (int iRow = 1; iRow <= 3; ++iRow) m_matZusp[iRow][iColumn] = pObject->TakeNumber();
  }
  pObject->TakeBlockOpen();
  zu::internal::ReadFixedShape(pObject, &m_matTrans);
  pObject->TakeRestOfBlock();
  pObject->TakeBlockOpen();
  m_polyRegion.Read(pObject);
  pObject->TakeBlockClose();
  const TZuFormatTable<eZuPointRWMask> columns(kColumnsXY);
  for (int i = 0; i < kCornersV50; ++i) m_polyBiko.AddPoint(ZuPoint(pObject, columns));

  // What this form does not hold: ids, and the target points as the transformation gives them.
  m_polyBiko.GetPoints().Renumber(1, nullptr, 1);
  m_polyPP = m_polyBiko;
  for (ZuPoint* p = m_polyPP.First(); p != nullptr; p = p->Next()) Transform(p, p);
  m_polyPP.UpdateMinMax();
  m_polyPP.GetPoints().Renumber(1, nullptr, 1);
  m_polyBiko.SetMode(eLPolygonIdXY);
  m_polyPP.SetMode(eLPolygonIdXYZ);
  return 1;
}

ZuZuspTrafo* ZuZuspTrafoList::AddTrafo(ZuReaderObject* pObject) {
  return Add(new ZuZuspTrafo(pObject, false));
}

ZuZuspTrafo* ZuZuspTrafoList::AddTrafoV50(ZuReaderObject* pObject) {
  return Add(new ZuZuspTrafo(pObject, true));
}
