// A stretch between two point records. Their ids are 0.
#pragma once

#include "zu/export.h"
#include "zu/points/point.h"

class ZU_API ZuLine {
 public:
  ZuLine(double dX1, double dY1, double dZ1, double dX2, double dY2, double dZ2);

  const ZuPoint& Start() const { return m_ptStart; }
  const ZuPoint& End() const { return m_ptEnd; }
  ZuPoint& Start() { return m_ptStart; }
  ZuPoint& End() { return m_ptEnd; }

  // Exchanges the points when the start's x or y is greater than the end's.
  //
  // Required: either coordinate alone exchanges. A falling stretch is exchanged by every call, and
  // the segment test counts on that order of its ends.
  void Adjust();

 protected:
  ZuPoint m_ptStart;
  ZuPoint m_ptEnd;
};
