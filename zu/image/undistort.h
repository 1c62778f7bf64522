// Photos without distortion: the picture, and the photo that fits it.
#pragma once

#include "zu/image/export.h"
#include "zu/photo/photo.h"

// How much of what the source shows the picture without distortion holds.
enum eZuUndistortExtent : int {
  eZuUndistortSame,  // as many pixels as the source, its principal point where it was
  eZuUndistortWhole  // as many as all pixels of the source need
};

// The photo of the picture without distortion: the orientation, id and plane transformations of
// `photo`, and a camera of its constant and principal point without distortion. Its
// pixels keep the size they have in the source where the source has no distortion (at r0 from the
// principal point). With eZuUndistortWhole the pixels of the larger picture count from its own
// first one; a polynomial main transformation gives way to the affine one that meets it in the
// middle of the image. The lists of the photo (measurements, rectifications) are not copied.
//
// False, *pResult undefined: no digital region, no camera, a camera whose model is not one to one
// at the middle of the image or (whole) at its border, or a whole picture of more than
// ZuImage::kMostPixels in a direction.
//
// ZuPhotoToPhotoMap(*pResult, photo, bFlip) makes the picture, ZuPhotoToPhotoMap(photo, *pResult,
// bFlip) the distorted one again.
ZU_IMAGE_API bool ZuMakeUndistortedPhoto(const ZuPhoto& photo, eZuUndistortExtent eExtent,
                                         bool bFlip, ZuPhoto* pResult);
