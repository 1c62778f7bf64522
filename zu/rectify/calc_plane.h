// Fits a plane to points, or makes one from a definition.
//
// Three well-spread points of the list give an approximate plane, which tells the coordinate axis
// closest to its normal; one linear adjustment then minimises the squares of the residuals along
// that axis. No iteration, no rejection of outliers, three passes over the points.
//
// An object keeps copies of the points it took and their foot points, and uses their memory again
// in the next computation.
#pragma once

#include <memory>

#include "zu/export.h"
#include "zu/points/point_list.h"
#include "zu/rectify/plane.h"

class String;
class ZuFilter;
class ZuLogfile;
class ZuMatrix;

class ZU_API ZuCalcPlane {
 public:
  enum eStatus : int {
    StatusOk = 0,         // plane, foot points and deviations belong together
    TooLessPoints = 1,    // fewer than three points, or none so far
    BadPointDistrib = 2,  // coincident or collinear points, or a coordinate that is not finite
    BadApproximate = 3,   // never set by a computation
  };
  // What CalcParallelPlane can make.
  enum eParallelMode : int { eParallelXY = 4, eParallelYZ = 5, eParallelXZ = 6 };

  ZuCalcPlane() = default;
  // Copies all; the filter is shared, and the last object that holds it deletes it.
  ZuCalcPlane(const ZuCalcPlane& other) = default;
  ZuCalcPlane& operator=(const ZuCalcPlane& other) = default;
  virtual ~ZuCalcPlane();

  // Fits a plane to the points that the filter accepts.
  //
  // The deviation components (m_dDX, m_dDY, m_dDZ) of all points become 0; with bWriteBack those of
  // the accepted points receive residual * normal, found by id (of equal ids the first counts), and
  // the list notifies one change. Three points give the exact plane, its normal by the right hand
  // in their order. From four on the component of the normal along the adjusted axis is positive.
  //
  // Required: the first three usable points (the first of the list, the next one apart from it, the
  // next one 9e-4 rad off the line through both) name the axis of adjustment, also where the result
  // has its largest component along another. Stored planes were adjusted so. They are no measure of
  // spread: where they stand close together, or stand in a line but for their noise, the axis may
  // lie in the plane and digits go. Put three points far apart in front then.
  //
  // With bForce a bad distribution is computed all the same; collinear points then give numbers
  // that are not finite. bForce stays for later computations. A list with a coordinate that is not
  // finite is never computed.
  //
  // False with the status; the plane then stays as it was.
  bool CalcPlaneFromFilteredPoints(ZuPointList* pPoints, bool bWriteBack, bool bForce);

  // A coordinate plane through the origin: mode 4 XY, 5 YZ, 6 XZ. False with TooLessPoints for
  // another mode. The filter takes no part.
  bool CalcParallelPlane(int iMode);

  // The plane through p1 and p2 normal to a coordinate plane, or to a plane. False for null. The
  // filter takes no part.
  bool CalcNormalPlane(int iMode, const ZuPoint& p1, const ZuPoint& p2);
  bool CalcNormalPlane(const ZuPlane* pPlane, const ZuPoint& p1, const ZuPoint& p2);

  // Takes ownership of the filter and deletes the one before. Null: all points are taken.
  void SetCooFilter(ZuFilter* pFilter);

  ZuPlane& GetPlane() { return m_plane; }
  const ZuPlane& GetPlane() const { return m_plane; }
  ZuPlane* GetPlanePtr() { return &m_plane; }

  // Required: the residual of the last point alone, sqrt(r_n^2 / (n + 1)); 0 for three points.
  // Applications show and compare this figure under this name. For a mean over all points use the
  // deviations written to the points.
  double GetZuPlaneSigma0() const { return m_dSigma0; }
  // Required: the root of the sum of the squared residuals, not divided by their count;
  // applications compare it under this name.
  double GetZuPlaneMediumPointDist() const { return m_dMediumPointDist; }
  // The foot points on the plane: copies of the accepted points with the deviation components taken
  // off, the residual in m_dRedu1.
  ZuPointList* GetPointsInZuPlane() { return &m_pointsInPlane; }

  eStatus GetZuPlaneStatus() const { return m_eStatus; }
  void SetZuPlaneStatus(eStatus eNew) { m_eStatus = eNew; }
  const char* GetZuPlaneStatusAsText() const;

  // Title and table of the accepted points with the lengths of their deviations. The second form
  // opens a log file of that name for appending.
  void WriteLogfile(ZuLogfile& log);
  void WriteLogfile(const String& strFileName);

 protected:
  bool CalcZuPlane(ZuPointList* pPoints);
  // The exact plane through three rows that do not stand in a line. matrix: n x 4, columns x, y, z.
  bool Approximate(ZuMatrix& matrix);
  // One adjustment along the axis of NormComp; false, the plane as it was, for a normal that is not
  // finite.
  bool Adjust(ZuMatrix& matrix);
  // 0, 1, 2 for x, y, z: the largest component of the normal, z in a tie.
  int NormComp();
  // Corners (umin, vmin), (umax, vmin), (umin, vmax) of the points in columns u, v and their
  // heights.
  bool FindEdgePoints(int u, int v, ZuMatrix& matrix, int iDominant, ZuVector& us, ZuVector& vs,
                      ZuVector& ws);
  // Fills column 4 with the residuals; the result is as GetZuPlaneSigma0 tells.
  double CalcSigma(ZuMatrix& matrix);

  ZuPlane m_plane;
  double m_dSigma0 = 0.0;
  eStatus m_eStatus = TooLessPoints;
  ZuPointList m_pointsInPlane;
  double m_dMediumPointDist = 0.0;
  ZuFilter* m_pCooFilter = nullptr;  // owned, together with the copies of this object
  ZuPointList m_filteredPoints;
  int m_iEdgePoint1 = 0;  // 0, then the rows of the second and third point; for inspection
  int m_iEdgePoint2 = 0;
  int m_iEdgePoint3 = 0;
  bool m_bForcePlane = false;

 private:
  bool CalcWithoutFilter(ZuPointList* pPoints);
  int KeepFilteredPoints(ZuPointList* pPoints);  // how many passed
  bool CalcZuPlane(ZuPointList* pPoints, int n);
  void KeepExactPoints(ZuPointList* pPoints);
  void KeepFootPoints(ZuPointList* pPoints, const ZuMatrix& matrix);
  void WriteBackDeviations(ZuPointList* pPoints) const;

  std::shared_ptr<ZuFilter> m_pFilterOwner;
};
