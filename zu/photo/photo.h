// One image of a project: its file, its regions in pixels and in Bikos, its own copy of the camera,
// the reseau's key with the plane transformations, the exterior orientation, and what was measured
// on it.
//
// Exterior orientation: X0 the projection centre in object space, R maps image vectors to object
// space, R = Ry(b) Rx(a) Rz(c). An object point P has the image vector R^T (P - X0); an adjusted
// image point (x, y) has the image vector (x, y, -|c|). Lengths of the image are mm, of the object
// those of the project.
//
// Copies carry the record without its lists of points, rectifications and attributes. One thread at
// a time: const operations fill caches.
#pragma once

#include <array>
#include <iosfwd>

#include "zu/export.h"
#include "zu/foundation/detail/seldom.h"
#include "zu/foundation/list.h"
#include "zu/foundation/sort_helper.h"
#include "zu/numerics/matrix.h"
#include "zu/numerics/vector.h"
#include "zu/photo/biko_transform.h"
#include "zu/photo/camera.h"
#include "zu/photo/position.h"
#include "zu/photo/reseau_data_desc.h"
#include "zu/points/attribute.h"
#include "zu/points/flag.h"
#include "zu/points/point_list.h"
#include "zu/rectify/plane.h"
#include "zu/rectify/region.h"
#include "zu/rectify/zusp_trafo.h"

class ZuLine3d;
class ZuScanPoint3d;

// Any value but 1 is analog.
enum eZuPhototype : int { eZuPhototypeAnalog = 0, eZuPhototypeDigital = 1 };

// Any value but 0 is inactive, an external photo too.
enum eZuPhotoState : int {
  eZuPhotoStateActive = 0,
  eZuPhotoStateInactive = 1,
  eZuPhotoStateExtern = 2
};

// Why CalcSip refused.
enum eZuSipError : int {
  eZuSipNoError = 0,
  eZuSipNoOrientation = 1,
  eZuSipNoPlane = 2,  // normal (0, 0, 0)
  eZuSipNoPoint = 3   // none given or found, or a ray that meets the plane in none
};

// The surface of the picture; any value but sphere and cylinder is a plane.
enum eZuPanorama : int { eZuPanoramaPlane = 0, eZuPanoramaSphere = 1, eZuPanoramaCylinder = 2 };

class ZU_API ZuPhoto : public ZuListnode, public ZuFlag {
 public:
  explicit ZuPhoto(unsigned int uId = 0);
  // Required: a photo made with its file name is digital, one without is analog.
  ZuPhoto(unsigned int uId, const String& strName);
  explicit ZuPhoto(ZuReaderObject* pObject);
  ZuPhoto(const ZuPhoto& other);
  ~ZuPhoto() override;

  using ZuListnode::Compare;
  virtual const ZuRegion& GetDigiRegion() const { return m_DigiRegion; }
  virtual bool IsOrthoPhoto() const { return false; }
  virtual bool IsVivaPanorama() const { return false; }
  // The picture is an unrolled sphere or cylinder about the projection centre (ZuPhotoVivaPano):
  // its rays and what is projected into it follow that surface, in all operations here and in
  // ZuBikoTransform. A copy of the record keeps it.
  bool IsRound() const {
    return m_iPanorama == eZuPanoramaSphere || m_iPanorama == eZuPanoramaCylinder;
  }
  // An object point, in place, in adjusted coordinates of a round picture, z 0. False, the point
  // untouched, where there is none: the projection centre, a cylinder's axis, not finite.
  bool ToSurface(double* x, double* y, double* z) const;
  // Length of a pixel in the image [mm]: along x, along y, and the root of their product, which is
  // kept; Init and RescaleTo reset it.
  virtual double GetPixelSize() const;
  virtual double GetPixelSizeX() const;
  virtual double GetPixelSizeY() const;
  // This id minus the other's, formed in 32 bits: sorted lists of photos ascend by id, as long as
  // their ids are less than 2^31 apart.
  virtual int Compare(ZuListnode* pOther) const;
  // Required: writes nothing; the record is read by the library and not written by it.
  virtual std::ostream& Write(std::ostream& stream);
  // The keywords of a photo's block, current and older ones side by side; a later one overwrites an
  // earlier one of the same target. Returns 1.
  virtual int Read(ZuReaderObject* pObject);
  // Writes the keywords of the photo's block in their current form, one a line without the block's
  // braces, so that Read of a new photo makes the record again to the last bit. The names that
  // older files give the transformations are kept too; that of the pre-transformation unless it
  // differs from the reseau's, or would move the name of an analog photo to its comment.
  //
  // In no file are: layer, Biko region and pixel size, which are derived, the comment of the
  // reseau, flags other than the active one, attributes, and the measurements, which a project
  // keeps beside its photos.
  virtual std::ostream& Export(std::ostream& stream) const;

