// Lines measured in an image and what is known of them in the object: the elements of a definition
// by parallels (zusp_parallel_def.h). A line joins two measured image points by their ids, a
// constraint two lines by theirs.
#pragma once

#include <iosfwd>

#include "zu/export.h"
#include "zu/foundation/link.h"
#include "zu/foundation/list.h"

class ZuReaderObject;

// The values stand in project files.
enum ConstraintType : int {
  eConstraintNone = 0,  // asks for any type; a constraint of this type is invalid
  eConstraintParallel = 1,
  eConstraintPerpendicular = 2
};

class ZU_API ZuZuspDefLine : public ZuListnode {
 public:
  ZuZuspDefLine(unsigned int uId1, unsigned int uId2) : m_uBikoId1(uId1), m_uBikoId2(uId2) {}
  // Reads itself; the parser's exception passes.
  explicit ZuZuspDefLine(ZuReaderObject* pObject) { Read(pObject); }
  ZuZuspDefLine(const ZuZuspDefLine& other) = default;
  ZuZuspDefLine& operator=(const ZuZuspDefLine& other) = default;

  bool HasId(unsigned int uId) const { return uId == m_uBikoId1 || uId == m_uBikoId2; }
  bool HasBothId(unsigned int a, unsigned int b) const { return HasId(a) && HasId(b); }
  bool HasEitherId(unsigned int a, unsigned int b) const { return HasId(a) || HasId(b); }

  // id, two point ids, X axis mark, value; four integers and a number from the token in hand on.
  int Read(ZuReaderObject* pObject);
  std::ostream& Write(std::ostream& stream) const;
  // The same values without columns, as Read takes them to the last bit.
  std::ostream& Export(std::ostream& stream) const;

  ZuZuspDefLine* Next() const { return static_cast<ZuZuspDefLine*>(m_pNext); }
  ZuZuspDefLine* Previous() const { return static_cast<ZuZuspDefLine*>(m_pPrev); }

 public:
  unsigned int m_uBikoId1 = 0;  // end points
  unsigned int m_uBikoId2 = 0;
  double m_dValue = 0.0;  // carried along
  int m_iXAxis = 0;       // not 0: the line defines the X axis
  double m_dAux1 = 0.0;   // in no file form
  double m_dAux2 = 0.0;
};

class ZU_API ZuZuspDefLineConstraint : public ZuListnode {
 public:
  using ConstraintType = ::ConstraintType;

  ZuZuspDefLineConstraint(unsigned int uLine1, unsigned int uLine2, ConstraintType eType,
                          double dValue)
      : m_uLineId1(uLine1), m_uLineId2(uLine2), m_eType(eType), m_dValue(dValue) {}
  explicit ZuZuspDefLineConstraint(ZuReaderObject* pObject) { Read(pObject); }
  ZuZuspDefLineConstraint(const ZuZuspDefLineConstraint& other) = default;
  ZuZuspDefLineConstraint& operator=(const ZuZuspDefLineConstraint& other) = default;

  // Of line ids.
  bool HasId(unsigned int uId) const { return uId == m_uLineId1 || uId == m_uLineId2; }
  bool HasBothId(unsigned int a, unsigned int b) const { return HasId(a) && HasId(b); }
  bool HasEitherId(unsigned int a, unsigned int b) const { return HasId(a) || HasId(b); }

  ConstraintType Constraint() const { return m_eType; }
  bool IsConstraint(ConstraintType eType) const {
    return eType == eConstraintNone || eType == m_eType;
  }
  bool IsParallel() const { return m_eType == eConstraintParallel; }
  bool IsValid() const { return m_eType != eConstraintNone; }

  // Two line ids, type, value. Required: the own id is in no file; what is read has id 0.
  int Read(ZuReaderObject* pObject);
  std::ostream& Write(std::ostream& stream) const;
  // The same values without columns, as Read takes them to the last bit.
  std::ostream& Export(std::ostream& stream) const;

  ZuZuspDefLineConstraint* Next() const { return static_cast<ZuZuspDefLineConstraint*>(m_pNext); }
  ZuZuspDefLineConstraint* Previous() const {
    return static_cast<ZuZuspDefLineConstraint*>(m_pPrev);
  }

 public:
  unsigned int m_uLineId1 = 0;
  unsigned int m_uLineId2 = 0;
  ConstraintType m_eType = eConstraintNone;
  double m_dValue = 0.0;  // carried along
};

ZU_DECLARE_LIST(ZuZuspDefLine);
ZU_DECLARE_LIST(ZuZuspDefLineConstraint);

class ZU_API ZuZuspDefLineList : public TZuListHeader<ZuZuspDefLine>, public LinkHdl {
 public:
  using TZuListHeader<ZuZuspDefLine>::operator=;
  // Handler of a keyword: appends the line read. A cut one enters no line.
  ZuZuspDefLine* AddObject(ZuReaderObject* pObject);
};

class ZU_API ZuZuspDefLineConstraintList : public TZuListHeader<ZuZuspDefLineConstraint>,
                                           public LinkHdl {
 public:
  using TZuListHeader<ZuZuspDefLineConstraint>::operator=;
  ZuZuspDefLineConstraint* AddObject(ZuReaderObject* pObject);
};
