#include "zu/rectify/zusp_parallel_def.h"

#include <ostream>

#include "zu/foundation/internal/item_writer.h"
#include "zu/foundation/reader_object.h"
#include "zu/foundation/writer.h"
#include "zu/numerics/line3d.h"
#include "zu/points/point_list.h"

namespace {

// The last point and the one before it; null below two points.
struct LastTwo {
  explicit LastTwo(const ZuPointList* pPoints)
      : pLast(pPoints != nullptr ? pPoints->Last() : nullptr),
        pPrevious(pLast != nullptr ? pLast->Previous() : nullptr) {}
  explicit operator bool() const { return pPrevious != nullptr; }

  const ZuPoint *pLast, *pPrevious;
};

// Deletes the nodes of a list for which isLost holds.
template <class List, class Test>
void DeleteWhere(List& list, Test isLost) {
  for (auto* p = list.First(); p != nullptr;) {
    auto* pNext = p->Next();
    if (isLost(*p)) delete list.Subtract(p);
    p = pNext;
  }
}

}  // namespace

ZuZuspParallelDef& ZuZuspParallelDef::operator=(const ZuZuspParallelDef& other) {
  if (this == &other) return *this;
  m_pPoints = other.m_pPoints;
  m_lines = other.m_lines;
  m_constraints = other.m_constraints;
  return *this;
}

void ZuZuspParallelDef::Clear() {
  m_lines.Destroy();
  m_constraints.Destroy();
}

void ZuZuspParallelDef::CheckAndRepair() {
  if (m_pPoints == nullptr) return;
  DeleteWhere(m_lines, [this](const ZuZuspDefLine& line) {
    return m_pPoints->Find(line.m_uBikoId1) == nullptr ||
           m_pPoints->Find(line.m_uBikoId2) == nullptr;
  });
  DeleteWhere(m_constraints, [this](const ZuZuspDefLineConstraint& constraint) {
    return m_lines.Find(constraint.m_uLineId1) == nullptr ||
           m_lines.Find(constraint.m_uLineId2) == nullptr;
  });
}

bool ZuZuspParallelDef::HasXAxisDef() const {
  for (const ZuZuspDefLine* p = m_lines.First(); p != nullptr; p = p->Next()) {
    if (p->m_iXAxis != 0) return true;
  }
  return false;
}

bool ZuZuspParallelDef::HasDefLineFromBikos(unsigned int a, unsigned int b, bool bBoth) const {
  for (const ZuZuspDefLine* p = m_lines.First(); p != nullptr; p = p->Next()) {
    if (bBoth ? p->HasBothId(a, b) : p->HasEitherId(a, b)) return true;
  }
  return false;
}

bool ZuZuspParallelDef::HasDefLineWithLastBikos() const {
  const LastTwo last(m_pPoints);
  return last && HasDefLineFromBikos(last.pPrevious->GetId(), last.pLast->GetId(), false);
}

bool ZuZuspParallelDef::IsDefLineValid(unsigned int a, unsigned int b) const {
  return m_pPoints != nullptr && a != b && m_pPoints->Find(a) != nullptr &&
         m_pPoints->Find(b) != nullptr && !HasDefLineFromBikos(a, b, true);
}

ZuZuspDefLine* ZuZuspParallelDef::AppendLine(unsigned int a, unsigned int b) {
  const unsigned int uId = m_lines.GetFreeId(0);
  ZuZuspDefLine* pLine = m_lines.Add(new ZuZuspDefLine(a, b));
  pLine->SetId(uId);
  return pLine;
}

ZuZuspDefLine* ZuZuspParallelDef::MakeDefLine(unsigned int a, unsigned int b) {
  return IsDefLineValid(a, b) ? AppendLine(a, b) : nullptr;
}

ZuZuspDefLine* ZuZuspParallelDef::MakeDefLineFromLastTwoBikos() {
  const LastTwo last(m_pPoints);
  if (!last) return nullptr;
  const unsigned int a = last.pPrevious->GetId(), b = last.pLast->GetId();
  return HasDefLineFromBikos(a, b, true) ? nullptr : MakeDefLine(a, b);
}

bool ZuZuspParallelDef::HasConstraintDef(unsigned int uLine1, unsigned int uLine2, bool bBoth,
                                         ConstraintType eType) const {
  for (const ZuZuspDefLineConstraint* p = m_constraints.First(); p != nullptr; p = p->Next()) {
    const bool bIds = bBoth ? p->HasBothId(uLine1, uLine2) : p->HasEitherId(uLine1, uLine2);
    if (bIds && p->IsConstraint(eType)) return true;
  }
  return false;
}

bool ZuZuspParallelDef::HasConstraintDefFromLastTwoLines(ConstraintType eType) const {
  const ZuZuspDefLine* pLast = m_lines.Last();
  const ZuZuspDefLine* pPrevious = pLast != nullptr ? pLast->Previous() : nullptr;
  return pPrevious != nullptr && HasConstraintDef(pPrevious->GetId(), pLast->GetId(), false, eType);
}

bool ZuZuspParallelDef::IsConstraintDefValid(unsigned int uLine1, unsigned int uLine2,
                                             ConstraintType eType) const {
  return uLine1 != uLine2 && m_lines.Find(uLine1) != nullptr && m_lines.Find(uLine2) != nullptr &&
         !HasConstraintDef(uLine1, uLine2, true, eType);
}