  // Takes the record: orientation, camera, transformations, regions. Of the lists it takes none and
  // destroys this photo's Imo, Measure, rectification and attribute list, whose id indexes are
  // detached.
  //
  // Required: the Temp list and the regions of interest stay as they are; points that an
  // application has parked are not those of the photo that is replaced.
  ZuPhoto& operator=(const ZuPhoto& other);
  // Sets the defaults; id, name and lists stay.
  void Init();

  static ZuPhoto* cast(const ZuObject* pObject);
  static const char* desc() { return "ZuPhoto"; }

  ZuPhoto* Next() const { return static_cast<ZuPhoto*>(m_pNext); }
  ZuPhoto* Previous() const { return static_cast<ZuPhoto*>(m_pPrev); }

  // --- Record ----------------------------------------------------------------------------------

  const String& GetComment() const { return m_sComment; }
  void SetComment(const String& strComment) { m_sComment = strComment; }
  int GetActiveFlag() const { return m_iState; }
  void SetActiveFlag(int iState) { m_iState = iState; }
  bool IsActive() const { return m_iState == eZuPhotoStateActive; }
  bool IsExtern() const { return m_iState == eZuPhotoStateExtern; }
  bool IsInactive() const { return m_iState != eZuPhotoStateActive; }
  int GetLayer() const { return m_iLayer; }
  void SetLayer(int iLayer) { m_iLayer = iLayer; }
  int GetRotation() const { return m_iRotation; }
  void SetRotation(int iRotation) { m_iRotation = iRotation; }
  double GetScale() const { return m_dScale; }
  void SetScale(double dScale) { m_dScale = dScale; }
  eZuPhototype GetPhototype() const { return m_ePhototype; }
  void SetPhototype(eZuPhototype eType) { m_ePhototype = eType; }
  void SetType(eZuPhototype eType) { m_ePhototype = eType; }
  bool IsDigital() const { return m_ePhototype == eZuPhototypeDigital; }
  bool IsAnalog() const { return m_ePhototype != eZuPhototypeDigital; }
  unsigned int GetDigitizerId() const { return m_uDigitizerId; }
  void SetDigitizer(unsigned int uId) { m_uDigitizerId = uId; }
  int GetDigPictPage() const { return m_iDigPictPage; }
  void SetDigPictPage(int iPage) { m_iDigPictPage = iPage; }
  int GetDigPictRot() const { return m_iDigPictRot; }
  void SetDigPictRot(int iRotation) { m_iDigPictRot = iRotation; }
  const ZuPosition& GetScreenPos() const { return m_ScreenPos; }
  void SetScreenPos(const ZuPosition& position) { m_ScreenPos = position; }
  int GetScreenScale() const { return m_iScreenScale; }
  void SetScreenScale(int iScale) { m_iScreenScale = iScale; }
  int GetScreenFlags() const { return m_iScreenFlags; }
  void SetScreenFlags(int iFlags) { m_iScreenFlags = iFlags; }
  const String& GetTpsSetupId() const { return m_sTpsSetupId; }
  void SetTpsSetupId(const String& strId) { m_sTpsSetupId = strId; }
  ZuPointList& GetRegoiList() { return m_RegoiList.Own(); }
  // The image file is there.
  bool ExistFile() const;

  // --- Image, camera, transformations ----------------------------------------------------------

  void SetDigiRegion(const ZuRegion& region) { m_DigiRegion = region; }
  // Derived from the digital region while its x corners differ by less than 1e-10. Corner by
  // corner, not sorted: where y of the pixels counts down, the first corner is the upper left one.
  const ZuRegion& GetBikoRegion() const;
  void SetBikoRegion(const ZuRegion& region) { m_BikoRegion = region; }
  void CalcBikoRegionFromDigiRegion() const;
  // Half the diagonal of the Biko region, times 1.1 [mm].
  double GetMaxBikoRadius() const;

