// Estimates a plane transformation from two lists of points with common ids, by least squares:
// unweighted, without iteration or approximate values. Each point gives two rows of bordered normal
// equations, which ZuMatrix::Cholesky solves. Of equal ids in the reference list the first counts.
//
// Projective: the linear form, as in K. Kraus, "Photogrammetry", 2007, on plane rectification.
#pragma once

#include "zu/export.h"
#include "zu/points/point_list.h"
#include "zu/transform/trafo2d.h"

class ZuRegion;

class ZU_API ZuCalcTrafo2D : public ZuTrafo2d {
 public:
  // pReference holds the target coordinates; null is an own, empty list.
  explicit ZuCalcTrafo2D(ZuPointList* pReference = nullptr);
  // A copy refers to the same lists, to its own copy of an own list.
  ZuCalcTrafo2D(const ZuCalcTrafo2D& other);
  ~ZuCalcTrafo2D() override = default;
  ZuCalcTrafo2D& operator=(const ZuCalcTrafo2D& other);

  // The transformation that carries the points of pSource onto those of the same id in the
  // reference list. False, nothing changed, when pSource holds fewer points than 2, 3, 4 or 10.
  //
  // Required: all points of pSource count for that limit, also those without a partner. Where the
  // partners do not determine the transformation, all coefficients become 0.0, the type is set and
  // the result is true: look at the residuals.
  //
  // Required: the sums are of the coordinates as they are, not reduced to a centre; stored
  // coefficients belong to them. Coordinates that are 10^k times their extent cost about 2 k
  // digits, 3 k in the projective estimate, 6 k and more in the polynomial: shift both lists to
  // their centres first where that is too much, and what is transformed afterwards with them.
  //
  // Required: only CalcTrafoPolynom takes GetActList() for a null list; the others give false.
  bool CalcTrafoHelmert(ZuPointList* pSource);  // sets GetScale() too
  bool CalcTrafoAffin(ZuPointList* pSource);
  bool CalcTrafoProjectiv(ZuPointList* pSource);
  bool CalcTrafoPolynom(ZuPointList* pSource);

  // Residuals, transformed less reference, into the points that have a partner, whose flag bit 0x20
  // is set; 0.0 into the others. Root mean squares over the partners and the worst id are kept.
  // Null is GetActList(). True always; coordinates are never changed.
  bool CalcResiduals(ZuPointList* pList);
  // The same, but the points' residuals are only zeroed: the residual of the greatest length goes
  // to (dMaxX, dMaxY), the number of points nearer than dTolerance to iWithin.
  bool CalcResiduals(double& dMaxX, double& dMaxY, int& iWithin, double dTolerance,
                     const ZuPointList* pList);

  // The highest type that so many points determine. Null is GetActList().
  eZuTrafo2DType SuggestTrafoByPointsNbr(ZuPointList* pList);
  // The same, but the affine one unless the points spread over all quadrants and the centre of the
  // region, and the polynomial for more than 12 points only.
  eZuTrafo2DType SuggestTrafoByDistrib(const ZuRegion& region, ZuPointList* pList);

  // Null is no list: no point has a partner then.
  void SetPPList(ZuPointList* pReference) { m_pPPList = pReference; }
  void SetActList(ZuPointList* pSource) { m_pActList = pSource; }
  ZuPointList* GetPPList() const { return m_pPPList; }
  ZuPointList* GetActList() const { return m_pActList; }
  unsigned int GetMaxError() const { return m_uMaxError; }  // id of the worst point, 0 without one
  double GetResidualX() const { return m_dResidualX; }      // root mean squares
  double GetResidualY() const { return m_dResidualY; }
  // Of the last Helmert estimate, from target to source; 0.0 where that was singular.
  double GetScale() const { return m_dScale; }

 protected:
  ZuPointList* m_pPPList;             // the reference list
  ZuPointList* m_pActList = nullptr;  // the source list
  ZuPointList m_lOwnList;
  unsigned int m_uMaxError = 0;
  double m_dResidualX = 0.0;
  double m_dResidualY = 0.0;
  double m_dScale = 1.0;

 private:
  bool Estimate(const ZuPointList* pSource, eZuTrafo2DType eType, double* pdSolution);
  template <class Point>
  void WalkResiduals(const ZuPointList* pList, Point&& atPartner);
};
