// What belongs to a rectified picture beside its pixels.
#pragma once

#include <string>

#include "zu/image/export.h"
#include "zu/image/photo_map.h"
#include "zu/photo/ortho_photo.h"
#include "zu/rectify/plane.h"

// The part of a plane that the photo shows, in coordinates of the plane: the box around the border
// of its image. toObject: see ZuMakePlaneFrame. False, *pRegion untouched: the photo sees the
// horizon of the plane, or its camera is not one to one up to the border.
ZU_IMAGE_API bool ZuPhotoFootprint(const ZuPhoto& photo, const ZuPlane& plane,
                                   const ZuMatrix& toObject, bool bFlip, ZuRegion* pRegion);

// The same by a rectification: the box around its valid region, else around its measured points,
// else around the photo's image. False: none of them, or one beyond the horizon.
ZU_IMAGE_API bool ZuZuspFootprint(const ZuPhoto& photo, const ZuZuspTrafo& trafo,
                                  ZuRegion* pRegion);

// The orthophoto of a raster's picture, which carries pixels of the file (columns and rows, whole
// numbers at the centres) to object space: one plane with its 3 x 3 map from pixels to the plane
// and the 4 x 4 map from there, PIXELSIZE from -0.5 to width - 0.5 and OBJECTSIZE the raster's
// region.
ZU_IMAGE_API ZuOrthoPhoto ZuMakeOrthoPhoto(unsigned uId, const std::string& strName,
                                           const ZuPlaneRaster& raster);

// How a source shows a place of the result: pixels of the result to one of the source, along the
// longer axis of that pixel's image, and along the shorter one. False where it does not show it.
ZU_IMAGE_API bool ZuPixelScaleAt(const ZuPixelMap& map, double x, double y, double* pdLong,
                                 double* pdShort);
