#include "zu/numerics/mmatrix.h"

#include <Eigen/Dense>

#include "tests/support/test.h"

namespace {

class Vector : public _MVector {
 public:
  Vector() {}
  Vector(double dW, double dX, double dY, double dZ) : _MVector(dW, dX, dY, dZ) {}
};

_MMatrix Irregular() {
  _MMatrix m;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) m[i][j] = 1.0 / (1 + i + j) + 0.3 * ((i * 5 + j * 3) % 7);
  }
  return m;
}

}  // namespace

static_assert(sizeof(_MVector) == 4 * sizeof(double) && sizeof(_MMatrix) == 16 * sizeof(double));
static_assert(std::is_trivially_copyable_v<_MVector> && std::is_trivially_copyable_v<_MMatrix>);

// The homogeneous component is passed first and stands last.
TEST(PlainMatrix, VectorTakesTheHomogeneousComponentFirst) {
  const Vector v(9.0, 1.0, 2.0, 3.0);
  EXPECT_ROW("1 3 9 9 1", v.x, v.z, v.w, v[3], v[0]);
}

TEST(PlainMatrix, LinesAreRowsAndRowsAreColumns) {
  _MMatrix m = Irregular();
  EXPECT_EQ(&m.asDblArray()[7], &m[1][3]);
  Vector v;
  m.GetLine(1, v);
  EXPECT_EQ(v.z, m[1][2]);
  m.GetRow(1, v);
  EXPECT_EQ(v.z, m[2][1]);
  EXPECT_EQ(v.w, m[3][1]);
  m.SetRow(2, Vector(4.0, 1.0, 2.0, 3.0));
  EXPECT_EQ(m[3][2], 4.0);
  m.SetLine(0, Vector(8.0, 5.0, 6.0, 7.0));
  EXPECT_EQ(m[0][3], 8.0);
}

TEST(PlainMatrix, CofactorOfEveryColumn) {
  const _MMatrix m = Irregular();
  for (int k = 0; k < 4; ++k) {
    SCOPED_TRACE(k);
    Eigen::Matrix3d minor;
    for (int i = 0; i < 3; ++i) {
      for (int j = 0, c = 0; j < 4; ++j) {
        if (j != k) minor(i, c++) = m[i][j];
      }
    }
    EXPECT_NEAR(m.Sarrus(k), minor.determinant(), 1e-13);
  }
}
