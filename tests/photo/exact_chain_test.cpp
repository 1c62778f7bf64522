// The exact camera both ways, the chain by it, and its derivatives.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "tests/support/cameras.h"
#include "zu/numerics/point3d.h"
#include "zu/photo/internal/camera_measured.h"
#include "zu/photo/photo.h"

namespace {

std::vector<test_cameras::NamedCamera> Cameras() {
  auto cameras = test_cameras::Calibrations();
  ZuCamera pinhole(18, 9.0);
  pinhole.SetPinholeCamera();
  cameras.push_back({"pinhole", pinhole});
  return cameras;
}

// The corrected point of mode 2 by the plain fixed point, on the camera's own formulas.
void FixedPoint(const ZuCamera& camera, double* x, double* y) {
  const double xr = *x - camera.m_dXh, yr = *y - camera.m_dYh;
  double q = xr, p = yr;
  for (int n = 0; n < 3000; ++n) {
    const double r = camera.Calc_r(q, p), d = camera.CalcdrA1A2A3(r);
    const double f = r == 0.0 ? 0.0 : camera.CalcdrAffin(q, p) / r;
    double tx, ty;
    camera.CalcTanDistort(tx, ty, q, p, r);
    const double qNew = xr - (q * f + q * d + tx);
    p = yr - (p * f + p * d + ty);
    q = qNew;
  }
  *x = q;
  *y = p;
}

TEST(ExactCamera, CorrectsToTheEndOfTheFixedPointAndAsAdjustWhereThatIsClosed) {
  for (const test_cameras::NamedCamera& entry : Cameras()) {
    const std::string& strName = entry.strName;
    const ZuCamera& camera = entry.camera;
    SCOPED_TRACE(strName);
    for (const double t : {-0.7, -0.3, 0.0, 0.2, 0.6}) {
      double x = t * camera.m_dRMax, y = 0.5 * t * camera.m_dRMax + 0.1, u = x, v = y;
      ASSERT_EQ(camera.AdjustExact(&x, &y), eCameraInverseOk);
      if (camera.m_iMode == eCameraModeCap) {
        FixedPoint(camera, &u, &v);
        EXPECT_LE(std::hypot(x - u, y - v), 1e-12);
      } else {
        camera.Adjust(&u, &v);
        EXPECT_TRUE(x == u && y == v);
      }
    }
  }
}

// q (1 - 0.01 q^2) folds at q = sqrt(100 / 3): measured points beyond have no corrected one.
TEST(ExactCamera, RefusesWhatLiesBeyondTheFold) {
  ZuCamera camera = test_cameras::Make(1, eCameraModeCap, 5.0, 0.1, 0.0, -0.01, 0.0, 0.0, 9.0);
  const double q = std::sqrt(100.0 / 3.0), m = q * 2.0 / 3.0;
  for (int n = 0; n < 16; ++n) {
    for (const double dFactor : {0.999, 1.001}) {
      const double a = 0.1 + 0.4 * n, x0 = 0.1 + dFactor * m * std::cos(a),
                   y0 = dFactor * m * std::sin(a);
      double x = x0, y = y0;
      const eCameraInverse eStatus = camera.AdjustExact(&x, &y);
      EXPECT_EQ(eStatus, dFactor < 1.0 ? eCameraInverseOk : eCameraInverseOutside);
      EXPECT_LT(dFactor < 1.0 ? std::hypot(x, y) : std::hypot(x - x0, y - y0), q * dFactor);
    }
  }
}

// Analytic derivatives against differences of the model.
TEST(ExactCamera, DerivativesAreThoseOfTheModel) {
  double ZuCamera::*const fields[camera_measured::kParameters] = {
      &ZuCamera::m_dC,  &ZuCamera::m_dXh, &ZuCamera::m_dYh, &ZuCamera::m_dA1, &ZuCamera::m_dA2,
      &ZuCamera::m_dA3, &ZuCamera::m_dB1, &ZuCamera::m_dB2, &ZuCamera::m_dC1, &ZuCamera::m_dC2};
  for (const test_cameras::NamedCamera& entry : Cameras()) {
    const std::string& strName = entry.strName;
    const ZuCamera& camera = entry.camera;
    if (camera.m_iMode == eCameraModeViva) continue;
    SCOPED_TRACE(strName);
    const double x = 0.11 * camera.m_dC, y = -0.07 * camera.m_dC;
    double mx, my;
    camera_measured::Derivative derivative;
    ASSERT_TRUE(camera_measured::Measured(camera, x, y, &mx, &my, &derivative));
    const auto check = [&](auto change, double dStep, double dx, double dy) {
      double m[2][2];
      for (const int i : {0, 1}) {
        ZuCamera moved(camera);
        double xMoved = x, yMoved = y;
        change(moved, xMoved, yMoved, i == 0 ? dStep : -dStep);
        camera_measured::Measured(moved, xMoved, yMoved, &m[i][0], &m[i][1], nullptr);
      }
      const double dScale = 1e-7 * (std::fabs(dx) + std::fabs(dy)) + 1e-14 / dStep;
      EXPECT_NEAR((m[0][0] - m[1][0]) / (2.0 * dStep), dx, dScale);
      EXPECT_NEAR((m[0][1] - m[1][1]) / (2.0 * dStep), dy, dScale);
    };
    const auto& J = derivative.point;
    check([](auto&, double& u, double&, double h) { u += h; }, 1e-5, J[0][0], J[1][0]);
    check([](auto&, double&, double& v, double h) { v += h; }, 1e-5, J[0][1], J[1][1]);
    for (int k = 0; k < camera_measured::kParameters; ++k) {
      SCOPED_TRACE(k);
      const double dLength =
          std::max({1.0, std::hypot(derivative.parameter[0][k], derivative.parameter[1][k])});
      check(
          [&](ZuCamera& moved, double& u, double& v, double h) {
            moved.*fields[k] += h;
            if (k != camera_measured::eC) return;
            u *= moved.m_dC / camera.m_dC;
            v *= moved.m_dC / camera.m_dC;
          },
          1e-4 / dLength, derivative.parameter[0][k], derivative.parameter[1][k]);
    }
  }
}

ZuTrafo2d Trafo(eZuTrafo2DType eType, std::initializer_list<double> values) {
  struct Settable : ZuTrafo2d {
    Settable(eZuTrafo2DType eSet, std::initializer_list<double> set) {
      m_eType = eSet;
      std::copy(set.begin(), set.end(), m_adCoef);
    }
  };
  return Settable(eType, values);
}

// What an adjustment projects with and what the chain converts with is one model.
TEST(ExactChain, ProjectsAsTheAdjustmentAndComesBack) {
  for (const test_cameras::NamedCamera& entry : Cameras()) {
    const std::string& strName = entry.strName;
    const ZuCamera& camera = entry.camera;
    for (const bool bPolynomial : {false, true}) {
      SCOPED_TRACE(strName + (bPolynomial ? ", polynomial" : ""));
      ZuPhoto photo(1, "a.jpg");
      photo.SetCamera(camera);
      photo.SetRotAOR(-0.16, 0.27, -0.01);
      photo.SetPosAOR(18.0, 8.0, 37.0);
      photo.SetHasAOR(true);
      const double s = camera.m_dC / 400.0;  // mm a pixel
      photo.SetReseauPreTrafo(Trafo(eZuTrafo2DAffin, {-319.5, 1.0, 1e-3, 239.5, 2e-3, -1.0}));
      photo.SetReseauMainTrafo(
          bPolynomial
              ? Trafo(eZuTrafo2DPolynomial, {0, s, 0, 1e-5 * s, 0,        0, 0, 0, 0, 1e-8 * s,  //
                                             0, 0, s, 0,        2e-5 * s, 0, 0, 0, 0, 0})
              : Trafo(eZuTrafo2DHelmert, {0.0, s, 0.0, 0.01 * s}));
      photo.SetPolyInvTrafo(Trafo(eZuTrafo2DPolynomial, {0, 1 / s, 0,     0, 0, 0, 0, 0, 0, 0,  //
                                                         0, 0,     1 / s, 0, 0, 0, 0, 0, 0, 0}));
      const auto convert = [&](eConvertBikoMode eMode, bool bFlip, ZuPoint3d* p) {
        ZuBikoTransform transform(&photo, eMode, bFlip);
        transform.SetExact(true);
        return transform.Transform(*p);
      };
      for (const double t : {-0.7, -0.2, 0.3, 0.6}) {
        double v[2] = {0.13 * t * camera.m_dC, 0.11 * camera.m_dC * (0.3 - t)};
        const double* R = photo.GetRotAOR().GetData();
        ZuPoint3d object(0, 0, 0), biko, digi, back;
        const auto at = [&](int i) {
          return 5.0 * (R[3 * i] * v[0] + R[3 * i + 1] * v[1] - R[3 * i + 2] * camera.m_dC);
        };
        object = biko = digi = ZuPoint3d(18.0 + at(0), 8.0 + at(1), 37.0 + at(2));
        ASSERT_TRUE(convert(eObjectToBiko, false, &biko));
        double mx, my;
        if (camera_measured::Measured(camera, v[0], v[1], &mx, &my, nullptr)) {
          EXPECT_LE(std::hypot(biko.x - mx, biko.y - my), 1e-12);
        }
        ASSERT_TRUE(convert(eObjectToDigi, false, &digi));
        back = digi;
        ASSERT_TRUE(convert(eDigiToAdjusted, false, &back));
        EXPECT_LE(std::hypot(back.x - v[0], back.y - v[1]), 2e-12);
        ASSERT_TRUE(convert(eAdjustedToDigi, true, &back));
        ASSERT_TRUE(convert(eDigiToBiko, true, &back));
        EXPECT_LE(std::hypot(back.x - biko.x, back.y - biko.y), 2e-12);
      }
    }
  }
}

}  // namespace
