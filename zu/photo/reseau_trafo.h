// A plane transformation of image coordinates, as a photo stores it, with the name of the reseau or
// camera type it was computed for.
#pragma once

#include <iosfwd>

#include "zu/export.h"
#include "zu/foundation/object.h"
#include "zu/transform/trafo2d.h"

class ZU_API ZuReseauTrafo : public ZuTrafo2d, public ZuObject {
 public:
  ZuReseauTrafo() = default;
  ZuReseauTrafo(const ZuReseauTrafo&) = default;
  explicit ZuReseauTrafo(const ZuTrafo2d& trafo) : ZuTrafo2d(trafo) {}
  ZuReseauTrafo& operator=(const ZuReseauTrafo&) = default;

  // Those of ZuTrafo2d; id and name are in no current file form.
  int Read(ZuReaderObject* pObject) { return ZuTrafo2d::Read(pObject); }
  std::ostream& Write(std::ostream& stream) const { return ZuTrafo2d::Write(stream); }
  // The older form of ZuTrafo2d, then a name. Returns 1.
  int ReadV50(ZuReaderObject* pObject);
};
