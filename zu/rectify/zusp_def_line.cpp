#include "zu/rectify/zusp_def_line.h"

#include <ostream>

#include "zu/foundation/internal/classic_stream.h"
#include "zu/foundation/internal/item_writer.h"
#include "zu/foundation/reader_object.h"
#include "zu/foundation/writer.h"

ZU_INSTANTIATE_LIST(ZuZuspDefLine);
ZU_INSTANTIATE_LIST(ZuZuspDefLineConstraint);

// 1 4 7 0 0.0
int ZuZuspDefLine::Read(ZuReaderObject* pObject) {
  SetId(pObject->TakeId());
  m_uBikoId1 = pObject->TakeId();
  m_uBikoId2 = pObject->TakeId();
  m_iXAxis = pObject->TakeInt();
  m_dValue = pObject->TakeNumber();
  return 1;
}

std::ostream& ZuZuspDefLine::Write(std::ostream& stream) const {
  const zu::internal::ClassicStream classic(stream);
  return stream << w8 << GetId() << w8 << m_uBikoId1 << w8 << m_uBikoId2 << w8 << m_iXAxis << w8
                << m_dValue;
}

// 1 2 1 0.0
int ZuZuspDefLineConstraint::Read(ZuReaderObject* pObject) {
  m_uLineId1 = pObject->TakeId();
  m_uLineId2 = pObject->TakeId();
  m_eType = static_cast<ConstraintType>(pObject->TakeInt());
  m_dValue = pObject->TakeNumber();
  return 1;
}

std::ostream& ZuZuspDefLineConstraint::Write(std::ostream& stream) const {
  const zu::internal::ClassicStream classic(stream);
  return stream << w8 << m_uLineId1 << w8 << m_uLineId2 << w8 << static_cast<int>(m_eType) << w8
                << m_dValue;
}

std::ostream& ZuZuspDefLine::Export(std::ostream& stream) const {
  zu::internal::WriteValues(stream, GetId(), m_uBikoId1, m_uBikoId2, m_iXAxis, m_dValue);
  return stream;
}

std::ostream& ZuZuspDefLineConstraint::Export(std::ostream& stream) const {
  zu::internal::WriteValues(stream, m_uLineId1, m_uLineId2, static_cast<int>(m_eType), m_dValue);
  return stream;
}

ZuZuspDefLine* ZuZuspDefLineList::AddObject(ZuReaderObject* pObject) {
  return Add(new ZuZuspDefLine(pObject));
}

ZuZuspDefLineConstraint* ZuZuspDefLineConstraintList::AddObject(ZuReaderObject* pObject) {
  return Add(new ZuZuspDefLineConstraint(pObject));
}
