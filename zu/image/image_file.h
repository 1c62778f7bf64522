// Reading of picture files: JPEG, PNG and TIFF, told by their first bytes, not by their names.
//
//   ZuImage image;
//   ZuFindingList findings;
//   if (!ZuReadImage("facade.jpg", &image, nullptr, &findings)) show(findings);
//
// Pixels stay as the file has them: image measurements refer to stored pixels, so a note that the
// camera was turned (ZuExif) turns nothing. Colour profiles are passed over.
#pragma once

#include <string>
#include <string_view>

#include "zu/image/exif.h"
#include "zu/image/export.h"
#include "zu/image/image.h"
#include "zu/project/finding_list.h"

enum eZuImageFormat : int { eZuImageNone, eZuImageJpeg, eZuImagePng, eZuImageTiff };

struct ZuImageInfo {
  eZuImageFormat m_eFormat = eZuImageNone;
  int m_iWidth = 0;  // as stored
  int m_iHeight = 0;
  int m_iChannels = 0;  // of the picture that ZuReadImage gives
  int m_iBits = 0;
  bool m_bCmyk = false;  // stored as four printing colours
  ZuExif m_Exif;
};

// Reads a picture. True: it is whole. False with errors among the findings: no such file, no format
// of the above, a size that the file cannot hold (told before memory is asked for) or that memory
// has no room for. Of a cut or damaged file the rows that could be read are in the picture all the
// same, the others are as the format fills them; otherwise the picture is empty.
//
// Grey stays grey; a palette becomes colours, one and four bits a sample eight, CMYK becomes R, G,
// B without its profile (a warning tells it). A size in the EXIF data that the picture does not
// have is a warning, an orientation other than upright a note. pInfo may be null. Several threads
// may read at a time.
ZU_IMAGE_API bool ZuReadImage(const std::string& strPath, ZuImage* pImage, ZuImageInfo* pInfo,
                              ZuFindingList* pFindings);

// The same of a file in memory; strName is the file of the findings.
ZU_IMAGE_API bool ZuReadImageBytes(std::string_view bytes, const std::string& strName,
                                   ZuImage* pImage, ZuImageInfo* pInfo, ZuFindingList* pFindings);

// Reads size, form and EXIF data alone.
ZU_IMAGE_API bool ZuReadImageInfo(const std::string& strPath, ZuImageInfo* pInfo,
                                  ZuFindingList* pFindings);
