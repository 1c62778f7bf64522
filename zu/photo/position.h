// A place on a screen [pixels].
#pragma once

#include <iosfwd>

#include "zu/export.h"
#include "zu/foundation/link.h"

class ZuReaderObject;

class ZU_API ZuPosition : public LinkHdl {
 public:
  ZuPosition() = default;
  ZuPosition(double x, double y) : m_dX(x), m_dY(y) {}

  // x and y, from the token in hand on. Returns 1.
  int Read(ZuReaderObject* pObject);
  // "x y" as Read takes it to the last bit.
  std::ostream& Export(std::ostream& stream) const;

 public:
  double m_dX = 0.0;
  double m_dY = 0.0;
};