  const ZuCamera& GetCamera() const { return m_Camera; }
  ZuCamera& GetCamera() { return m_Camera; }
  // A camera without domain for its inverse gets GetMaxBikoRadius(). A null pointer leaves the
  // camera but completes it so.
  void SetCamera(const ZuCamera& camera);
  void SetCamera(const ZuCamera* pCamera);

  const ZuReseauDataDesc& GetReseauData() const { return m_ReseauData; }
  ZuReseauDataDesc& ReseauData() { return m_ReseauData; }
  void SetReseauData(const ZuReseauDataDesc& desc) { m_ReseauData = desc; }
  // Digi to Pre, Pre to Biko, and Biko to Pre where the main one is a polynomial.
  const ZuReseauTrafo& GetReseauPreTrafo() const { return m_PreTrafo.Own(); }
  const ZuReseauTrafo& GetReseauMainTrafo() const { return m_MainTrafo.Own(); }
  const ZuReseauTrafo& GetReseauPolyInv() const { return m_PolyInvTrafo.Own(); }
  void SetReseauPreTrafo(const ZuTrafo2d& trafo) { m_PreTrafo.Own().Set(trafo); }
  void SetReseauMainTrafo(const ZuTrafo2d& trafo) { m_MainTrafo.Own().Set(trafo); }
  void SetPolyInvTrafo(const ZuTrafo2d& trafo) { m_PolyInvTrafo.Own().Set(trafo); }
  // 3x3, main times pre.
  ZuMatrix GetReseauTrafoMat() const;
  const char* GetReseauTrafoName() const { return m_MainTrafo->GetTrafoName(); }
  eZuTrafo2DType GetReseauTrafoType() const { return m_MainTrafo->GetType(); }

  // --- Exterior orientation --------------------------------------------------------------------

  bool HasAOR() const { return m_bOriented; }
  void SetHasAOR(bool bOriented) { m_bOriented = bOriented; }
  const ZuMatrix& GetRotAOR() const { return m_RotAOR; }  // 3x3
  const ZuVector& GetPosAOR() const { return m_PosAOR; }  // 3
  void SetPosAOR(double x, double y, double z);
  void SetPosAOR(const ZuVector& position);
  void GetPosAOR(double* x, double* y, double* z) const;
  // R = Ry(b) Rx(a) Rz(c), angles in radians.
  void SetRotAOR(double a, double b, double c);
  void SetRotAOR(const ZuMatrix& rotation);
  // Its angles, a within -pi/2 to pi/2; b and c are not finite at a = +-pi/2.
  void GetRotAOR(double* a, double* b, double* c) const;
  // 4x4: R and X0 as the map from image to object vectors. Null is ignored.
  void GetAOR(ZuMatrix* pMatrix) const;
  // Position, angles a, b, c into m_dDX, m_dDY, m_dDZ (radians, or gon), ids of photo and camera.
  void GetAOR(ZuPoint* pPoint, bool bGon) const;
  void SetAOR(const ZuPhoto& other);

  // --- Rectifications and attributes -----------------------------------------------------------

  ZuZuspTrafoList& GetZuspList() { return m_ZuspList; }
  const ZuZuspTrafoList& GetZuspList() const { return m_ZuspList; }
  ZuZuspTrafo* AddZuspTrafo(ZuZuspTrafo* pTrafo) { return m_ZuspList.Add(pTrafo); }
  ZuZuspTrafo* FindZuspTrafo(unsigned int uId) const { return m_ZuspList.Find(uId); }
  ZuZuspTrafo* FirstZuspTrafo() const { return m_ZuspList.First(); }
  ZuZuspTrafo* LastZuspTrafo() const { return m_ZuspList.Last(); }
  ZuZuspTrafo* SubtractZuspTrafo(unsigned int uId) { return m_ZuspList.Subtract(uId); }
  ZuZuspTrafo* SubtractZuspTrafo(ZuZuspTrafo* pTrafo) { return m_ZuspList.Subtract(pTrafo); }
  ZuZuspTrafo* GetZuspTrafo(int i) const { return m_ZuspList.Get(i); }
  int CountZuspTrafo() const { return m_ZuspList.Count(); }
  unsigned int GetLastZuspId() const { return m_uLastZuspId; }
  unsigned int IncLastZuspId() { return ++m_uLastZuspId; }

