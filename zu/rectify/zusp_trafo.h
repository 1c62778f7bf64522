// One planar rectification of a photo: carries measured image points of one object plane over to
// object coordinates, and back.
//
//   measured (mm) --distortion, if wanted--> --3x3 projective map of X, Y--> --4x4 map--> object
//
// The matrices come from a file or from SetZuspMat and SetTransMat; the definition points and lines
// are kept for the application that computes them. One thread at a time: the first inverse call
// fills a cache.
#pragma once

#include <iosfwd>

#include "zu/export.h"
#include "zu/foundation/link.h"
#include "zu/foundation/list.h"
#include "zu/numerics/matrix.h"
#include "zu/photo/camera.h"
#include "zu/points/flag.h"
#include "zu/rectify/polygon.h"
#include "zu/rectify/zusp_parallel_def.h"

class ZuPhoto;
class ZuPoint;
class ZuPointList;
class ZuReaderObject;

// Flag bits of a rectification.
enum eZuspFlag : int {
  eZuspFlagActive = 2,
  eZuspFlagRegionActive = 0x2000,
  eZuspFlagDistortion = 0x4000
};

class ZU_API ZuZuspTrafo : public ZuListnode, public ZuFlag {
 public:
  ZuZuspTrafo();
  ZuZuspTrafo(const ZuZuspTrafo& other);
  // Reads the keyword form, or with bV50 the older positional one, whose records always have an
  // active region and no distortion stage.
  ZuZuspTrafo(ZuReaderObject* pObject, bool bV50);
  ~ZuZuspTrafo() override;
  // All fields, the cached inverses too; the lines refer to this object's own image points.
  ZuZuspTrafo& operator=(const ZuZuspTrafo& other);

  // Measured to object coordinates. pIn and pOut may be the same; all other fields are copied.
  //
  // Required: true always. A stage whose homogeneous component is below 1e-10 in magnitude leaves
  // the coordinates as they are, and the next one runs on them.
  bool Transform(const ZuPoint* pIn, ZuPoint* pOut) const;
  // In place on each point; their number, 0 for null.
  int Transform(ZuPointList* pList) const;

  // Object to measured coordinates. True always.
  //
  // Required: the inverses are formed once. SetZuspMat and SetTransMat leave them in force; who
  // sets a matrix after an inverse call makes a new record, as drawings hold on to the old one. A
  // record that is read anew, or gets both by SetMatrices, is a new one.
  bool InvTransform(ZuPoint* pPoint) const;
  bool InvTransform(const ZuPoint* pIn, ZuPoint* pOut) const;

  // The distortion stage takes part: its flag is set and its camera has an id.
  bool CompensateDistortion() const;

  // Area and closed length of the valid region, carried over by the 3x3 map; -1 without a ring.
  double Area() const;
  double Length() const;
  // Area of the valid region in pixels; 0.0 unless the photo is digital and active.
  double GetOriginalPixelArea(const ZuPhoto* pPhoto) const;
  // 1 when the point lies in the valid region.
  int Overlap(ZuPoint* pPoint) const;
  bool HasRegion() const { return m_polyRegion.Count() > 0; }
  bool IsByParallelDef() const { return m_parallelDef.HasData(); }
  bool IsAutoConnect() const { return m_bAutoConnect; }
  void SetAutoConnect(bool bAutoConnect) { m_bAutoConnect = bAutoConnect; }

  const ZuMatrix& GetZuspMat() const { return m_matZusp; }  // 3x3
  void SetZuspMat(const ZuMatrix& matrix) { m_matZusp = matrix; }
  const ZuMatrix& GetTransMat() const { return m_matTrans; }  // 4x4
  void SetTransMat(const ZuMatrix& matrix) { m_matTrans = matrix; }
  // Both matrices, as of a new record: the next inverse call forms the inverses anew.
  void SetMatrices(const ZuMatrix& zusp, const ZuMatrix& trans);

