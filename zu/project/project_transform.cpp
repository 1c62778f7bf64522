#include "zu/project/project_transform.h"

#include <cmath>
#include <vector>

#include "zu/project/project.h"
#include "zu/transform/trafo3d.h"

namespace {

constexpr double kOffRotation = 1e-6;  // |R^T R - I| at most [-]

bool IsProper(const ZuTrafo3dData& t) {
  if (!(t.m_dScale > 0.0) || !std::isfinite(t.m_dScale)) return false;
  for (int i = 1; i <= 3; ++i) {
    if (!std::isfinite(t.m_vSource[i]) || !std::isfinite(t.m_vTarget[i])) return false;
    for (int j = 1; j <= 3; ++j) {
      double d = i == j ? -1.0 : 0.0;
      for (int k = 1; k <= 3; ++k) d += t.m_mRot[k][i] * t.m_mRot[k][j];
      if (!(std::fabs(d) <= kOffRotation)) return false;
    }
  }
  ZuMatrix rotation(t.m_mRot);
  return rotation.Sarrus() > 0.0;
}

void CarryOrientation(const ZuTrafo3dData& t, const ZuMatrix& map, ZuPhoto* pPhoto) {
  ZuPoint position;
  pPhoto->GetPosAOR(&position.m_dX, &position.m_dY, &position.m_dZ);
  map.PTrans3D(&position);
  pPhoto->SetPosAOR(position.m_dX, position.m_dY, position.m_dZ);
  pPhoto->SetRotAOR(t.m_mRot * pPhoto->GetRotAOR());
}

// n . x + D = 0 becomes (R n) . y + s (D + n . xs) - (R n) . xt = 0.
void CarryPlane(const ZuTrafo3dData& t, ZuPlane* p) {
  const double n[] = {p->A(), p->B(), p->C()};
  double adTurned[3] = {}, dSource = p->D(), dTarget = 0.0;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) adTurned[i] += t.m_mRot[i + 1][j + 1] * n[j];
    dSource += n[i] * t.m_vSource[i + 1];
    dTarget += adTurned[i] * t.m_vTarget[i + 1];
  }
  p->A() = adTurned[0];
  p->B() = adTurned[1];
  p->C() = adTurned[2];
  p->D() = t.m_dScale * dSource - dTarget;
}

void CarryRectification(const ZuMatrix& map, ZuZuspTrafo* p) {
  p->SetTransMat(map * p->GetTransMat());
}

// X0 of the first photo are the rows 0 to 2, those of the second the same columns; the small
// rotations about the image axes stay.
void CarryCovariance(const ZuTrafo3dData& t, ZuCovariance* p) {
  if (p->m_uPhoto == 0 || p->m_iRows < 3 || p->m_iColumns < 3) return;
  const auto uColumns = static_cast<std::size_t>(p->m_iColumns);
  const auto turn = [&](std::size_t uStart, std::size_t uStep) {
    double ad[3] = {};
    for (int i = 0; i < 3; ++i) {
      for (std::size_t k = 0; k < 3; ++k) {
        ad[i] +=
            t.m_dScale * t.m_mRot[i + 1][static_cast<int>(k) + 1] * p->m_matrix[uStart + k * uStep];
      }
    }
    for (std::size_t k = 0; k < 3; ++k) p->m_matrix[uStart + k * uStep] = ad[k];
  };
  for (std::size_t j = 0; j < uColumns; ++j) turn(j, uColumns);
  for (std::size_t i = 0; i < static_cast<std::size_t>(p->m_iRows); ++i) turn(i * uColumns, 1);
}

}  // namespace

bool ZuTransformProject(ZuProject* pProject, const ZuTrafo3dData& trafo) {
  if (!IsProper(trafo)) return false;
  const ZuMatrix map = trafo.GetAsMatrix();
  for (ZuPoint* p = pProject->ObjectPoints().First(); p != nullptr; p = p->Next()) {
    map.PTrans3D(p);
  }
  for (ZuPhoto* p = pProject->PhotoList().First(); p != nullptr; p = p->Next()) {
    if (p->HasAOR()) CarryOrientation(trafo, map, p);
    for (ZuZuspTrafo* z = p->FirstZuspTrafo(); z != nullptr; z = z->Next()) {
      CarryRectification(map, z);
    }
  }
  for (ZuPlane* p = pProject->PlaneList().First(); p != nullptr; p = p->Next()) {
    CarryPlane(trafo, p);
  }
  for (ZuOrthoPhoto* p = pProject->OrthoPhotoList().First(); p != nullptr; p = p->Next()) {
    for (ZuZuspPlaneInfo* z = p->ZuspPlaneList().First(); z != nullptr; z = z->Next()) {
      CarryRectification(map, &z->GetTrafo());
    }
    ZuRegion& size = p->GetObjectRegion();
    for (double* pd : {&size.Left(), &size.Right(), &size.Bottom(), &size.Top()}) {
      *pd *= trafo.m_dScale;
    }
  }
  std::vector<ZuCovariance> covariances;
  for (const auto& entry : pProject->Covariances().All()) covariances.push_back(entry.second);
  for (ZuCovariance& covariance : covariances) {
    CarryCovariance(trafo, &covariance);
    pProject->Covariances().Set(covariance);
  }
  return true;
}