  ZuAttributeList& GetAttributeList() { return m_AttributeList; }
  ZuAttribute* AddAttribute(ZuAttribute* p) { return m_AttributeList.Add(p, this); }
  void DelAttribute(ZuAttribute* p);
  ZuAttribute* FindAttribute(unsigned int uId) const { return m_AttributeList.Find(uId); }
  ZuAttribute* FindAttribute(const String& strName) const { return m_AttributeList.Find(strName); }
  ZuAttribute* FirstAttribute() const { return m_AttributeList.First(); }
  ZuAttribute* SubtractAttribute(ZuAttribute* p) { return m_AttributeList.Subtract(p); }

  // --- Measurements ----------------------------------------------------------------------------
  //
  // Three lists: Imo, the image measurements that take part in computations; Measure, those in
  // progress; Temp, a parking place. Single-point operations convert by the mode (0: not at all)
  // and set the point's photo id; moves and copies of all do neither.

  ZuPointList& GetImoList() { return m_ImoList; }
  const ZuPointList& GetImoList() const { return m_ImoList; }
  ZuPointList& GetMeasureList() { return m_MeasureList; }
  const ZuPointList& GetMeasureList() const { return m_MeasureList; }
  ZuPointList& GetTempList() { return m_TempList.Own(); }
  ZuSortHelper<ZuPoint>& GetSortHelperImo() { return m_ImoSorted; }
  ZuSortHelper<ZuPoint>& GetSortHelperMeasure() { return m_MeasureSorted; }

  // The list owns the point, which replaces one of its id; a linear search. Null gives null. A
  // point that could not be converted is taken all the same.
  ZuPoint* AddImo(ZuPoint* pPoint, eConvertBikoMode eMode);
  ZuPoint* AddImo(const ZuPoint& point, eConvertBikoMode eMode);
  ZuPoint* AddMeasure(ZuPoint* pPoint, eConvertBikoMode eMode);
  ZuPoint* AddMeasure(const ZuPoint& point, eConvertBikoMode eMode);
  // The same at the tail, without a search: duplicates are possible.
  ZuPoint* AddImoFast(ZuPoint* pPoint, eConvertBikoMode eMode);
  ZuPoint* AddImoFast(const ZuPoint& point, eConvertBikoMode eMode);

  // An unknown id changes nothing.
  void MoveImoToMeasure(unsigned int uId, eConvertBikoMode eMode);
  void MoveMeasureToImo(unsigned int uId, eConvertBikoMode eMode);
  void CopyImoToMeasure(unsigned int uId, eConvertBikoMode eMode);
  void CopyMeasureToImo(unsigned int uId, eConvertBikoMode eMode);
  void MoveImoToMeasure() { m_ImoList.MoveTo(&m_MeasureList); }
  void MoveMeasureToImo() { m_MeasureList.MoveTo(&m_ImoList); }
  void MoveImoToTemp() { m_ImoList.MoveTo(&m_TempList.Own()); }
  void MoveMeasureToTemp() { m_MeasureList.MoveTo(&m_TempList.Own()); }
  void MoveTempToImo() { m_TempList.Own().MoveTo(&m_ImoList); }
  void MoveTempToMeasure() { m_TempList.Own().MoveTo(&m_MeasureList); }
  void MoveImoTo(ZuPointList* pList) { m_ImoList.MoveTo(pList); }
  void MoveMeasureTo(ZuPointList* pList) { m_MeasureList.MoveTo(pList); }
  void CopyImoToMeasure() { m_ImoList.CopyTo(&m_MeasureList); }
  void CopyMeasureToImo() { m_MeasureList.CopyTo(&m_ImoList); }
  void CopyImoTo(ZuPointList* pList) const;
  void CopyMeasureTo(ZuPointList* pList) const;

