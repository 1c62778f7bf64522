// The photo that a picture becomes in a project: regions, transformations, and the camera as far as
// the picture file tells it.
//
//   ZuPhotoStart start = ZuStartPhoto(info);
//   ZuPhoto photo(1, "facade.jpg");
//   start.SetUp(&photo);
#pragma once

#include <string>

#include "zu/image/export.h"
#include "zu/image/image_file.h"

class ZuPhoto;

struct ZU_IMAGE_API ZuPhotoStart {
  int m_iWidth = 0;  // [pixel]
  int m_iHeight = 0;
  double m_dPixelSize = 0.0;  // [mm]
  double m_dConstant = 0.0;   // [mm]; 0: not known
  unsigned m_uCamera = 1;     // id
  std::string m_strCamera;    // make and model; may be empty
  std::string m_strNote;      // what was assumed, for the user; may be empty

  // Sets digital region, pre- and main transformation (to mm, origin at the centre of the picture,
  // y up) and a camera of mode 2 without distortion, which calibrations start from. Name, id and
  // orientation stay; the photo becomes digital and active, with scale 1.
  void SetUp(ZuPhoto* pPhoto) const;
};

// From the size and the EXIF data. Where these do not tell the size of a pixel, the longer side of
// the picture is 36 mm: this sets the unit of the image alone, and no object coordinate depends on
// it. A value above 0 for pixel size or focal length [mm] stands over the file's.
ZU_IMAGE_API ZuPhotoStart ZuStartPhoto(const ZuImageInfo& info, double dPixelSize = 0.0,
                                       double dFocalLength = 0.0);
