// Joins two measured lines as a drawing tool does when it trims or extends them to a corner.
//
//            b1
//            |
//            |
//   a1 ----- + . . . a2
//            .
//            b2
//
// Each line is given by two points. The match points are where the lines come closest, each on its
// own line and moved on by its extension; the kept ends are those farther from the meeting point
// (here a1 and b1).
//
// The constructor computes, the object then answers and does not change.
#pragma once

#include "zu/export.h"
#include "zu/numerics/point3d.h"

// The space in which the lines are matched. Any other value acts like eMatchMode3d.
enum eMatchMode : int {
  eMatchMode3d = 0,
  eMatchModeXY = 1,  // Z left out
  eMatchModeXZ = 2,  // Y left out
  eMatchModeYZ = 3,  // X left out
};

class ZU_API ZuCad2LinesMatch {
 public:
  // Line 1 through a1 and a2, line 2 through b1 and b2; parallelAngle in degrees.
  //
  // In a flat mode the left-out coordinate of kept end and line is that of a1 (b1), and both match
  // points take the mean of these two; those of a2 and b2 do not count.
  //
  // Lines at parallelAngle or less, opposed ones too, have no corner: their nearest ends are joined
  // at the middle of these, and the extensions do not apply.
  ZuCad2LinesMatch(const ZuPoint3d& a1, const ZuPoint3d& a2, const ZuPoint3d& b1,
                   const ZuPoint3d& b2, double extend1, double extend2, double parallelAngle,
                   eMatchMode mode);
  ZuCad2LinesMatch(const ZuCad2LinesMatch&) = default;
  ZuCad2LinesMatch& operator=(const ZuCad2LinesMatch&) = default;
  virtual ~ZuCad2LinesMatch() = default;

  // False: no solution, all results at the origin. So it is for a line of two equal points.
  bool IsValid() const { return m_bValid; }
  bool IsParallel() const { return m_bParallel; }

  // Of the match points.
  double Distance() const { return m_ptMatch1.Distance(m_ptMatch2); }
  ZuPoint3d MiddlePoint() const { return m_ptMatch1.MiddlePoint(m_ptMatch2); }

  // Rating of the gap: 0 an exact meeting (or a trimmed line of length 0), 1 at most 5 % of the
  // shorter trimmed line, 2 more.
  int ValueDistance() const;

  const ZuPoint3d& Keep1() const { return m_ptKeep1; }
  const ZuPoint3d& Match1() const { return m_ptMatch1; }
  const ZuPoint3d& Keep2() const { return m_ptKeep2; }
  const ZuPoint3d& Match2() const { return m_ptMatch2; }

 protected:
  ZuPoint3d m_ptLine1A;
  ZuPoint3d m_ptLine1B;
  ZuPoint3d m_ptLine2A;
  ZuPoint3d m_ptLine2B;
  double m_dExtend1;
  double m_dExtend2;
  ZuPoint3d m_ptKeep1;
  ZuPoint3d m_ptMatch1;
  ZuPoint3d m_ptKeep2;
  ZuPoint3d m_ptMatch2;
  bool m_bValid = false;
  bool m_bParallel = false;

 private:
  bool Calc(double sinLimit);
  bool CalcSkew(const ZuVector3d& d1, const ZuVector3d& d2, const ZuVector3d& n);
  bool CalcParallel(const ZuVector3d& d1, const ZuVector3d& d2);
};
