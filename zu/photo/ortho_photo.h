// A rectified image: its pixels map to object space by rectification planes instead of a camera. It
// records how it was made, and how the stored image was turned (the inherited rotation, in quarter
// turns) and mirrored.
#pragma once

#include "zu/export.h"
#include "zu/foundation/array.h"
#include "zu/photo/photo.h"
#include "zu/rectify/zusp_plane_info.h"

// Bits of GetMirrorInfo.
enum eZuMirror : int { eZuMirrorX = 1, eZuMirrorY = 2 };

class ZU_API ZuOrthoPhoto : public ZuPhoto {
 public:
  explicit ZuOrthoPhoto(unsigned int uId = 0);
  explicit ZuOrthoPhoto(ZuReaderObject* pObject);
  ZuOrthoPhoto(const ZuOrthoPhoto& other);
  ~ZuOrthoPhoto() override;
  // Takes the planes too, without events of their list. Throws std::bad_alloc where there is no
  // memory for all of them.
  ZuOrthoPhoto& operator=(const ZuOrthoPhoto& other);

  bool IsOrthoPhoto() const override { return true; }
  // Object units a pixel: object width over digital width, that of 0 counting as 1.
  double GetPixelSize() const override;
  int Read(ZuReaderObject* pObject) override;
  // Required: writes nothing.
  std::ostream& Write(std::ostream& stream) override;
  // Writes the keywords of the block so that Read of a new orthophoto makes the record again to the
  // last bit. In no file are the list of plane ids and what a photo has beside: state, camera,
  // orientation.
  std::ostream& Export(std::ostream& stream) const override;

  // Position in the stored image to the displayed one, in place, and back.
  //
  // Required: the quarter turns of AdjustPixelRotation add one pixel, the mirror steps and the way
  // back do not: the two differ by one pixel. Stored positions were made so.
  void AdjustPixelRotation(ZuPoint* pPoint) const;
  void AdjustPixelRotation(ZuPointList* pList) const;
  void InvAdjustPixelRotation(ZuPoint* pPoint) const;

  // Displayed pixel to object coordinates in place, by the only plane or by the one that holds the
  // pixel. False for null and where no plane does.
  bool Transform(ZuPoint* pPoint) const;
  // Object positions of the image corners (x1, y1), (x2, y1), (x2, y2), (x1, y2), by the first
  // plane. False, points untouched, without a plane.
  bool GetImageCorners(ZuPoint* a, ZuPoint* b, ZuPoint* c, ZuPoint* d) const;

  ZuZuspPlaneInfoList& ZuspPlaneList() { return m_PlaneList; }
  const ZuZuspPlaneInfoList& ZuspPlaneList() const { return m_PlaneList; }
  TZuArray<unsigned int>& GetPlaneIds() { return m_aPlaneIds; }
  int GetStatPixel() const { return m_iStatPixel; }  // rectified pixels
  void SetStatPixel(int iPixel) { m_iStatPixel = iPixel; }
  double GetStatTime() const { return m_dStatTime; }
  void SetStatTime(double dTime) { m_dStatTime = dTime; }
  ZuRegion& GetObjectRegion() { return m_ObjectRegion; }  // size in object units
  ZuRegion GetObjectRegion() const { return m_ObjectRegion; }
  void SetObjectRegion(const ZuRegion& region) { m_ObjectRegion = region; }
  double GetMaxAngle() const { return m_dMaxAngle; }  // limit between planes
  void SetMaxAngle(double dAngle) { m_dMaxAngle = dAngle; }
  int GetMirrorInfo() const { return m_iMirror; }
  void ToggleMirrorX() { m_iMirror ^= eZuMirrorX; }
  void ToggleMirrorY() { m_iMirror ^= eZuMirrorY; }

  ZuOrthoPhoto* Next() const { return static_cast<ZuOrthoPhoto*>(m_pNext); }
  ZuOrthoPhoto* Previous() const { return static_cast<ZuOrthoPhoto*>(m_pPrev); }

 protected:
  void Mirror(ZuPoint* pPoint) const;

  ZuZuspPlaneInfoList m_PlaneList;
  TZuArray<unsigned int> m_aPlaneIds{TZuArray<unsigned int>::kDefaultSize, nullptr};
  int m_iStatPixel = 0;
  double m_dStatTime = 1.0;
  ZuRegion m_ObjectRegion;
  double m_dMaxAngle = 9.0;
  int m_iMirror = 0;
};

ZU_DECLARE_LIST(ZuOrthoPhoto);

class ZU_API ZuOrthoPhotoList : public TZuListHeader<ZuOrthoPhoto>, public LinkHdl {
 public:
  using TZuListHeader<ZuOrthoPhoto>::operator=;
  // Handler of a keyword: appends the orthophoto read.
  ZuOrthoPhoto* AddPhoto(ZuReaderObject* pObject);
};
