// A panorama of a total station's camera: a photo of that kind.
#pragma once

#include "zu/export.h"
#include "zu/foundation/list.h"
#include "zu/photo/photo.h"

class ZU_API ZuPhotoVivaPano : public ZuPhoto {
 public:
  using ZuPhoto::ZuPhoto;

  bool IsVivaPanorama() const override { return true; }

  ZuPhotoVivaPano* Next() const { return static_cast<ZuPhotoVivaPano*>(m_pNext); }
};

ZU_DECLARE_LIST(ZuPhotoVivaPano);

class ZU_API ZuVivaPanoList : public TZuListHeader<ZuPhotoVivaPano> {
 public:
  using TZuListHeader<ZuPhotoVivaPano>::operator=;
};
