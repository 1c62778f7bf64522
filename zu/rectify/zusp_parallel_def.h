// The definition of a rectification by lines: which measured lines are parallel in the object,
// which are perpendicular. It manages and checks the two lists; matrices are not computed here.
#pragma once

#include <iosfwd>

#include "zu/export.h"
#include "zu/foundation/link.h"
#include "zu/rectify/zusp_def_line.h"

class ZuLine3d;
class ZuPoint;
class ZuPointList;
class ZuReaderObject;

class ZU_API ZuZuspParallelDef : public LinkHdl {
 public:
  // The image points that lines refer to; not owned, must outlive this.
  explicit ZuZuspParallelDef(ZuPointList* pPoints = nullptr) : m_pPoints(pPoints) {}
  ZuZuspParallelDef(const ZuZuspParallelDef& other) = default;
  virtual ~ZuZuspParallelDef() = default;
  // Takes pointer and both lists.
  ZuZuspParallelDef& operator=(const ZuZuspParallelDef& other);

  void SetPoints(ZuPointList* pPoints) { m_pPoints = pPoints; }
  ZuPointList* GetPoints() const { return m_pPoints; }
  ZuZuspDefLineList& GetLines() { return m_lines; }
  const ZuZuspDefLineList& GetLines() const { return m_lines; }
  ZuZuspDefLineConstraintList& GetConstraints() { return m_constraints; }
  const ZuZuspDefLineConstraintList& GetConstraints() const { return m_constraints; }

  // There is a line; constraints alone do not count.
  bool HasData() const { return !m_lines.IsEmpty(); }
  void Clear();
  // Deletes lines whose points are gone, then constraints whose lines are. Nothing without points.
  void CheckAndRepair();
  bool HasXAxisDef() const;

  // Some line has both ids, or with bBoth false either.
  bool HasDefLineFromBikos(unsigned int a, unsigned int b, bool bBoth) const;
  // Required: one id in common with the last two points is enough here; MakeDefLineFromLastTwoBikos
  // asks for both. The one warns of a line that continues, the other only of a repeated one.
  bool HasDefLineWithLastBikos() const;
  // Two different points of the list that no line joins yet.
  bool IsDefLineValid(unsigned int a, unsigned int b) const;
  // Appends a line, with the list's next free id; null where it is not valid.
  ZuZuspDefLine* MakeDefLine(unsigned int a, unsigned int b);
  // From the last point but one to the last. Null below two points, or where a line joins them.
  ZuZuspDefLine* MakeDefLineFromLastTwoBikos();

  // The first constraint that has both line ids, or with bBoth false either, and the type unless
  // that is eConstraintNone.
  bool HasConstraintDef(unsigned int uLine1, unsigned int uLine2, bool bBoth,
                        ConstraintType eType) const;
  // Required: as for lines, one line id in common is enough.
  bool HasConstraintDefFromLastTwoLines(ConstraintType eType) const;
  // Two different lines without a constraint of that type.
  bool IsConstraintDefValid(unsigned int uLine1, unsigned int uLine2, ConstraintType eType) const;
  // Appends a constraint with the next free id; null where it is not valid.
  ZuZuspDefLineConstraint* MakeConstraintDef(unsigned int uLine1, unsigned int uLine2,
                                             ConstraintType eType);
  ZuZuspDefLineConstraint* MakeConstraintDefFromLastTwoDefLines(ConstraintType eType);
  // Declares the lines of the last two constraints, both parallel ones, perpendicular to each other
  // across the two; pairs that are not valid are left out. False where they are not such.
  bool MakeLastTwoParallelConstraintsPerpendicular();

  // The end points of a line; false, outputs untouched, for null or where an end is missing.
  bool GetLine(ZuPoint& p1, ZuPoint& p2, const ZuZuspDefLine* pLine) const;
  bool GetLine(ZuLine3d& line, const ZuZuspDefLine* pLine) const;
  // The midpoints of a constraint's two lines, to draw it by.
  bool GetConstraintLine(ZuPoint& p1, ZuPoint& p2,
                         const ZuZuspDefLineConstraint* pConstraint) const;

  // DEFLINE and CONSTRAINT blocks, any number of each.
  int Read(ZuReaderObject* pObject);
  // All lines, then all constraints.
  std::ostream& Write(std::ostream& stream) const;
  // The same, a block a line, as Read takes it to the last bit.
  std::ostream& Export(std::ostream& stream) const;

 protected:
  ZuPointList* m_pPoints;
  ZuZuspDefLineList m_lines;
  ZuZuspDefLineConstraintList m_constraints;

 private:
  ZuZuspDefLine* AppendLine(unsigned int a, unsigned int b);
  ZuZuspDefLineConstraint* AppendConstraint(unsigned int uLine1, unsigned int uLine2,
                                            ConstraintType eType);
};