ZuZuspDefLineConstraint* ZuZuspParallelDef::AppendConstraint(unsigned int uLine1,
                                                             unsigned int uLine2,
                                                             ConstraintType eType) {
  const unsigned int uId = m_constraints.GetFreeId(0);
  ZuZuspDefLineConstraint* p =
      m_constraints.Add(new ZuZuspDefLineConstraint(uLine1, uLine2, eType, 0.0));
  p->SetId(uId);
  return p;
}

ZuZuspDefLineConstraint* ZuZuspParallelDef::MakeConstraintDef(unsigned int uLine1,
                                                              unsigned int uLine2,
                                                              ConstraintType eType) {
  if (!IsConstraintDefValid(uLine1, uLine2, eType)) return nullptr;
  return AppendConstraint(uLine1, uLine2, eType);
}

ZuZuspDefLineConstraint* ZuZuspParallelDef::MakeConstraintDefFromLastTwoDefLines(
    ConstraintType eType) {
  const ZuZuspDefLine* pLast = m_lines.Last();
  const ZuZuspDefLine* pPrevious = pLast != nullptr ? pLast->Previous() : nullptr;
  if (pPrevious == nullptr) return nullptr;
  if (HasConstraintDef(pPrevious->GetId(), pLast->GetId(), true, eType)) return nullptr;
  return AppendConstraint(pPrevious->GetId(), pLast->GetId(), eType);
}

bool ZuZuspParallelDef::MakeLastTwoParallelConstraintsPerpendicular() {
  const ZuZuspDefLineConstraint* pLast = m_constraints.Last();
  const ZuZuspDefLineConstraint* pPrevious = pLast != nullptr ? pLast->Previous() : nullptr;
  if (pPrevious == nullptr || !pLast->IsParallel() || !pPrevious->IsParallel()) return false;
  for (const unsigned int uFirst : {pPrevious->m_uLineId1, pPrevious->m_uLineId2}) {
    for (const unsigned int uSecond : {pLast->m_uLineId1, pLast->m_uLineId2}) {
      MakeConstraintDef(uFirst, uSecond, eConstraintPerpendicular);
    }
  }
  return true;
}

bool ZuZuspParallelDef::GetLine(ZuPoint& p1, ZuPoint& p2, const ZuZuspDefLine* pLine) const {
  if (pLine == nullptr || m_pPoints == nullptr) return false;
  const ZuPoint* pFirst = m_pPoints->Find(pLine->m_uBikoId1);
  const ZuPoint* pSecond = m_pPoints->Find(pLine->m_uBikoId2);
  if (pFirst == nullptr || pSecond == nullptr) return false;
  p1 = *pFirst;
  p2 = *pSecond;
  return true;
}

bool ZuZuspParallelDef::GetLine(ZuLine3d& line, const ZuZuspDefLine* pLine) const {
  ZuPoint p1, p2;
  if (!GetLine(p1, p2, pLine)) return false;
  line.getStart() = ZuPoint3d(p1.m_dX, p1.m_dY, p1.m_dZ);
  line.setEnd(ZuPoint3d(p2.m_dX, p2.m_dY, p2.m_dZ));
  return true;
}

bool ZuZuspParallelDef::GetConstraintLine(ZuPoint& p1, ZuPoint& p2,
                                          const ZuZuspDefLineConstraint* pConstraint) const {
  if (pConstraint == nullptr) return false;
  ZuPoint a1, a2, b1, b2;
  if (!GetLine(a1, a2, m_lines.Find(pConstraint->m_uLineId1)) ||
      !GetLine(b1, b2, m_lines.Find(pConstraint->m_uLineId2))) {
    return false;
  }
  p1 = a1 % a2;
  p2 = b1 % b2;
  return true;
}

// { DEFLINE { 1 4 7 0 0 } CONSTRAINT { 1 2 1 0 } }
int ZuZuspParallelDef::Read(ZuReaderObject* pObject) {
  ZuReaderObject line("DEFLINE", Link(&m_lines, &ZuZuspDefLineList::AddObject));
  ZuReaderObject constraint("CONSTRAINT",
                            Link(&m_constraints, &ZuZuspDefLineConstraintList::AddObject));
  pObject->RegisterObject(line);
  pObject->RegisterObject(constraint);
  pObject->DoProcess();
  return 1;
}

std::ostream& ZuZuspParallelDef::Write(std::ostream& stream) const {
  for (const ZuZuspDefLine* p = m_lines.First(); p != nullptr; p = p->Next()) {
    stream << s12 << "DEFLINE" << w4 << ZuBeginBlock;
    p->Write(stream) << ZuEndBlock << Zuendl;
  }
  for (const ZuZuspDefLineConstraint* p = m_constraints.First(); p != nullptr; p = p->Next()) {
    stream << s12 << "CONSTRAINT" << w4 << ZuBeginBlock;
    p->Write(stream) << ZuEndBlock << Zuendl;
  }
  return stream;
}

std::ostream& ZuZuspParallelDef::Export(std::ostream& stream) const {
  zu::internal::ItemWriter items(stream);
  for (const ZuZuspDefLine* p = m_lines.First(); p != nullptr; p = p->Next()) {
    items.Block("DEFLINE", [p](std::ostream& os) { p->Export(os); });
  }
  for (const ZuZuspDefLineConstraint* p = m_constraints.First(); p != nullptr; p = p->Next()) {
    items.Block("CONSTRAINT", [p](std::ostream& os) { p->Export(os); });
  }
  return stream;
}
