// A panorama: a photo whose picture is a sphere or a cylinder about the projection centre,
// unrolled, as a total station's camera or a stitching program makes it.
//
// The image system is that of any photo: x to the right, y up, the middle of the picture at -z.
// With r = |c| the radius of the surface [mm], an adjusted point (x, y) has the image vector
//
//   sphere     (sin l cos p, sin p, -cos l cos p)    l = x / r, p = y / r
//   cylinder   (sin l, y / r, -cos l)                l = x / r
//
// so that c is chosen as width of the picture over the angle that it spans. In object space the
// vector is turned by R, as for every photo; digital and Biko coordinates go through the same
// chain. Rays, intersections with planes, projections and the test of the view are those of
// ZuPhoto, which follow the surface: any code that takes a photo takes a panorama.
#pragma once

#include "zu/export.h"
#include "zu/foundation/list.h"
#include "zu/photo/photo.h"

class ZU_API ZuPhotoVivaPano : public ZuPhoto {
 public:
  using ZuPhoto::ZuPhoto;

  bool IsVivaPanorama() const override { return true; }

  // Values other than sphere and cylinder are a plane.
  eZuPanorama GetPanorama() const { return static_cast<eZuPanorama>(m_iPanorama); }
  void SetPanorama(eZuPanorama eSurface) { m_iPanorama = eSurface; }

  ZuPhotoVivaPano* Next() const { return static_cast<ZuPhotoVivaPano*>(m_pNext); }
};

ZU_DECLARE_LIST(ZuPhotoVivaPano);

class ZU_API ZuVivaPanoList : public TZuListHeader<ZuPhotoVivaPano> {
 public:
  using TZuListHeader<ZuPhotoVivaPano>::operator=;
};
