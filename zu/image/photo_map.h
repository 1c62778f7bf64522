// Pixels of a picture carried through photos, planes and rectifications to the pixels of a photo.
//
// Pictures are those whose pixels the DIGIREGION of a photo counts: its first corner is the centre
// of the first pixel, column 0 and row 0. With bFlip y of the photo's pixels counts the other way
// (ZuTurnPixelY). All conversions are exact (ZuBikoTransform::SetExact), and refuse points where
// the camera's model is not one to one.
#pragma once

#include "zu/image/export.h"
#include "zu/image/pixel_map.h"
#include "zu/photo/photo.h"
#include "zu/rectify/zusp_trafo.h"

// Column and row to the pixel coordinates of a photo, and back.
class ZU_IMAGE_API ZuPhotoPixels {
 public:
  ZuPhotoPixels(const ZuPhoto& photo, bool bFlip);
  void ToPhoto(double* x, double* y) const;
  void FromPhoto(double* x, double* y) const;

 private:
  double m_dLeft, m_dTop, m_dTurn;
  bool m_bFlip;
};

// From the picture of one photo to that of another that sees along the same rays: through another
// camera at the same place. Both photos must outlive the map.
class ZU_IMAGE_API ZuPhotoToPhotoMap : public ZuPixelMap {
 public:
  ZuPhotoToPhotoMap(const ZuPhoto& result, const ZuPhoto& source, bool bFlip);
  bool Map(double* x, double* y) const override;

 private:
  ZuPhotoPixels m_resultPixels, m_sourcePixels;
  ZuBikoTransform m_toRay, m_fromRay;
};

// A raster in a plane: column i, row j is the place
//
//   x = dLeft + (i + 0.5) dPixel    y = dTop - (j + 0.5) dPixel
//
// and (x, y, 0, 1) times the 4 x 4 matrix is the point in object space.
struct ZU_IMAGE_API ZuPlaneRaster {
  double m_dLeft = 0.0, m_dTop = 0.0;  // outer corner of the first pixel
  double m_dPixel = 1.0;
  int m_iWidth = 0, m_iHeight = 0;
  ZuMatrix m_toObject = ZuMatrix(4, 4);

  ZuPlaneRaster() { m_toObject.SetIdent(); }
  // The raster that covers a region of the plane from its upper left corner on; false, nothing
  // changed, where it would have no pixel or more than a million in a row or column.
  bool SetRegion(const ZuRegion& region, double dPixel);
  ZuRegion GetRegion() const;
  void ToPlane(double* x, double* y) const;
  void ToObject(double x, double y, double* pdObject) const;  // from the plane; 3 values
};

// From a raster to the photo, as the oriented photo sees it; nothing behind the camera. The photo
// must outlive the map.
class ZU_IMAGE_API ZuPlaneToPhotoMap : public ZuPixelMap {
 public:
  ZuPlaneToPhotoMap(const ZuPlaneRaster& raster, const ZuPhoto& photo, bool bFlip);
  bool Map(double* x, double* y) const override;

 private:
  ZuPlaneRaster m_raster;
  const ZuPhoto* m_pPhoto;
  ZuPhotoPixels m_pixels;
  ZuBikoTransform m_toPixel;
};

// From a raster to the photo by the inverse of a rectification: raster coordinates are those behind
// its 3 x 3 map. Nothing beyond the horizon of that map, as seen from the middle of the image.
class ZU_IMAGE_API ZuZuspToPhotoMap : public ZuPixelMap {
 public:
  ZuZuspToPhotoMap(const ZuPlaneRaster& raster, const ZuZuspTrafo& trafo, const ZuPhoto& photo,
                   bool bFlip);
  // False: the 3 x 3 map has no inverse, and Map refuses everything.
  bool IsValid() const { return m_dSide != 0.0; }
  bool Map(double* x, double* y) const override;

 private:
  ZuPlaneRaster m_raster;
  ZuMatrix m_inverse = ZuMatrix(3, 3);
  double m_dSide = 0.0;  // sign of the homogeneous component before the horizon; 0: no inverse
  bool m_bDistortion;
  ZuCamera m_camera;
  ZuPhotoPixels m_pixels;
  ZuBikoTransform m_toPixel;
};