  ZuPoint* FindImo(unsigned int uId) const { return m_ImoList.Find(uId, 0, nullptr); }
  ZuPoint* FindMeasure(unsigned int uId) const { return m_MeasureList.Find(uId, 0, nullptr); }
  // By the index as it was at the last SetImoSorted or SetMeasureSorted; null before. Where this
  // photo deletes a point (DestroyImo, DestroyMeasure, an AddImo or AddMeasure that replaces, an
  // assignment) no index answers with it: both are built anew, or detached by the assignment.
  // Points that were subtracted or moved are still found: who deletes them calls SetImoSorted
  // again.
  ZuPoint* FindSortedImo(unsigned int uId) { return m_ImoSorted.Find(uId); }
  ZuPoint* FindSortedMeasure(unsigned int uId) { return m_MeasureSorted.Find(uId); }
  void SetImoSorted() { m_ImoSorted.Set(&m_ImoList); }
  void SetMeasureSorted() { m_MeasureSorted.Set(&m_MeasureList); }
  ZuPoint* SubtractImo(unsigned int uId) { return SubtractFrom(m_ImoList, uId); }
  ZuPoint* SubtractMeasure(unsigned int uId) { return SubtractFrom(m_MeasureList, uId); }
  ZuPoint* SubtractMeasure(ZuPoint* pPoint) { return m_MeasureList.Subtract(pPoint); }
  ZuPoint* FirstImo() const { return m_ImoList.First(); }
  ZuPoint* LastImo() const { return m_ImoList.Last(); }
  ZuPoint* FirstMeasure() const { return m_MeasureList.First(); }
  ZuPoint* LastMeasure() const { return m_MeasureList.Last(); }
  int CountImo() const { return m_ImoList.Count(); }
  int CountMeasure() const { return m_MeasureList.Count(); }
  void DestroyImo();
  void DestroyMeasure();

  // Required: looks at the Measure list alone; ids of the Imo list may come again.
  unsigned int GetFreeBikoId() const { return m_MeasureList.GetFreeId(0); }
  unsigned int& AktBikoId() { return m_uAktBikoId; }
  // The photo's id and the photo as parent into each point.
  void SetPhotoIdToImoList();
  void SetPhotoIdToMeasureList();

  // Converts x, y (and z from Object) by the photo's own transformations; y is never turned. The
  // result is that of ZuBikoTransform in the modes 6 to 8 and 10 to 13, true otherwise.
  //
  // Required: eDigiToAdjusted applies a polynomial main transformation, unlike ZuBikoTransform.
  bool ConvertBiko(ZuPoint* pPoint, eConvertBikoMode eMode) const;
  // All points by one ZuBikoTransform without flip; results are dropped. Null does nothing.
  void ConvertList(ZuPointList* pList, eConvertBikoMode eMode) const;
  void ConvertMeasure(eConvertBikoMode eMode) { ConvertList(&m_MeasureList, eMode); }
  // The photo's prepared conversion, for CalcRayDirection.
  void SetBikoTransform(eConvertBikoMode eMode, bool bFlipY);
  const ZuBikoTransform& GetBikoTransform() const { return m_BikoTransform.Own(); }

  // Statistics of residuals [mm] against a tolerance in pixels; one at the limit counts as outside.
  void ResetImoStat();
  void UpdateImoStat(double dx, double dy, double dTolerance);
  void UpdateImoStatFromList(ZuPointList* pList, double dTolerance);
  void UpdateImoStatFromImoList(double dTolerance) {
    UpdateImoStatFromList(&m_ImoList, dTolerance);
  }
  int GetImoStatInside() const { return m_iImoStatInside; }
  int GetImoStatOutside() const { return m_iImoStatOutside; }
  double GetImoStatMax() const { return m_dImoStatMax; }
  double GetImoStatSum() const { return m_dImoStatSum; }

  // --- Geometry --------------------------------------------------------------------------------
  //
  // Image points here are adjusted ones. Rays of an unoriented photo start where it stands.

