#include "zu/numerics/affin_map3d.h"

#include "zu/numerics/angle.h"
#include "zu/numerics/line3d.h"
#include "zu/numerics/solver.h"

namespace {

// Below this |cos b| the second angle counts as a right angle [-].
constexpr double kRightAngle = 1e-6;

// Determinant of the 2 x 2 block of rows i, j and columns k, l.
double Minor(const ZuAffinMap3d& m, int i, int j, int k, int l) {
  return m[i][k] * m[j][l] - m[i][l] * m[j][k];
}

ZuVector3d SignedUnitLine(const ZuAffinMap3d& m, int i, double dSign) {
  return Normalized(ZuVector3d(m[i][0], m[i][1], m[i][2])) * dSign;
}

}  // namespace

ZuAffinMap3d::ZuAffinMap3d() {
  for (int i = 0; i < 16; ++i) m_adElem[i] = i % 5 == 0 ? 1.0 : 0.0;
}

ZuAffinMap3d::ZuAffinMap3d(const ZuFrame3d& frame) {
  ZuAffinMap3d axes;
  axes.SetRow(0, frame.v1());
  axes.SetRow(1, frame.v2());
  axes.SetRow(2, frame.v3());
  for (int j = 0; j < 3; ++j) axes[3][j] = 0.0;
  *this = Translate(frame.Origin().AsVector()) * axes;
}

ZuAffinMap3d::ZuAffinMap3d(const ZuFrame3d& from, const ZuFrame3d& to)
    : ZuAffinMap3d(ZuAffinMap3d(to) * Inv(ZuAffinMap3d(from))) {}

ZuAffinMap3d ZuAffinMap3d::operator*(const ZuAffinMap3d& m) const {
  ZuAffinMap3d product;
  for (int i = 0; i < 4; ++i) {
    const double* a = (*this)[i];
    for (int j = 0; j < 4; ++j) {
      product[i][j] = a[0] * m[0][j] + a[1] * m[1][j] + a[2] * m[2][j] + a[3] * m[3][j];
    }
  }
  return product;
}

void ZuAffinMap3d::Transformer(const _MVector* pIn, _MVector* pOut) const {
  const double* m = m_adElem;
  const double x = pIn->x, y = pIn->y, z = pIn->z, w = pIn->w;
  pOut->x = m[0] * x + m[1] * y + m[2] * z + m[3] * w;
  pOut->y = m[4] * x + m[5] * y + m[6] * z + m[7] * w;
  pOut->z = m[8] * x + m[9] * y + m[10] * z + m[11] * w;
  pOut->w = w;
}

ZuPoint3d ZuAffinMap3d::Transform(const ZuPoint3d& p) const {
  ZuPoint3d result;
  Transformer(&p, &result);
  result.w = 1.0;
  return result;
}

ZuVector3d ZuAffinMap3d::Transform(const ZuVector3d& v) const {
  ZuVector3d result;
  Transformer(&v, &result);
  result.w = 0.0;
  return result;
}

ZuFrame3d ZuAffinMap3d::Transform(const ZuFrame3d& frame) const {
  return ZuFrame3d(Transform(frame.Origin()), Transform(frame.v1()), Transform(frame.v2()),
                   Transform(frame.v3()));
}

ZuLine3d ZuAffinMap3d::Transform(const ZuLine3d& line) const {
  ZuPoint3d start, end;
  Transformer(&line.getStart(), &start);
  Transformer(&line.getEnd(), &end);
  return ZuLine3d(start, end);
}

double ZuAffinMap3d::Det() const {
  const ZuAffinMap3d& m = *this;
  return m[0][0] * Minor(m, 1, 2, 1, 2) - m[0][1] * Minor(m, 1, 2, 0, 2) +
         m[0][2] * Minor(m, 1, 2, 0, 1);
}

double Det(ZuAffinMap3d& m) { return m.Det(); }

int ZuAffinMap3d::Invert() {
  const double dDet = Det();
  if (dDet == 0.0) return 1;

  const ZuAffinMap3d m = *this;
  const double dScale = 1.0 / dDet;
  const double adjugate[3][3] = {
      {Minor(m, 1, 2, 1, 2), -Minor(m, 0, 2, 1, 2), Minor(m, 0, 1, 1, 2)},
      {-Minor(m, 1, 2, 0, 2), Minor(m, 0, 2, 0, 2), -Minor(m, 0, 1, 0, 2)},
      {Minor(m, 1, 2, 0, 1), -Minor(m, 0, 2, 0, 1), Minor(m, 0, 1, 0, 1)}};
  *this = ZuAffinMap3d();
  for (int i = 0; i < 3; ++i) {
    double* line = (*this)[i];
    for (int j = 0; j < 3; ++j) line[j] = adjugate[i][j] * dScale;
    line[3] = -(line[0] * m[0][3] + line[1] * m[1][3] + line[2] * m[2][3]);
  }
  return 0;
}

ZuAffinMap3d ZuAffinMap3d::Inv(const ZuAffinMap3d& m) {
  ZuAffinMap3d inverse = m;
  inverse.Invert();
  return inverse;
}

void ZuAffinMap3d::GetCoordSystem(ZuPoint3d& o, ZuVector3d& a, ZuVector3d& b, ZuVector3d& c) const {
  _MVector* const columns[] = {&a, &b, &c, &o};
  for (int j = 0; j < 4; ++j) {
    columns[j]->x = (*this)[0][j];
    columns[j]->y = (*this)[1][j];
    columns[j]->z = (*this)[2][j];
  }
}

void ZuAffinMap3d::GetRotAngles(const ZuAffinMap3d& m, double* pdX, double* pdY, double* pdZ) {
  const double dSign = m.Det() >= 0.0 ? 1.0 : -1.0;
  const ZuVector3d r1 = SignedUnitLine(m, 0, dSign);
  const ZuVector3d r2 = SignedUnitLine(m, 1, dSign);
  const ZuVector3d r3 = SignedUnitLine(m, 2, dSign);

  *pdY = NormAngle(-std::asin(r1.z));
  const double c = std::cos(*pdY);
  if (std::fabs(c) < kRightAngle) {
    *pdX = NormAngle(std::asin(r3.y / c));
    *pdZ = NormAngle(std::asin(r1.y / c));
  } else {
    *pdZ = 0.0;
    *pdX = NormAngle(std::asin(r2.x));
  }
}

ZuAffinMap3d MapEcsToWcs(const ZuVector3d& n) {
  ZuVector3d u, v;
  ArbAxisAlg(n, u, v);
  return ZuAffinMap3d(ZuFrame3d(ZuPoint3d(), u, v, n));
}

ZuPoint3d AffinCombination(const ZuPoint3d& p, const ZuPoint3d& q, double a, double b) {
  return p + (b / (a + b)) * (q - p);
}
