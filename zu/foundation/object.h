// Base of everything that has an id and a name.
#pragma once

#include <iosfwd>

#include "zu/export.h"
#include "zu/foundation/link.h"
#include "zu/foundation/string.h"

class ZuReaderObject;

class ZU_API ZuObject : public LinkHdl {
 public:
  ZuObject() = default;
  explicit ZuObject(unsigned int uId) : m_uId(uId) {}
  explicit ZuObject(const String& strName) : m_strName(strName) {}
  ZuObject(unsigned int uId, const String& strName) : m_uId(uId), m_strName(strName) {}
  ZuObject(const ZuObject&) = default;
  virtual ~ZuObject() = default;
  ZuObject& operator=(const ZuObject&) = default;

  // Compares the other id with this one, as unsigned numbers: -1 if the other is less, 1 if it is
  // greater, 0 if they are equal.
  //
  // Required: the sign is that of the other id minus this id; the order of lists follows from it.
  virtual int Compare(const ZuObject* pOther) const;
  virtual int Compare(unsigned int uId) const;

  // Shows the object for debugging; nothing here.
  virtual void Dump();

  unsigned int GetId() const { return m_uId; }
  void SetId(unsigned int uId) { m_uId = uId; }
  void OffsetId(unsigned int uOffset) { m_uId += uOffset; }

  const String& GetName() const { return m_strName; }
  void SetName(const String& strName) { m_strName = strName; }

  // Reads an integer token into the id and a string token into the name. It starts with the token
  // in hand and returns 1 with the first token behind the name in hand. The parser's fault leaves
  // it at the first token that does not fit, with the earlier value kept.
  int Read(ZuReaderObject* pObject);

  // Writes ` 12 "name"`: a blank, the id to the right of 4 columns, a blank and the quoted name,
  // without a line end, whatever locale and layout the stream has.
  std::ostream& Write(std::ostream& stream) const;

 protected:
  unsigned int m_uId = 0;
  String m_strName;
};
