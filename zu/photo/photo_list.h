// The photos of a project, and a short descriptor of a photo.
#pragma once

#include "zu/export.h"
#include "zu/foundation/link.h"
#include "zu/foundation/list.h"
#include "zu/photo/photo.h"

class ZU_API ZuPhotoList : public TZuListHeader<ZuPhoto>, public LinkHdl {
 public:
  using TZuListHeader<ZuPhoto>::operator=;
  // Handler of a keyword: appends the photo read.
  ZuPhoto* AddPhoto(ZuReaderObject* pObject);
};

class ZU_API ZuPhotoDesc {
 public:
  ZuPhotoDesc() = default;
  explicit ZuPhotoDesc(ZuPhoto* pPhoto) { Set(pPhoto); }

  // Null gives id 0 and false.
  void Set(ZuPhoto* pPhoto);

 public:
  bool m_bIsOrtho = false;
  bool m_bIsViva = false;
  unsigned int m_uId = 0;
};
