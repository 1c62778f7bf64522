// What is known of the lines between points of a plane, as lines of text:
//
//   parallel A B C D     the line A to B, the line C to D
//   right    A B C D     at right angles
//   equal    A B C D     of one length
//   ratio    A B C D R   length of A to B over that of C to D
//   length   A B L       length of A to B in the object
//   xaxis    A B         the x axis runs from A to B, its origin is A
//
// Points are named as ZuParseNameLine has it, which leaves comments out.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "zu/export.h"
#include "zu/transform/plane_conditions.h"

struct ZuConditionLine {
  enum eKind : int { eNone, eParallel, eRightAngle, eEqual, eRatio, eLength, eXAxis };

  // Of the lines between four points; false for lengths and the x axis.
  bool IsOfLines() const { return kind >= eParallel && kind <= eRatio; }
  int Points() const { return kind == eNone ? 0 : IsOfLines() ? 4 : 2; }
  // Of the points by their numbers; for IsOfLines alone.
  ZU_API ZuPlaneCondition Condition(const std::array<size_t, 4>& points) const;

  eKind kind = eNone;
  std::array<std::string, 4> points;
  double dValue = 1.0;  // ratio or length
};

// False for a line that is none of these, or whose number is not above 0; an empty one is eNone.
ZU_API bool ZuParseConditionLine(std::string_view line, ZuConditionLine* pLine);
// The line that is read as this one.
ZU_API std::string ZuConditionLineText(const ZuConditionLine& line);
