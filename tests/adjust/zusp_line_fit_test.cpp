// A facade seen at a slant: its plane from lines alone, and lines that tell none.
#include "zu/adjust/zusp_line_fit.h"

#include <complex>
#include <random>

#include "tests/support/test.h"
#include "zu/adjust/internal/image_ray.h"
#include "zu/photo/zusp_conditions.h"
#include "zu/rectify/zusp_trafo.h"

namespace {

using Complex = std::complex<double>;

constexpr double kPixel = 0.006;  // [mm], 4000 x 3000 of them

// A lens that moves the corners of the picture by 40 pixels.
ZuCamera Lens() {
  ZuCamera camera(1, 20.0);
  camera.m_iMode = eCameraModeCap;
  camera.m_dXh = 0.12;
  camera.m_dYh = -0.08;
  camera.m_dA1 = -2e-4;
  camera.m_dA2 = 3e-7;
  camera.m_dC1 = 1e-5;
  camera.m_dR0 = 9.0;
  camera.m_dRMax = 16.0;
  return camera;
}

// Windows in rows and columns [m]; the photo is turned about all axes.
class Facade {
 public:
  Facade() {
    zu::internal::Pose pose;
    const double adTurn[6] = {0.3, 0.45, 0.06, 7.8, -5.0, 17.0};
    zu::internal::MovePose(adTurn, &pose);
    m_pose = pose;
    for (int iRow = 0; iRow < 3; ++iRow) {
      for (int iColumn = 0; iColumn < 4; ++iColumn) {
        for (const Complex corner :
             {Complex(0, 0), Complex(2.2, 0), Complex(0, 2), Complex(2.2, 2)}) {
          corners.push_back(Complex(3.4 * iColumn - 6.0, 3.1 * iRow - 4.0) + corner);
        }
      }
    }
  }

  // Measured points of the corners, ids from 1, with noise.
  void Measure(double dNoise, ZuZuspTrafo* pTrafo) {
    std::normal_distribution<double> noise(0.0, dNoise > 0.0 ? dNoise * kPixel : 1.0);
    for (size_t i = 0; i < corners.size(); ++i) {
      const double P[3] = {corners[i].real(), corners[i].imag(), 0.0};
      double m[2] = {};
      EXPECT_TRUE(zu::internal::Project(Lens(), m_pose, P, m, nullptr));
      EXPECT_LT(std::fabs(m[0]), 12.0);
      EXPECT_LT(std::fabs(m[1]), 9.0);
      for (double& d : m) d += dNoise > 0.0 ? noise(m_random) : 0.0;
      pTrafo->GetBikoList().AddPoint(ZuPoint(static_cast<unsigned>(i + 1), m[0], m[1]));
    }
    pTrafo->SetDistortCameraParam(Lens());
    pTrafo->SetDistortCameraFlag(true);
  }

  // The edges that rows and columns of windows have in common, from end to end: those of one
  // direction parallel, the first two perpendicular. In lines 1 to 6 and 7 to 14.
  static void Define(ZuZuspTrafo* pTrafo) {
    ZuZuspParallelDef& def = pTrafo->GetParallelDef();
    for (unsigned u : {1U, 3U, 17U, 19U, 33U, 35U}) def.MakeDefLine(u, u + 13);
    for (unsigned u = 1; u <= 13; u += 4) {
      def.MakeDefLine(u, u + 34);
      def.MakeDefLine(u + 1, u + 35);
    }
    for (unsigned u = 2; u <= 14; ++u) {
      if (u != 7) def.MakeConstraintDef(u < 7 ? 1 : 7, u, eConstraintParallel);
    }
    def.MakeConstraintDef(1, 7, eConstraintPerpendicular);
  }

