// Matrices of a rectification from its definition points, and coordinates in planes.
#include "zu/rectify/calc_zusp.h"

#include <cmath>
#include <random>

#include "tests/support/cameras.h"
#include "tests/support/test.h"
#include "zu/rectify/plane.h"
#include "zu/rectify/plane_frame.h"
#include "zu/rectify/zusp_trafo.h"

namespace {

// A wall through (4000100, 5200, 300), turned by 30 degrees, seen slantingly from the front: object
// points of plane coordinates (u, v), v up, and their image by a projective map.
struct Wall {
  ZuPoint Object(unsigned uId, double u, double v) const {
    return ZuPoint(uId, 4000100.0 + 0.5 * std::sqrt(3.0) * u, 5200.0 + 0.5 * u, 300.0 + v);
  }
  ZuPoint Image(unsigned uId, double u, double v) const {
    const double w = 1.0 + 0.02 * u - 0.004 * v;
    return ZuPoint(uId, (1.1 * u + 0.1 * v - 8.0) / w, (0.05 * u + 1.2 * v - 6.0) / w);
  }
};

void AddPoint(const Wall& wall, unsigned uId, double u, double v, ZuZuspTrafo* pTrafo) {
  pTrafo->GetPPList().AddPoint(wall.Object(uId, u, v));
  pTrafo->GetBikoList().AddPoint(wall.Image(uId, u, v));
}

constexpr double kGrid[][2] = {{0, 0}, {12, 0}, {12, 9}, {0, 9}, {6, 4}, {3, 8}};

TEST(CalcZusp, CarriesEveryPointOfTheWallToItsPlace) {
  for (const unsigned uPoints : {4U, 6U}) {
    ZuZuspTrafo trafo;
    const Wall wall;
    for (unsigned i = 0; i < uPoints; ++i) AddPoint(wall, i + 1, kGrid[i][0], kGrid[i][1], &trafo);
    trafo.SetName("wall");
    ZuPoint before(1, 1.0, 1.0);
    trafo.InvTransform(&before);  // keeps the inverses of the matrices to come
    ZuCalcZusp calc;
    ASSERT_TRUE(calc.Calc(&trafo)) << calc.GetStatusText();
    EXPECT_EQ(calc.GetResiduals().size(), uPoints);
    EXPECT_NEAR(calc.GetSigma0(), 0.0, 1e-8);
    for (const auto& place : {std::pair{1.0, 7.0}, {11.0, 2.5}, {-2.0, -3.0}}) {
      const ZuPoint object = wall.Object(9, place.first, place.second);
      const ZuPoint image = wall.Image(9, place.first, place.second);
      ZuPoint p(image);
      trafo.Transform(&p, &p);
      EXPECT_NEAR(std::hypot(p.m_dX - object.m_dX, p.m_dY - object.m_dY, p.m_dZ - object.m_dZ), 0.0,
                  1e-7);
      ZuPoint back(object);
      trafo.InvTransform(&back);
      EXPECT_NEAR(std::hypot(back.m_dX - image.m_dX, back.m_dY - image.m_dY), 0.0, 1e-6);
    }
    // Upright, not mirrored: the plane's y is the height, x to the right grows with u.
    const ZuMatrix& M = trafo.GetTransMat();
    EXPECT_NEAR(M.GetElem(3, 2), 1.0, 1e-9);
    EXPECT_NEAR(M.GetElem(1, 1), 0.5 * std::sqrt(3.0), 1e-9);
    EXPECT_EQ(trafo.GetName(), "wall");
  }
}

// The sum of squares rises in every direction from the solution; distortion is taken off exactly.
TEST(CalcZusp, HasTheLeastSquares) {
  const ZuCamera camera = test_cameras::ChessboardCap();
  std::mt19937 random(3);
  std::normal_distribution<double> noise(0.0, 0.01);
  ZuZuspTrafo trafo;
  trafo.SetDistortCameraParam(camera);
  trafo.SetDistortCameraFlag(true);
  for (unsigned i = 0; i < 12; ++i) {
    const double x = -2.0 + 1.3 * (i % 4), y = -1.5 + 1.4 * (i / 4);
    const double w = 1.0 + 0.05 * x - 0.08 * y;
    double mx = x, my = y;
    ASSERT_EQ(camera.InvAdjustExact(&mx, &my), eCameraInverseOk);
    trafo.GetBikoList().AddPoint(ZuPoint(i + 1, mx, my));
    trafo.GetPPList().AddPoint(
        ZuPoint(i + 1, (5.0 * x - y) / w + noise(random), (x + 6.0 * y) / w + noise(random), 2.5));
  }
  ZuCalcZusp calc;
  ASSERT_TRUE(calc.Calc(&trafo));
  EXPECT_NEAR(calc.GetSigma0(), 0.01, 0.006);
  EXPECT_EQ(trafo.GetTransMat().GetElem(3, 4), 2.5);
  const auto sum = [&](const ZuMatrix& H) {
    double d = 0.0;
    const ZuPoint* pObject = trafo.GetPPList().First();
    for (const ZuPoint* p = trafo.GetBikoList().First(); p != nullptr;
         p = p->Next(), pObject = pObject->Next()) {
      double x = p->m_dX, y = p->m_dY;
      camera.AdjustExact(&x, &y);
      H.PTrans2D(&x, &y);
      d += std::pow(x - pObject->m_dX, 2) + std::pow(y - pObject->m_dY, 2);
    }
    return d;
  };
  const double dLeast = sum(trafo.GetZuspMat());
  EXPECT_NEAR(dLeast, 16.0 * calc.GetSigma0() * calc.GetSigma0(), 1e-12);
  for (int i = 0; i < 8; ++i) {
    for (const double dStep : {-1e-4, 1e-4}) {
      ZuMatrix H(trafo.GetZuspMat());
      H.GetData()[i] += dStep;
      EXPECT_GT(sum(H), dLeast) << i;
    }
  }
}

TEST(CalcZusp, RefusesWhatDeterminesNothing) {
  const Wall wall;
  const struct {
    std::vector<std::pair<double, double>> points;
    ZuCalcZusp::eStatus eStatus;
  } rows[] = {{{{0, 0}, {1, 0}, {1, 1}}, ZuCalcZusp::TooLessPoints},
              {{{0, 0}, {1, 0}, {2, 0}, {1, 1}}, ZuCalcZusp::BadPointDistrib},
              {{{0, 0}, {1, 1}, {2, 2}, {5, 5}}, ZuCalcZusp::BadPointDistrib},
              {{{1, 1}, {1, 1}, {1, 1}, {1, 1}}, ZuCalcZusp::BadPointDistrib},
              {{{0, 0}, {1, 0}, {NAN, 1}, {1, 1}}, ZuCalcZusp::NotFinite}};
  for (const auto& row : rows) {
    ZuZuspTrafo trafo;
    for (const auto& p : row.points) {
      AddPoint(wall, static_cast<unsigned>(trafo.GetPPList().Count()) + 1, p.first, p.second,
               &trafo);
    }
    ZuCalcZusp calc;
    EXPECT_FALSE(calc.Calc(&trafo));
    EXPECT_EQ(calc.GetStatus(), row.eStatus) << calc.GetStatusText();
    EXPECT_EQ(trafo.GetZuspMat().GetElem(1, 1), 1.0);
  }
}

TEST(PlaneFrame, IsUprightOnWallsAndAMapOnTheGround) {
  const double planes[][4] = {{0, -2, 0, 6}, {3, 4, 0, -10}, {1, -1, 1, 5}, {0.001, 0.002, -1, 7}};
  for (const auto& v : planes) {
    ZuPlane plane;
    plane.A() = v[0], plane.B() = v[1], plane.C() = v[2], plane.D() = v[3];
    ZuMatrix M(4, 4);
    ASSERT_TRUE(ZuMakePlaneFrame(plane, &M));
    const bool bMap = ZuIsMapPlane(plane);
    EXPECT_EQ(bMap, v[2] == -1);
    for (const double x : {-3.0, 8.0}) {
      for (const double y : {-2.0, 5.0}) {
        double P[3];
        for (int i = 0; i < 3; ++i) P[i] = M[i + 1][1] * x + M[i + 1][2] * y + M[i + 1][4];
        EXPECT_NEAR(plane.Dist(P[0], P[1], P[2]), 0.0, 1e-12);
        if (bMap) {
          EXPECT_EQ(P[0], x);
          EXPECT_EQ(P[1], y);
        } else if (v[2] == 0) {
          EXPECT_NEAR(P[2], y, 1e-12);
        }
      }
    }
    if (bMap) continue;
    EXPECT_EQ(M[3][1], 0.0);  // x is horizontal
    EXPECT_GT(M[3][2], 0.0);  // y goes up
    // Right-handed with the normal.
    EXPECT_NEAR(M[1][1] * M[2][2] - M[2][1] * M[1][2], M[3][3], 1e-12);
  }
  ZuMatrix M(4, 4);
  EXPECT_FALSE(ZuMakePlaneFrame(ZuPlane(), &M));
}

}  // namespace