  void SetRayStart(ZuLine3d& line) const;
  // Start X0 and unit direction R (x, y, -|c|), or that of the surface of a round picture.
  void CalcRay(ZuLine3d& line, const ZuPoint* pAdjusted) const;
  // The direction of a point in the system that SetBikoTransform converts from; the start stays.
  void CalcRayDirection(ZuLine3d& line, double x, double y) const;
  // The point at a distance along the ray. True always.
  bool CalcRayEndPoint(double& x, double& y, double& z, const ZuPoint* pAdjusted,
                       const double& dDistance) const;
  bool CalcRayEndPoint(ZuPoint* pResult, const ZuPoint* pAdjusted, const double& dDistance) const;
  bool CalcRayEndPoint(ZuScanPoint3d* pResult, const ZuPoint* pAdjusted,
                       const double& dDistance) const;

  // Meets the ray of an image point with a plane; only x, y, z of the result are written. False
  // with GetSipError(): 1 no orientation, 2 a plane without normal, 3 no point, in this order of
  // tests, and 3 for a ray parallel to the plane, the result untouched. A successful call does not
  // reset it. A round picture looks in all directions: a plane that a ray meets behind its start
  // alone is error 3, too.
  bool CalcSip(ZuPoint* pResult, const ZuPlane& plane, const ZuPoint* pAdjusted);
  // Of a point of the Imo list, in Bikos unless bAdjusted; its id goes to the result. An unknown
  // id is error 3 before any other test.
  bool CalcSip(ZuPoint* pResult, const ZuPlane& plane, unsigned int uImoId, bool bAdjusted);
  // The bare intersection: not finite for a ray parallel to the plane.
  void CalcSipNoErrorCheck(ZuPoint* pResult, const ZuPlane& plane, const ZuPoint* pAdjusted) const;
  // Every point of a list in place: converted by ConvertBiko (eDigiToAdjusted, eBikoToAdjusted; 0
  // for adjusted points), then met with the plane; the same results as point by point, not finite
  // where CalcSip refuses the ray. Returns the number of points, 0 with GetSipError() without
  // orientation, normal or points.
  int CalcSipList(ZuPointList* pList, const ZuPlane& plane, eConvertBikoMode eMode);
  int GetSipError() const { return m_iSipError; }

  // Angle between the viewing axes [rad], and whether their sum is longer than 1.42, that is
  // whether they are less than about 89.5 degrees apart.
  double CalcAngle(const ZuPhoto& other) const { return m_RotAOR.CalcAngle(other.m_RotAOR); }
  bool IsLookingInSameDirection(const ZuPhoto& other) const;
  // Of the projection centre from another's, or from a point; and squared.
  double Distance(const ZuPhoto& other) const;
  double Distance(const ZuPoint& point) const;
  double Distance2(const ZuPhoto& other) const;
  double Distance2(const ZuPoint& point) const;

  // The pyramid of the field of view; false for an unoriented photo. Kept until the orientation
  // changes. Required: a change of camera or Biko region leaves it as it is.
  bool CalcFieldOfViewPlanes();
  const ZuPlane& GetFovPlane(int i) const { return m_FovPlanes.Own()[i]; }    // 0..3 sides, 4 image
  const ZuPoint& GetFovCorner(int i) const { return m_FovCorners.Own()[i]; }  // 0..3, 4 the centre
  // The object point lies in the image of an active, oriented photo; with bCheckDirection before
  // the camera too. Of a round picture the direction is never against it, and a point is in view,
  // too, where the picture shows it a whole turn further.
  bool IsInPhotoView(const ZuPoint& point, bool bCheckDirection) const;
  bool Overlap(const ZuPoint* pPoint) const { return GetDigiRegion().Overlap(pPoint); }
  bool Overlap(const ZuRegion* pRegion) const { return GetDigiRegion().Overlap(pRegion); }

  // For an image resampled by a factor: digital region and scale grow, Bikos stay; the
  // pre-transformation becomes a Helmert one, and the pixel size is derived anew from it. False,
  // nothing changed, for 0.
  bool RescaleTo(double dFactor);
  // Required: this form scales the Biko region and the main transformation instead, and carries the
  // Imo list along. False, nothing changed, with a polynomial main transformation.
  bool RescaleTo(double fx, double fy);

 protected:
  int ReadUserData(ZuReaderObject* pObject);
  int ReadType(ZuReaderObject* pObject);
  int ReadDigital(ZuReaderObject* pObject);
  int ReadRotation(ZuReaderObject* pObject);
  int ReadPosition(ZuReaderObject* pObject);
  // Regions of interest: id, x, y, accuracies in x and y.
  struct RegoiList : ZuPointList {
    RegoiList();
  };