  // Of the true corners in the rectified picture, as far as a plane similarity does not take it, in
  // pixels of the mean size [px].
  template <class Fit>
  double CornerError(const Fit& fit) {
    ZuZuspTrafo exact;
    Measure(0.0, &exact);
    fit.Store(&exact);
    Complex meanA, meanB, product;
    std::vector<Complex> rectified;
    for (const ZuPoint* p = exact.GetBikoList().First(); p != nullptr; p = p->Next()) {
      ZuPoint q(*p);
      Lens().AdjustExact(&q.m_dX, &q.m_dY);
      exact.SetDistortCameraFlag(false);
      exact.Transform(&q, &q);
      rectified.emplace_back(q.m_dX, q.m_dY);
    }
    const double n = static_cast<double>(corners.size());
    for (const Complex& z : corners) meanA += z / n;
    for (const Complex& z : rectified) meanB += z / n;
    double dSquares = 0.0, dError = 0.0;
    for (size_t i = 0; i < corners.size(); ++i) {
      product += std::conj(rectified[i] - meanB) * (corners[i] - meanA);
      dSquares += std::norm(rectified[i] - meanB);
    }
    for (size_t i = 0; i < corners.size(); ++i) {
      dError += std::norm(product / dSquares * (rectified[i] - meanB) - (corners[i] - meanA)) / n;
    }
    return std::sqrt(dError) / (17.0 / 20.0 * kPixel);  // some 17 m away
  }

  std::vector<Complex> corners;

