// Base of operations that turn an image file by quarter turns: keeps the photo's pre-transformation
// consistent with the turned file.
#pragma once

#include "zu/export.h"

class ZuPhoto;

class ZU_API ZuRotatePhotoBase {
 public:
  ZuRotatePhotoBase() = default;
  explicit ZuRotatePhotoBase(ZuPhoto* pPhoto) : m_pPhoto(pPhoto) {}
  ZuRotatePhotoBase(const ZuRotatePhotoBase&) = default;
  virtual ~ZuRotatePhotoBase() = default;
  // For drawings hung on the photo; nothing here.
  virtual void AdjustAttributeDrawItem() {}
  ZuRotatePhotoBase& operator=(const ZuRotatePhotoBase&) = default;

  void SetPhoto(ZuPhoto* pPhoto) { m_pPhoto = pPhoto; }
  ZuPhoto* GetPhoto() const { return m_pPhoto; }

 protected:
  // After the file was turned: exchanges width and height of the digital region where the turn does
  // and turns the pre-transformation, which becomes a Helmert one. Rotations 1, 2, 3 are three, two
  // and one quarter turns; nothing for 0, for an orthophoto and for an inactive photo.
  //
  // Required: the former rotation is not read; the turn is that of the new one.
  void AdjustReseauOrZuspTrafo(int iOldRotation, int iNewRotation);

  ZuPhoto* m_pPhoto = nullptr;  // not owned
};
