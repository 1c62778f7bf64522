// A small grey copy of a picture, for a page.
#pragma once

#include <string>

#include "zu/image/export.h"

class ZuImage;

// The picture as a JPEG file of at most this width, in grey; colours by their green. Empty for an
// empty picture.
ZU_IMAGE_API std::string ZuMakeThumbnail(const ZuImage& image, int iMostWidth);