  ZuPolygon& GetPPList() { return m_polyPP; }      // definition points: id, X, Y, Z
  ZuPolygon& GetBikoList() { return m_polyBiko; }  // measured image points: id, X, Y
  ZuPolygon& GetRegion() { return m_polyRegion; }  // valid region: X, Y in the image
  ZuZuspParallelDef& GetParallelDef() { return m_parallelDef; }
  const ZuPolygon& GetPPList() const { return m_polyPP; }
  const ZuPolygon& GetBikoList() const { return m_polyBiko; }
  const ZuPolygon& GetRegion() const { return m_polyRegion; }
  const ZuZuspParallelDef& GetParallelDef() const { return m_parallelDef; }
  const ZuCamera& GetDistortCameraParam() const { return m_cameraDistort; }
  void SetDistortCameraParam(const ZuCamera& camera) { m_cameraDistort = camera; }

  // The setters return the new state.
  bool IsActive() const { return IsFlagSet(eZuspFlagActive) != 0; }
  bool SetActive(bool bActive);
  bool IsRegionActive() const { return IsFlagSet(eZuspFlagRegionActive) != 0; }
  bool SetRegionActive(bool bActive);
  bool GetDistortCameraFlag() const { return IsFlagSet(eZuspFlagDistortion) != 0; }
  bool SetDistortCameraFlag(bool bDistortion);

  ZuZuspTrafo* First(int iMask);
  ZuZuspTrafo* Next() const { return static_cast<ZuZuspTrafo*>(m_pNext); }
  ZuZuspTrafo* Next(int iMask);
  ZuZuspTrafo* Previous() const { return static_cast<ZuZuspTrafo*>(m_pPrev); }
  ZuZuspTrafo* Previous(int iMask);

  // Keyword form; absent flags are off. Returns 1.
  int Read(ZuReaderObject* pObject);
  // Older positional form; ids of points and the target points are derived. Returns 1.
  int ReadV50(ZuReaderObject* pObject);
  // Required: writes nothing; the record is read by the library and not written by it.
  std::ostream& Write(std::ostream& stream) const;
  // Writes the keyword form, one keyword a line without the block's braces, so that Read makes the
  // record again to the last bit. In no file: the auto-connect mark, other flags, the numbers of
  // the region's points, and of the distortion camera what ZuCamera::Export leaves out.
  std::ostream& Export(std::ostream& stream) const;

 protected:
  void ApplyStages(double* x, double* y, double* z) const;
  void ApplyInverse(double* x, double* y, double* z) const;
  int ReadZuspMat(ZuReaderObject* pObject);
  int ReadTransMat(ZuReaderObject* pObject);
  ZuPolygon MappedRegion() const;
  bool SetFlagTo(int iMask, bool bOn);

  ZuMatrix m_matZusp;
  ZuMatrix m_matTrans;
  ZuPolygon m_polyPP;
  ZuPolygon m_polyBiko;
  ZuZuspParallelDef m_parallelDef;
  ZuPolygon m_polyRegion;
  mutable ZuMatrix m_matZuspInv;
  mutable ZuMatrix m_matTransInv;
  mutable bool m_bInverseValid = false;
  ZuCamera m_cameraDistort;
  bool m_bAutoConnect = false;
};

ZU_DECLARE_LIST(ZuZuspTrafo);

// The rectifications of a photo, which it owns.
class ZU_API ZuZuspTrafoList : public TZuListHeader<ZuZuspTrafo>, public LinkHdl {
 public:
  using TZuListHeader<ZuZuspTrafo>::operator=;
  // Handlers of keywords: append the record read, in the present and the older form.
  ZuZuspTrafo* AddTrafo(ZuReaderObject* pObject);
  ZuZuspTrafo* AddTrafoV50(ZuReaderObject* pObject);
};

// Tests for filters, on rectifications: the flag as 0 or 1, and whether there is a region.
ZU_API unsigned int IsZuspActive(const ZuObject* pTrafo);
ZU_API unsigned int HasZuspRegion(const ZuObject* pTrafo);

// The border of what is rectified, in image coordinates, into `out`: the record's region, else the
// photo's image, each edge in nine segments where the distortion stage bends it. Returns the number
// of points. `out` may be the region's own list.
//
// Required: a region is given as it stands, also where distortion is compensated.
ZU_API int ZuGetZuspBikoPoints(ZuPointList& out, ZuPhoto* pPhoto, ZuZuspTrafo* pTrafo);
