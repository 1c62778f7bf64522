#include "zu/photo/rotate_photo_base.h"

#include <cmath>

#include "zu/photo/photo.h"

namespace {

constexpr double kHalfPi = 1.5707963267948966;

// Quarter turns of a rotation value.
int QuarterTurns(int iRotation) {
  constexpr int kTurns[] = {0, 3, 2, 1};
  return iRotation >= 0 && iRotation < 4 ? kTurns[iRotation] : 0;
}

// Width and height exchanged, the lower left corner kept: the centre moves.
ZuRegion Turned(const ZuRegion& region) {
  ZuRegion turned(region);
  turned.Right() = region.Left() + region.Height();
  turned.Top() = region.Bottom() + region.Width();
  return turned;
}

// The centre in the system whose pixels have their centres at whole numbers plus a half.
ZuPoint PixelCentre(const ZuRegion& region) {
  ZuPoint centre = region.GetCenter();
  centre.m_dX += 0.5;
  centre.m_dY += 0.5;
  return centre;
}

}  // namespace

void ZuRotatePhotoBase::AdjustReseauOrZuspTrafo(int, int iNewRotation) {
  const int n = QuarterTurns(iNewRotation);
  if (n == 0 || m_pPhoto == nullptr || m_pPhoto->IsOrthoPhoto() || !m_pPhoto->IsActive()) return;

  const double t = n * kHalfPi;
  ZuMatrix Q(3, 3), M(3, 3), T(3, 3);
  Q.SetIdent();
  Q[1][1] = std::cos(t);
  Q[1][2] = -std::sin(t);
  Q[2][1] = std::sin(t);
  Q[2][2] = std::cos(t);
  m_pPhoto->GetReseauPreTrafo().BuildMatrix(&M);

  // The origin of Pre, seen from the image's centre, turned with the image.
  ZuPoint p(0, 0.0, 0.0);
  m_pPhoto->ConvertBiko(&p, ePreToDigi);
  const ZuPoint c = PixelCentre(m_pPhoto->GetDigiRegion());
  double s = 1.0;
  if (n == 2) {
    s = -1.0;
  } else {
    m_pPhoto->SetDigiRegion(Turned(m_pPhoto->GetDigiRegion()));
  }
  double dx = p.m_dX - c.m_dX, dy = p.m_dY - c.m_dY;
  Q.PTrans2D(&dx, &dy);
  const ZuPoint c2 = PixelCentre(m_pPhoto->GetDigiRegion());
  double u = c2.m_dX + dx * s, v = c2.m_dY + dy * s;

  M = Q * M;
  M.PTrans2D(&u, &v);
  T.SetIdent();
  T[1][3] = -u;
  T[2][3] = -v;
  M = T * M;
  ZuReseauTrafo pre(m_pPhoto->GetReseauPreTrafo());
  pre.SetFromMatrix(M, eZuTrafo2DHelmert);
  m_pPhoto->SetReseauPreTrafo(pre);
}
