// The user's definition of a local coordinate system by named points: an axis through two points, a
// plane through a third, an origin point with an offset, and up to three distances that fix the
// scale. It holds no numbers of a solution: ZuTrafo3d::CalcByLocalSystem makes the transformation.
#pragma once

#include <iosfwd>

#include "zu/export.h"
#include "zu/foundation/link.h"
#include "zu/transform/trafo3d.h"

class ZuPointList;
class ZuReaderObject;

// Values of m_iAxisMode and m_iPlaneMode; they stand in project files.
enum eLokalAxis : int { eLokalAxisX = 1, eLokalAxisY = 2, eLokalAxisZ = 3 };
enum eLokalPlane : int { eLokalPlaneXY = 4, eLokalPlaneYZ = 5, eLokalPlaneXZ = 6 };

// Point ids are 0 where there is no point.
class ZU_API ZuLokalSystem : public LinkHdl {
 public:
  ZuLokalSystem() = default;
  ZuLokalSystem(const ZuLokalSystem&) = default;
  virtual ~ZuLokalSystem() = default;
  ZuLokalSystem& operator=(const ZuLokalSystem&) = default;

  // Turns a plane that does not hold the axis into one that does: X with YZ and Y with XZ get XY,
  // Z with XY gets YZ.
  void AdjustPlanebyAxisMode();

  // True for the three points of axis and plane; origin and scale points do not count.
  bool IsUsedInDef(unsigned int uId) const;

  // Takes the first three points of the list: the first becomes A and origin, then B and C. Ids are
  // set as far as points exist; true only if there are three. False for a null list.
  bool Suggest(const ZuPointList* pList);

  // Whether the definition is complete; eStatus is written on failure only: 3 equal ids in a scale
  // pair, 4 equal axis ids, 6 a scale distance of 0.0, 2 a point is not in the list (where one is
  // given; scale points are looked up with bStrict only), 6 no scale point at all with bStrict.
  // The first that applies, in this order.
  bool IsValid(eTrafo3DStatus& eStatus, const ZuPointList* pList, bool bStrict) const;

  // The 18 values of the text form, from the token in hand on. Returns 1.
  int Read(ZuReaderObject* pObject);
  // Six lines, the last without a line end.
  std::ostream& Write(std::ostream& stream) const;
  // The same lines without columns, as Read takes them to the last bit; Write has 16 digits.
  std::ostream& Export(std::ostream& stream) const;

 public:
  int m_iAxisMode = eLokalAxisX;  // the axis that runs from A to B
  unsigned int m_uIdA = 0;
  unsigned int m_uIdB = 0;
  int m_iPlaneMode = eLokalPlaneXY;  // the coordinate plane that holds A, B and C
  unsigned int m_uIdC = 0;
  unsigned int m_uIdOrigin = 0;  // the point that takes the offset coordinates
  double m_dOffsetX = 0.0;       // its coordinates in the local system
  double m_dOffsetY = 0.0;
  double m_dOffsetZ = 0.0;
  unsigned int m_uScale1IdA = 0;  // scale pairs with their true distance, in local units
  unsigned int m_uScale1IdB = 0;
  double m_dScale1Dist = 0.0;
  unsigned int m_uScale2IdA = 0;
  unsigned int m_uScale2IdB = 0;
  double m_dScale2Dist = 0.0;
  unsigned int m_uScale3IdA = 0;
  unsigned int m_uScale3IdB = 0;
  double m_dScale3Dist = 0.0;
};
