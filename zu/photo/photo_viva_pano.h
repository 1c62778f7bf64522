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
// chain.
//
// Required: the operations here stand in place of those of ZuPhoto, which are not virtual: call
// them on the panorama, not through a ZuPhoto.
#pragma once

#include "zu/export.h"
#include "zu/foundation/list.h"
#include "zu/photo/photo.h"

// The surface of the picture; stored in ZuPhoto, which carries it along.
enum eZuPanorama : int {
  eZuPanoramaPlane = 0,  // a picture as any other
  eZuPanoramaSphere = 1,
  eZuPanoramaCylinder = 2
};

class ZU_API ZuPhotoVivaPano : public ZuPhoto {
 public:
  using ZuPhoto::ZuPhoto;

  bool IsVivaPanorama() const override { return true; }

  // Values other than sphere and cylinder are a plane.
  eZuPanorama GetPanorama() const { return static_cast<eZuPanorama>(m_iPanorama); }
  void SetPanorama(eZuPanorama eSurface) { m_iPanorama = eSurface; }
  bool IsRound() const {
    return m_iPanorama == eZuPanoramaSphere || m_iPanorama == eZuPanoramaCylinder;
  }

  // As those of ZuPhoto, told there.
  void CalcRay(ZuLine3d& line, const ZuPoint* pAdjusted) const;
  void CalcRayDirection(ZuLine3d& line, double x, double y) const;
  bool CalcRayEndPoint(double& x, double& y, double& z, const ZuPoint* pAdjusted,
                       const double& dDistance) const;
  bool CalcRayEndPoint(ZuPoint* pResult, const ZuPoint* pAdjusted, const double& dDistance) const;
  // A round picture looks in all directions: a plane that a ray meets behind its start only is met
  // in no point, error 3.
  bool CalcSip(ZuPoint* pResult, const ZuPlane& plane, const ZuPoint* pAdjusted);
  bool CalcSip(ZuPoint* pResult, const ZuPlane& plane, unsigned int uImoId, bool bAdjusted);
  // The modes from object space project onto the surface; false where that has no image point: the
  // projection centre, and for a cylinder its axis.
  bool ConvertBiko(ZuPoint* pPoint, eConvertBikoMode eMode) const;
  void ConvertList(ZuPointList* pList, eConvertBikoMode eMode) const;
  // Of a round picture the direction is never against it, and a point is in view, too, where the
  // picture shows it a whole turn further.
  bool IsInPhotoView(const ZuPoint& point, bool bCheckDirection) const;

  ZuPhotoVivaPano* Next() const { return static_cast<ZuPhotoVivaPano*>(m_pNext); }

 private:
  void SurfaceVector(double x, double y, double* pdVector) const;
  bool ToSurface(ZuPoint* pPoint) const;
};

ZU_DECLARE_LIST(ZuPhotoVivaPano);

class ZU_API ZuVivaPanoList : public TZuListHeader<ZuPhotoVivaPano> {
 public:
  using TZuListHeader<ZuPhotoVivaPano>::operator=;
};