 private:
  zu::internal::Pose m_pose;
  std::mt19937 m_random{7};
};

TEST(ZuspLineFit, RectifiesAFacade) {
  for (const bool bEstimateC : {false, true}) {
    Facade facade;
    ZuZuspTrafo trafo;
    facade.Measure(0.2, &trafo);
    Facade::Define(&trafo);
    trafo.GetParallelDef().GetLines().First()->m_iXAxis = 1;
    trafo.GetParallelDef().GetLines().First()->m_dValue = 12.4;
    ZuZuspLineOptions options;
    options.bEstimateC = bEstimateC;
    ZuCamera camera = Lens();
    if (bEstimateC) camera.m_dC = 26.0;
    const ZuZuspLineFit fit = ZuFitZuspLines(trafo, camera, options);
    ASSERT_EQ(fit.eStatus, ZuAdjustStatus::Good) << fit.strWhy;
    EXPECT_EQ(fit.iRedundancy, bEstimateC ? 10 : 11);
    EXPECT_LT(facade.CornerError(fit), 0.3) << "c " << fit.dC;
    EXPECT_NEAR(fit.dSigma0 / (0.2 * kPixel), 1.0, 0.5);
    if (bEstimateC) {
      EXPECT_NEAR(fit.dC, 20.0, 4.0 * fit.dCSd);
    }
    // The first line is the X axis, from the origin, as long as told. Inverses kept of the matrices
    // before go with them.
    ZuPoint there(1, 3.0, 2.0, 0.0), back(there);
    trafo.InvTransform(&back);
    fit.Store(&trafo);
    trafo.SetDistortCameraFlag(false);
    trafo.Transform(&there, &back);
    trafo.InvTransform(&back);
    EXPECT_NEAR(std::hypot(back.m_dX - there.m_dX, back.m_dY - there.m_dY), 0.0, 1e-9);
    ZuPoint ends[2] = {*trafo.GetBikoList().First(), *trafo.GetBikoList().GetPoints().Find(14)};
    for (ZuPoint& end : ends) {
      Lens().AdjustExact(&end.m_dX, &end.m_dY);
      trafo.Transform(&end, &end);
    }
    EXPECT_NEAR(std::hypot(ends[0].m_dX, ends[0].m_dY), 0.0, 0.01);
    EXPECT_NEAR(ends[1].m_dX - ends[0].m_dX, 12.4, 0.01);
    EXPECT_NEAR(ends[1].m_dY, 0.0, 0.01);
    for (const ZuZuspLineResidual& line : fit.lines) {
      EXPECT_TRUE(line.bUsed);
      EXPECT_LT(line.dAcross, 4.0 * 0.2 * kPixel);
    }
  }
}

// Predicted standard deviations of tilt and constant are those of many measurements.
// By a known ratio of two lengths in the place of the camera constant.
TEST(ZuspConditions, RectifyTheFacadeWithoutTheCameraConstant) {
  Facade facade;
  ZuZuspTrafo trafo;
  facade.Measure(0.2, &trafo);
  Facade::Define(&trafo);
  trafo.GetParallelDef().GetLines().First()->m_iXAxis = 1;
  trafo.GetParallelDef().GetLines().First()->m_dValue = 12.4;
  ZuZuspConditions conditions(trafo);
  EXPECT_EQ(conditions.Calc(), eConditionsOpen);
  EXPECT_EQ(conditions.GetFree(), "shear against the ratio of the axes");
  ZuConditionLine line;
  ASSERT_TRUE(ZuParseConditionLine("length 1 35 8.2", &line));
  ASSERT_TRUE(conditions.Add(line));
  line.points[1] = "99";
  EXPECT_FALSE(conditions.Add(line));
  ASSERT_EQ(conditions.Calc(), eConditionsOk);
  EXPECT_EQ(conditions.GetRedundancy(), 10);
  EXPECT_NEAR(conditions.GetSigma0() / kPixel, 0.2, 0.1);
  EXPECT_LT(facade.CornerError(conditions), 0.2);
  // Point 1 is the origin, and 14 lies 12.4 along x.
  trafo.SetZuspMat(conditions.GetZuspMat());
  ZuPoint p(*trafo.GetBikoList().GetPoints().TZuListHeader<ZuPoint>::Find(14));
  trafo.Transform(&p, &p);
  EXPECT_NEAR(p.m_dX, 12.4, 0.02);
  EXPECT_NEAR(p.m_dY, 0.0, 0.02);
}

TEST(ZuspLineFit, PredictsItsErrors) {
  Facade facade;
  ZuZuspLineOptions options;
  options.bEstimateC = true;
  const int iRuns = 150;
  double dC = 0.0, dCPredicted = 0.0, dTurn = 0.0, dTurnPredicted = 0.0;
  ZuZuspTrafo exact;
  facade.Measure(0.0, &exact);
  Facade::Define(&exact);
  const ZuMatrix R = ZuFitZuspLines(exact, Lens(), options).rotation;
  for (int n = 0; n < iRuns; ++n) {
    ZuZuspTrafo trafo;
    facade.Measure(0.2, &trafo);
    Facade::Define(&trafo);
    const ZuZuspLineFit fit = ZuFitZuspLines(trafo, Lens(), options);
    ASSERT_EQ(fit.eStatus, ZuAdjustStatus::Good) << fit.strWhy;
    dC += (fit.dC - 20.0) * (fit.dC - 20.0);
    dCPredicted += fit.dCSd * fit.dCSd;
    double d = 0.0;  // about the x axis of the plane: element (3, 2) of R R0'
    for (int k = 1; k <= 3; ++k) d += fit.rotation[3][k] * R[2][k];
    dTurn += d * d;
    dTurnPredicted += fit.adRotationSd[0] * fit.adRotationSd[0];
  }
  EXPECT_NEAR(std::sqrt(dC / dCPredicted), 1.0, 0.2);
  EXPECT_NEAR(std::sqrt(dTurn / dTurnPredicted), 1.0, 0.2);
}

// Windows as lengths alone, and two directions that are not perpendicular, decide the plane, too.
TEST(ZuspLineFit, TakesLengthsAndDirectionsAlone) {
  Facade facade;
  for (const bool bLengths : {false, true}) {
    ZuZuspTrafo trafo;
    facade.Measure(0.0, &trafo);
    ZuZuspParallelDef& def = trafo.GetParallelDef();
    for (unsigned u = 1; u <= 48; u += 8) {
      if (bLengths) {
        def.MakeDefLine(u, u + 1)->m_dValue = 2.2;
        def.MakeDefLine(u, u + 3)->m_dValue = std::hypot(2.2, 2.0);
        def.MakeDefLine(u + 1, u + 2)->m_dValue = std::hypot(2.2, 2.0);
      } else {
        const unsigned uLine = def.MakeDefLine(u, u + 1)->GetId();
        const unsigned uOther = def.MakeDefLine(u, u + 3)->GetId();
        def.MakeConstraintDef(1, uLine, eConstraintParallel);
        def.MakeConstraintDef(2, uOther, eConstraintParallel);
      }
    }
    const ZuZuspLineFit fit = ZuFitZuspLines(trafo, Lens());
    ASSERT_EQ(fit.eStatus, ZuAdjustStatus::Good) << fit.strWhy;
    EXPECT_EQ(fit.bScaled, bLengths);
    EXPECT_LT(facade.CornerError(fit), 1e-6);
  }
}

TEST(ZuspLineFit, RefusesWhatDecidesNothing) {
  const auto refused = [](const char* szWhy, ZuAdjustStatus eStatus, auto&& change) {
    SCOPED_TRACE(szWhy);
    Facade facade;
    ZuZuspTrafo trafo;
    ZuCamera camera = Lens();
    ZuZuspLineOptions options;
    facade.Measure(0.1, &trafo);
    change(&trafo, &camera, &options);
    const ZuZuspLineFit fit = ZuFitZuspLines(trafo, camera, options);
    EXPECT_EQ(fit.eStatus, eStatus);
    EXPECT_NE(fit.strWhy.find(szWhy), std::string::npos) << fit.strWhy;
  };
  const auto parallels = [](ZuZuspTrafo* p, unsigned uStep) {
    for (unsigned u = 1; u <= 48; u += 4) {
      p->GetParallelDef().MakeDefLine(u, u + uStep);
      p->GetParallelDef().MakeConstraintDef(1, (u + 3) / 4, eConstraintParallel);
    }
  };
  refused("no line has both", ZuAdjustStatus::TooFew, [](auto*, auto*, auto*) {});
  refused("conditions for", ZuAdjustStatus::TooFew, [](auto* p, auto*, auto*) {
    p->GetParallelDef().MakeDefLine(1, 2);
    p->GetParallelDef().MakeDefLine(3, 4);
    p->GetParallelDef().MakeConstraintDef(1, 2, eConstraintParallel);
  });
  refused("do not decide the tilt", ZuAdjustStatus::RankDefect,
          [&](auto* p, auto*, auto*) { parallels(p, 1); });
  refused("perpendicular by others", ZuAdjustStatus::NotConverged, [&](auto* p, auto*, auto*) {
    parallels(p, 1);
    p->GetParallelDef().MakeConstraintDef(3, 5, eConstraintPerpendicular);
  });
  refused("decide the camera constant", ZuAdjustStatus::RankDefect,
          [&](auto* p, auto*, auto* pOptions) {
            parallels(p, 1);
            for (unsigned u = 1; u <= 48; u += 4) {
              const auto* pLine = p->GetParallelDef().MakeDefLine(u, u + 3);
              p->GetParallelDef().MakeConstraintDef(13, pLine->GetId(), eConstraintParallel);
            }
            pOptions->bEstimateC = true;
          });
  refused("camera constant is 0", ZuAdjustStatus::TooFew, [](auto* p, auto* pCamera, auto*) {
    Facade::Define(p);
    pCamera->m_dC = 0.0;
  });
  refused("decide the camera constant", ZuAdjustStatus::RankDefect,
          [](auto* p, auto* pCamera, auto* pOptions) {  // seen from straight before it
            Facade::Define(p);
            p->SetDistortCameraFlag(false);
            pCamera->m_dXh = pCamera->m_dYh = 0.0;
            pOptions->bEstimateC = true;
            ZuPoint* q = p->GetBikoList().First();
            for (const Complex& z : Facade().corners) {
              q->m_dX = z.real();
              q->m_dY = z.imag();
              q = q->Next();
            }
          });
  refused("no plane fulfils", ZuAdjustStatus::NotConverged, [](auto* p, auto*, auto*) {
    Facade::Define(p);
    p->SetDistortCameraFlag(false);
    for (ZuPoint* q = p->GetBikoList().First(); q != nullptr; q = q->Next()) q->m_dY = 0.0;
  });
  refused("not finite", ZuAdjustStatus::NotFinite, [](auto* p, auto*, auto*) {
    Facade::Define(p);
    p->GetBikoList().First()->m_dX = std::nan("");
  });
}

}  // namespace
