#include "zu/foundation/object.h"

#include <charconv>
#include <ostream>

#include "zu/foundation/reader_object.h"

int ZuObject::Compare(const ZuObject* pOther) const { return Compare(pOther->GetId()); }

int ZuObject::Compare(unsigned int uId) const {
  if (uId < m_uId) return -1;
  return m_uId < uId;
}

void ZuObject::Dump() {}

int ZuObject::Read(ZuReaderObject* pObject) {
  m_uId = pObject->TakeId();
  m_strName = pObject->TakeString();
  return 1;
}

std::ostream& ZuObject::Write(std::ostream& stream) const {
  constexpr int kWidth = 4;
  char szId[16];
  const char* pEnd = std::to_chars(szId, szId + sizeof(szId), m_uId).ptr;
  const auto iDigits = static_cast<int>(pEnd - szId);
  stream.put(' ');
  for (int i = iDigits; i < kWidth; ++i) stream.put(' ');
  stream.write(szId, iDigits);
  stream.write(" \"", 2);
  stream.write(m_strName.chars(), static_cast<std::streamsize>(m_strName.length()));
  return stream.put('"');
}
