// Points along a base line: stations (feet) and offsets, and chains of right angles.
//
//            o p                         station: from the start along the line
//            |  offset > 0               offset: positive to the left
//   start ---+-------------- end
//         station
//
// Where the line was measured by tape as well, the stations and offsets are those of the tape: they
// are put to the line by its length over the measured one.
#pragma once

#include <vector>

#include "zu/cad/cad_fit.h"
#include "zu/export.h"
#include "zu/numerics/line2d.h"

struct ZuCadOffset {
  double dStation = 0.0;
  double dOffset = 0.0;
};

// A leg of a chain: turns first, then runs on.
struct ZuCadLeg {
  int iTurn = 0;  // quarter turns to the left: 1 left, -1 right, 0 straight on, 2 back
  double dLength = 0.0;
};

struct ZuCadChain {
  eCadStatus eStatus = eCadTooFew;
  std::vector<ZuPoint2d> points;  // the ends of the legs
  // Of a closed chain, before it was put between start and end: the end as the legs tell it less
  // the point known, along the base line and to its left; then the scale and the turn [rad] that
  // the legs got.
  double dAlong = 0.0, dAcross = 0.0;
  double dScale = 1.0, dTurn = 0.0;
};

class ZU_API ZuCadOrthoLine {
 public:
  // dMeasured: the length of the line by tape; 0: not measured. eCadCoincident; eCadNotFinite, also
  // a measured length below 0.
  ZuCadOrthoLine(const ZuPoint2d& start, const ZuPoint2d& end, double dMeasured = 0.0);

  eCadStatus GetStatus() const { return m_eStatus; }
  bool IsValid() const { return m_eStatus == eCadOk; }
  const ZuLine2d& GetLine() const { return m_line; }
  // Length of the line over the measured one; 1 where it was not measured.
  double GetScale() const { return m_dScale; }

  // Valid lines only. Station and offset of p; where wanted its foot on the line.
  ZuCadOffset Offset(const ZuPoint2d& p, ZuPoint2d* pFoot = nullptr) const;
  ZuPoint2d Point(const ZuCadOffset& offset) const;

  // The points of a chain of right angles that starts at the start, in the direction of the line.
  // With a known end the chain is put between start and end by a similarity about its start.
  // eCadTooFew without legs; eCadNotFinite; eCadCoincident: a closed chain that ends where it
  // starts.
  ZuCadChain Chain(const std::vector<ZuCadLeg>& legs, const ZuPoint2d* pEnd = nullptr) const;

 protected:
  ZuLine2d m_line;
  eCadStatus m_eStatus = eCadOk;
  double m_dScale = 1.0;
};
