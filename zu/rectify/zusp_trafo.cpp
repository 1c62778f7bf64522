#include "zu/rectify/zusp_trafo.h"

#include <ostream>

#include "zu/numerics/solver.h"
#include "zu/points/internal/flag_walk.h"
#include "zu/points/point_list.h"

ZU_INSTANTIATE_LIST(ZuZuspTrafo);

ZuZuspTrafo::ZuZuspTrafo()
    : m_matZusp(3, 3),
      m_matTrans(4, 4),
      m_polyPP(eLPolygonIdXYZ),
      m_polyBiko(eLPolygonIdXY),
      m_parallelDef(&m_polyBiko.GetPoints()),
      m_polyRegion(eLPolygonXY),
      m_matZuspInv(3, 3),
      m_matTransInv(4, 4) {
  m_matZusp.SetIdent();
  m_matTrans.SetIdent();
}

ZuZuspTrafo::ZuZuspTrafo(const ZuZuspTrafo& other) : ZuZuspTrafo() { *this = other; }

ZuZuspTrafo::ZuZuspTrafo(ZuReaderObject* pObject, bool bV50) : ZuZuspTrafo() {
  if (!bV50) {
    Read(pObject);
    return;
  }
  ReadV50(pObject);
  SetRegionActive(true);
  SetDistortCameraFlag(false);
}

ZuZuspTrafo::~ZuZuspTrafo() = default;

ZuZuspTrafo& ZuZuspTrafo::operator=(const ZuZuspTrafo& other) {
  if (this == &other) return *this;
  ZuListnode::operator=(other);
  ZuFlag::operator=(other);
  m_matZusp = other.m_matZusp;
  m_matTrans = other.m_matTrans;
  m_polyPP = other.m_polyPP;
  m_polyPP.SetMode(eLPolygonIdXYZ);
  m_polyBiko = other.m_polyBiko;
  m_polyBiko.SetMode(eLPolygonIdXY);
  m_parallelDef = other.m_parallelDef;
  m_parallelDef.SetPoints(&m_polyBiko.GetPoints());
  m_polyRegion = other.m_polyRegion;
  m_matZuspInv = other.m_matZuspInv;
  m_matTransInv = other.m_matTransInv;
  m_bInverseValid = other.m_bInverseValid;
  m_cameraDistort = other.m_cameraDistort;
  m_bAutoConnect = other.m_bAutoConnect;
  return *this;
}

void ZuZuspTrafo::ApplyStages(double* x, double* y, double* z) const {
  if (CompensateDistortion()) m_cameraDistort.Adjust(x, y);
  m_matZusp.PTrans2D(x, y);
  m_matTrans.PTrans3D(x, y, z);
}

bool ZuZuspTrafo::Transform(const ZuPoint* pIn, ZuPoint* pOut) const {
  if (pOut != pIn) *pOut = *pIn;
  ApplyStages(&pOut->m_dX, &pOut->m_dY, &pOut->m_dZ);
  return true;
}

int ZuZuspTrafo::Transform(ZuPointList* pList) const {
  int n = 0;
  for (ZuPoint* p = pList != nullptr ? pList->First() : nullptr; p != nullptr; p = p->Next(), ++n) {
    ApplyStages(&p->m_dX, &p->m_dY, &p->m_dZ);
  }
  return n;
}

void ZuZuspTrafo::SetMatrices(const ZuMatrix& zusp, const ZuMatrix& trans) {
  m_matZusp = zusp;
  m_matTrans = trans;
  m_bInverseValid = false;
}

void ZuZuspTrafo::ApplyInverse(double* x, double* y, double* z) const {
  if (!m_bInverseValid) {
    m_matZuspInv = m_matZusp;
    m_matZuspInv.Invert(nullptr);
    m_matTransInv = m_matTrans;
    m_matTransInv.Invert(nullptr);
    m_bInverseValid = true;
  }
  m_matTransInv.PTrans3D(x, y, z);
  m_matZuspInv.PTrans2D(x, y);
  if (CompensateDistortion()) m_cameraDistort.InvAdjust(x, y);
}

bool ZuZuspTrafo::InvTransform(ZuPoint* pPoint) const {
  ApplyInverse(&pPoint->m_dX, &pPoint->m_dY, &pPoint->m_dZ);
  return true;
}

bool ZuZuspTrafo::InvTransform(const ZuPoint* pIn, ZuPoint* pOut) const {
  if (pOut != pIn) *pOut = *pIn;
  return InvTransform(pOut);
}

bool ZuZuspTrafo::CompensateDistortion() const {
  return GetDistortCameraFlag() && m_cameraDistort.GetId() != 0;
}

ZuPolygon ZuZuspTrafo::MappedRegion() const {
  ZuPolygon region(m_polyRegion);
  if (CompensateDistortion()) m_cameraDistort.Adjust(&region.GetPoints());
  Transform2D(&region.GetPoints(), m_matZusp);
  return region;
}

double ZuZuspTrafo::Area() const { return MappedRegion().Area(true); }

double ZuZuspTrafo::Length() const { return MappedRegion().Length(true); }

int ZuZuspTrafo::Overlap(ZuPoint* pPoint) const { return m_polyRegion.Overlap(pPoint) ? 1 : 0; }

bool ZuZuspTrafo::SetFlagTo(int iMask, bool bOn) {
  bOn ? SetFlag(iMask) : ClearFlag(iMask);
  return IsFlagSet(iMask) != 0;
}

bool ZuZuspTrafo::SetActive(bool bActive) { return SetFlagTo(eZuspFlagActive, bActive); }

bool ZuZuspTrafo::SetRegionActive(bool bActive) {
  return SetFlagTo(eZuspFlagRegionActive, bActive);
}

bool ZuZuspTrafo::SetDistortCameraFlag(bool bDistortion) {
  return SetFlagTo(eZuspFlagDistortion, bDistortion);
}

ZuZuspTrafo* ZuZuspTrafo::First(int iMask) { return zu::internal::FlagFirst(this, iMask); }

ZuZuspTrafo* ZuZuspTrafo::Next(int iMask) { return zu::internal::FlagNext(this, iMask); }

ZuZuspTrafo* ZuZuspTrafo::Previous(int iMask) { return zu::internal::FlagPrevious(this, iMask); }

std::ostream& ZuZuspTrafo::Write(std::ostream& stream) const { return stream; }

unsigned int IsZuspActive(const ZuObject* pTrafo) {
  return static_cast<const ZuZuspTrafo*>(pTrafo)->IsActive() ? 1 : 0;
}

unsigned int HasZuspRegion(const ZuObject* pTrafo) {
  return static_cast<const ZuZuspTrafo*>(pTrafo)->HasRegion() ? 1 : 0;
}