  int ReadRegois(ZuReaderObject* pObject);
  template <ZuSeldom<ZuReseauTrafo> ZuPhoto::*pTrafo,
            int (ZuReseauTrafo::*pfnRead)(ZuReaderObject*)>
  int ReadTrafo(ZuReaderObject* pObject) {
    return ((this->*pTrafo).Own().*pfnRead)(pObject);
  }
  void CompleteRead(bool bCheckActive);
  bool KeepsNameOfPreTrafo() const;
  const ZuRegion& PresentBikoRegion() const;
  void CompleteCamera();
  void CopyRecord(const ZuPhoto& other);
  static ZuPoint* SubtractFrom(ZuPointList& list, unsigned int uId);
  class IndexPause;
  ZuPoint* ReplaceIn(ZuPointList& list, ZuPoint* pPoint);
  ZuPoint* Prepare(ZuPoint* pPoint, eConvertBikoMode eMode) const;
  ZuPoint* PreparedCopy(const ZuPoint& point, eConvertBikoMode eMode) const;
  void MoveConverted(ZuPointList& from, ZuPointList& to, unsigned int uId, eConvertBikoMode eMode);
  void SetPhotoIdTo(ZuPointList& list);
  void RayVector(double x, double y, double* pdVector) const;
  void SurfaceVector(double x, double y, double* pdVector) const;
  bool IsInRoundView(const ZuPoint& point) const;
  double PixelLength(double dx, double dy) const;

  String m_sComment;
  int m_iState = eZuPhotoStateInactive;
  int m_iLayer = 0;
  int m_iRotation = 0;
  bool m_bOriented = false;
  double m_dScale = 0.0;
  mutable double m_dPixelSize = 0.0;
  eZuPhototype m_ePhototype = eZuPhototypeAnalog;
  unsigned int m_uDigitizerId = 1;
  ZuRegion m_DigiRegion;
  ZuSeldom<ZuRegion> m_BikoRegion;
  ZuCamera m_Camera;
  ZuReseauDataDesc m_ReseauData;
  ZuSeldom<ZuReseauTrafo> m_PreTrafo;
  ZuSeldom<ZuReseauTrafo> m_MainTrafo;
  ZuSeldom<ZuReseauTrafo> m_PolyInvTrafo;
  ZuMatrix m_RotAOR = ZuMatrix(3, 3);
  ZuVector m_PosAOR = ZuVector(3);
  ZuZuspTrafoList m_ZuspList;
  unsigned int m_uLastZuspId = 0;
  int m_iDigPictPage = 0;
  int m_iDigPictRot = 0;
  ZuPosition m_ScreenPos;
  int m_iScreenScale = 0;
  int m_iScreenFlags = 0;

  ZuPointList m_ImoList;
  ZuSortHelper<ZuPoint> m_ImoSorted;
  ZuPointList m_MeasureList;
  ZuSortHelper<ZuPoint> m_MeasureSorted;
  ZuSeldom<ZuPointList> m_TempList;
  unsigned int m_uAktBikoId = 0;
  int m_iImoStatInside = 0;
  int m_iImoStatOutside = 0;
  double m_dImoStatMax = 0.0;
  double m_dImoStatSum = 0.0;
  ZuAttributeList m_AttributeList;

  bool m_bFieldOfViewValid = false;
  ZuSeldom<std::array<ZuPlane, 5>> m_FovPlanes;
  ZuSeldom<std::array<ZuPoint, 5>> m_FovCorners;
  int m_iSipError = eZuSipNoError;

  String m_sTpsSetupId;
  ZuSeldom<RegoiList> m_RegoiList;
  ZuSeldom<ZuBikoTransform> m_BikoTransform;
  double m_adPanorama[4] = {};  // of panoramas; carried along
  int m_iPanorama = eZuPanoramaPlane;
};

ZU_DECLARE_LIST(ZuPhoto);

// "id - label": the file name, for an analog photo the comment; with bMarkOriented ":: " in front
// of an oriented one. "??" for null.
ZU_API String ZuPhotoGuiString(const ZuPhoto* pPhoto, bool bMarkOriented);
