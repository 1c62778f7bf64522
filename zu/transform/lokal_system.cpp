#include "zu/transform/lokal_system.h"

#include <ostream>

#include "zu/foundation/internal/classic_stream.h"
#include "zu/foundation/internal/item_writer.h"
#include "zu/foundation/reader_object.h"
#include "zu/foundation/writer.h"
#include "zu/points/point_list.h"

namespace {

struct ScalePair {
  unsigned int uIdA, uIdB;
  double dDistance;

  bool IsComplete() const { return uIdA != 0 && uIdB != 0; }
};

struct ScalePairs {
  explicit ScalePairs(const ZuLokalSystem& s)
      : pairs{{s.m_uScale1IdA, s.m_uScale1IdB, s.m_dScale1Dist},
              {s.m_uScale2IdA, s.m_uScale2IdB, s.m_dScale2Dist},
              {s.m_uScale3IdA, s.m_uScale3IdB, s.m_dScale3Dist}} {}
  const ScalePair* begin() const { return pairs; }
  const ScalePair* end() const { return pairs + 3; }

  ScalePair pairs[3];
};

// Id 0 is no point, whatever the list holds.
bool HasPoint(const ZuPointList& list, unsigned int uId) {
  return uId != 0 && list.Find(uId) != nullptr;
}

// A scale point that is not defined need not be there.
bool HasScalePoint(const ZuPointList& list, unsigned int uId) {
  return uId == 0 || HasPoint(list, uId);
}

bool HasAllPoints(const ZuLokalSystem& system, const ZuPointList& list, bool bStrict) {
  for (const unsigned int uId : {system.m_uIdA, system.m_uIdB, system.m_uIdC, system.m_uIdOrigin}) {
    if (!HasPoint(list, uId)) return false;
  }
  if (!bStrict) return true;
  for (const ScalePair& pair : ScalePairs(system)) {
    if (!HasScalePoint(list, pair.uIdA) || !HasScalePoint(list, pair.uIdB)) return false;
  }
  return true;
}

}  // namespace

void ZuLokalSystem::AdjustPlanebyAxisMode() {
  if (m_iAxisMode == eLokalAxisX && m_iPlaneMode == eLokalPlaneYZ) {
    m_iPlaneMode = eLokalPlaneXY;
  } else if (m_iAxisMode == eLokalAxisY && m_iPlaneMode == eLokalPlaneXZ) {
    m_iPlaneMode = eLokalPlaneXY;
  } else if (m_iAxisMode == eLokalAxisZ && m_iPlaneMode == eLokalPlaneXY) {
    m_iPlaneMode = eLokalPlaneYZ;
  }
}

bool ZuLokalSystem::IsUsedInDef(unsigned int uId) const {
  return uId == m_uIdA || uId == m_uIdB || uId == m_uIdC;
}

bool ZuLokalSystem::Suggest(const ZuPointList* pList) {
  const ZuPoint* p = pList != nullptr ? pList->First() : nullptr;
  if (p == nullptr) return false;
  m_uIdA = m_uIdOrigin = p->GetId();
  p = p->Next();
  if (p == nullptr) return false;
  m_uIdB = p->GetId();
  p = p->Next();
  if (p == nullptr) return false;
  m_uIdC = p->GetId();
  return true;
}

bool ZuLokalSystem::IsValid(eTrafo3DStatus& eStatus, const ZuPointList* pList, bool bStrict) const {
  const ScalePairs pairs(*this);
  const auto fail = [&eStatus](eTrafo3DStatus eReason) {
    eStatus = eReason;
    return false;
  };
  for (const ScalePair& pair : pairs) {
    if (pair.uIdA == pair.uIdB && pair.uIdA != 0) return fail(eTrafo3DBadDefinition);
  }
  if (m_uIdA == m_uIdB || m_uIdA == m_uIdC || m_uIdB == m_uIdC) return fail(eTrafo3DNoSolution);
  for (const ScalePair& pair : pairs) {
    if (pair.IsComplete() && pair.dDistance == 0.0) return fail(eTrafo3DScaleUndefined);
  }
  if (pList != nullptr && !HasAllPoints(*this, *pList, bStrict)) return fail(eTrafo3DPointMissing);
  if (bStrict) {
    bool bAny = false;
    for (const ScalePair& pair : pairs) bAny = bAny || pair.uIdA != 0 || pair.uIdB != 0;
    if (!bAny) return fail(eTrafo3DScaleUndefined);
  }
  return true;
}

// 1 101 102  4 103  101 0.0 0.0 0.0  101 104 5.25  0 0 0.0  0 0 0.0
int ZuLokalSystem::Read(ZuReaderObject* pObject) {
  m_iAxisMode = pObject->TakeInt();
  m_uIdA = pObject->TakeId();
  m_uIdB = pObject->TakeId();
  m_iPlaneMode = pObject->TakeInt();
  m_uIdC = pObject->TakeId();
  m_uIdOrigin = pObject->TakeId();
  for (double* pdOffset : {&m_dOffsetX, &m_dOffsetY, &m_dOffsetZ}) {
    *pdOffset = pObject->TakeValue();
  }
  const struct {
    unsigned int *puIdA, *puIdB;
    double* pdDistance;
  } pairs[] = {{&m_uScale1IdA, &m_uScale1IdB, &m_dScale1Dist},
               {&m_uScale2IdA, &m_uScale2IdB, &m_dScale2Dist},
               {&m_uScale3IdA, &m_uScale3IdB, &m_dScale3Dist}};
  for (const auto& pair : pairs) {
    *pair.puIdA = pObject->TakeId();
    *pair.puIdB = pObject->TakeId();
    *pair.pdDistance = pObject->TakeValue();
  }
  return 1;
}

std::ostream& ZuLokalSystem::Write(std::ostream& stream) const {
  const zu::internal::ClassicStream classic(stream);
  stream << m_iAxisMode << ' ' << m_uIdA << ' ' << m_uIdB << Zuendl;
  stream << m_iPlaneMode << ' ' << m_uIdC << Zuendl;
  stream << p16 << m_uIdOrigin << w16 << m_dOffsetX << w16 << m_dOffsetY << w16 << m_dOffsetZ;
  for (const ScalePair& pair : ScalePairs(*this)) {
    stream << Zuendl << pair.uIdA << ' ' << pair.uIdB << w16 << pair.dDistance;
  }
  return stream;
}

std::ostream& ZuLokalSystem::Export(std::ostream& stream) const {
  using zu::internal::WriteValues;
  WriteValues(stream, m_iAxisMode, m_uIdA, m_uIdB);
  WriteValues(stream << Zuendl, m_iPlaneMode, m_uIdC);
  WriteValues(stream << Zuendl, m_uIdOrigin, m_dOffsetX, m_dOffsetY, m_dOffsetZ);
  for (const ScalePair& pair : ScalePairs(*this)) {
    WriteValues(stream << Zuendl, pair.uIdA, pair.uIdB, pair.dDistance);
  }
  return stream;
}
