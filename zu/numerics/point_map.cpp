// Projective maps of points and point lists.
#include <cmath>

#include "zu/numerics/matrix.h"
#include "zu/numerics/solver.h"
#include "zu/numerics/vector3d.h"
#include "zu/points/point_list.h"

namespace {

// Below this a homogeneous component counts as zero and the point stays where it is [-].
constexpr double kAtInfinity = 1e-10;

}  // namespace

bool ZuMatrix::PTrans2D(double* x, double* y) const {
  const double* e = m_pdData;
  const double w = e[6] * *x + e[7] * *y + e[8];
  if (std::fabs(w) < kAtInfinity) return false;
  const double dX = (e[0] * *x + e[1] * *y + e[2]) / w;
  const double dY = (e[3] * *x + e[4] * *y + e[5]) / w;
  *x = dX;
  *y = dY;
  return true;
}

bool ZuMatrix::PTrans2D(ZuPoint* pPoint) const { return PTrans2D(&pPoint->m_dX, &pPoint->m_dY); }

bool ZuMatrix::PTrans2D(ZuVector3d* pVector) const { return PTrans2D(&pVector->x, &pVector->y); }

bool ZuMatrix::PTrans3D(double* x, double* y, double* z) const {
  const double* e = m_pdData;
  const double w = e[12] * *x + e[13] * *y + e[14] * *z + e[15];
  if (std::fabs(w) < kAtInfinity) return false;
  const double dX = (e[0] * *x + e[1] * *y + e[2] * *z + e[3]) / w;
  const double dY = (e[4] * *x + e[5] * *y + e[6] * *z + e[7]) / w;
  const double dZ = (e[8] * *x + e[9] * *y + e[10] * *z + e[11]) / w;
  *x = dX;
  *y = dY;
  *z = dZ;
  return true;
}

bool ZuMatrix::PTrans3D(ZuPoint* pPoint) const {
  return PTrans3D(&pPoint->m_dX, &pPoint->m_dY, &pPoint->m_dZ);
}

int Transform2D(ZuPointList* pList, const ZuMatrix& m) {
  if (pList == nullptr) return 0;
  int iVisited = 0;
  for (ZuPoint* p = pList->First(); p != nullptr; p = p->Next(), ++iVisited) m.PTrans2D(p);
  return iVisited;
}

int Transform3D(ZuPointList* pList, const ZuMatrix& m) {
  if (pList == nullptr) return 0;
  int iVisited = 0;
  for (ZuPoint* p = pList->First(); p != nullptr; p = p->Next(), ++iVisited) m.PTrans3D(p);
  return iVisited;
}
