// The measurements of one photo, met with a plane one by one.
#pragma once

#include "zu/photo/biko_transform.h"
#include "zu/photo/photo.h"
#include "zu/project/plane_measurement.h"

namespace zu::internal {

class PhotoRun {
 public:
  PhotoRun(ZuPhoto& photo, const ZuPlane& plane, bool bFlip, bool bExact);

  // True and the point met; else why not. pKnown may be null.
  bool Meet(const ZuPoint& pixel, const ZuPoint* pKnown, ZuMeasuredPoint* pPoint,
            eZuMeasureRefusal* peWhy);

 private:
  bool Adjust(ZuPoint* p) const;
  void Compare(const ZuPoint& known, const ZuPoint& pixel, const ZuPoint& adjusted,
               ZuMeasuredPoint* p) const;
  ZuPoint Slope(const ZuPoint& pixel, double dx, double dy) const;

  ZuPhoto& m_photo;
  const ZuPlane& m_plane;
  bool m_bFlip, m_bExact;
  double m_dReach;  // of the camera's model about its principal point [mm]
  ZuBikoTransform m_project;
};

const char* RefusalText(eZuMeasureRefusal eWhy);

}  // namespace zu::internal
