// What the camera noted in a picture file, as far as photogrammetry starts from it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "zu/image/export.h"

// Numbers are 0 where the file does not tell them, or tells what cannot be (a focal length of 0/0).
struct ZU_IMAGE_API ZuExif {
  std::string m_strMake, m_strModel;  // without blanks at the ends
  std::string m_strTime;              // of the exposure, "2006:08:25 14:03:11"
  double m_dFocalLength = 0.0;        // [mm]
  double m_dFocalLength35 = 0.0;      // of the same angle of view on a frame of 36 by 24 mm [mm]
  double m_dPlaneX = 0.0;             // pixels a mm in the image plane, of the picture as taken
  double m_dPlaneY = 0.0;
  int m_iWidth = 0;  // of the picture as taken, which an edited one need not have [pixel]
  int m_iHeight = 0;
  // How the camera was held: 1 upright, 3 upside down, 6 and 8 turned, 2, 4, 5, 7 mirrored. 1 where
  // the file tells nothing or a value outside 1 to 8.
  int m_iOrientation = 1;

  // The size of a pixel of a picture of this width and height [mm]; false, output untouched, where
  // the file does not tell it. From the resolution of the image plane; else from the two focal
  // lengths, with the diagonal of the frame (43.27 mm): pbNominal then is true, and the size good
  // to some per cent. A picture that was made smaller has larger pixels; one turned to its other
  // side is seen as such.
  bool GetPixelSize(int iWidth, int iHeight, double* pdSize, bool* pbNominal) const;
};

// Reads the EXIF data of a JPEG or PNG file: the TIFF structure, with or without "Exif\0\0" in
// front. False, output untouched, where there is none.
ZU_IMAGE_API bool ZuReadExif(std::string_view bytes, ZuExif* pExif);
