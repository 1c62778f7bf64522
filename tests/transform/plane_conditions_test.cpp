#include "zu/transform/plane_conditions.h"

#include "tests/support/random_geometry.h"
#include "tests/support/test.h"

namespace {

const ZuPoint2d kSquare[] = {{0, 0}, {3, 0}, {3, 2}, {0, 2}, {1, 1}, {2.5, 0.5}};

// Points of the object as a picture shows them.
std::vector<ZuPoint2d> Shown(const double (&m)[9], const ZuVector2d& shift) {
  std::vector<ZuPoint2d> shown;
  for (const ZuPoint2d& p : kSquare) {
    const double w = m[6] * p.x + m[7] * p.y + m[8];
    shown.push_back(
        ZuPoint2d((m[0] * p.x + m[1] * p.y + m[2]) / w, (m[3] * p.x + m[4] * p.y + m[5]) / w) +
        shift);
  }
  return shown;
}

// What is not told comes out right as well: all lengths have one ratio to the true ones.
void ExpectSimilar(const ZuPlaneConditions& solver, const std::vector<ZuPoint2d>& shown) {
  const double dScale = solver.Transform(shown[0]).Distance(solver.Transform(shown[1])) /
                        kSquare[0].Distance(kSquare[1]);
  for (size_t i = 0; i < shown.size(); ++i) {
    for (size_t k = 0; k < i; ++k) {
      EXPECT_NEAR(solver.Transform(shown[i]).Distance(solver.Transform(shown[k])) / dScale,
                  kSquare[i].Distance(kSquare[k]), 3e-9);
    }
  }
}

TEST(PlaneConditions, StraightenAffineAndProjectivePictures) {
  RandomGeometry random(17);
  for (int i = 0; i < 100; ++i) {
    const bool bProjective = i % 2 == 0;
    double m[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    for (int k = 0; k < 6; ++k) m[k] += random.Value(0.4);
    for (int k = 6; k < 8; ++k) m[k] = bProjective ? random.Value(0.1) : 0.0;
    const double dFar = i % 4 < 2 ? 0.0 : 4e3;
    const auto shown = Shown(m, {dFar, -dFar});
    ZuPlaneConditions solver(bProjective ? eZuTrafo2DProjektiv : eZuTrafo2DAffin);
    for (const ZuPoint2d& p : shown) solver.AddPoint(p);
    if (bProjective) {
      solver.AddParallel(0, 1, 3, 2);
      solver.AddParallel(0, 3, 1, 2);
    }
    solver.AddRightAngle(0, 1, 0, 3);
    solver.Add(ZuLenghtRatioConstraint(0, 1, 0, 3, 1.5));
    ASSERT_EQ(solver.Calc(), eConditionsOk) << i;
    EXPECT_EQ(solver.GetRedundancy(), 0);
    ExpectSimilar(solver, shown);
    double adMap[9];
    solver.GetMap(adMap);
    const ZuPoint2d& p = shown[4];
    const double w = adMap[6] * p.x + adMap[7] * p.y + adMap[8];
    EXPECT_NEAR((adMap[0] * p.x + adMap[1] * p.y + adMap[2]) / w, solver.Transform(p).x, 1e-7);
  }
}

// Corners of a rectangle 1.5 : 1, drawn askew: the Lagrange conditions of the adjustment solved in
// mpmath with 30 digits.
TEST(PlaneConditions, AdjustsWhatDoesNotFit) {
  ZuPlaneConditions solver(eZuTrafo2DAffin);
  for (const ZuPoint2d& p :
       {ZuPoint2d(0, 0), ZuPoint2d(4.1, 0.2), ZuPoint2d(5.2, 3.1), ZuPoint2d(0.9, 3.0)}) {
    solver.AddPoint(p);
  }
  solver.AddRightAngle(0, 1, 0, 3);
  solver.AddParallel(0, 1, 3, 2);
  solver.AddParallel(0, 3, 1, 2);
  solver.AddParallel(3, 2, 0, 1);  // said before
  solver.Add(ZuLenghtRatioConstraint(0, 1, 0, 3, 1.5));
  ASSERT_EQ(solver.Calc(), eConditionsOk);
  EXPECT_EQ(solver.GetRedundancy(), 2);
  EXPECT_FALSE(solver.GetConditions()[3].bUsed);
  EXPECT_NEAR(solver.GetSigma0(), 0.079056941504209483, 1e-12);
  EXPECT_NEAR(solver.GetMoves()[1].x, 0.05, 1e-12);
  EXPECT_NEAR(solver.GetMoves()[1].y, -0.025, 1e-12);
  // The adjusted points fulfil everything in the picture.
  std::vector<ZuPoint2d> p = {{0, 0}, {4.1, 0.2}, {5.2, 3.1}, {0.9, 3.0}};
  for (size_t i = 0; i < 4; ++i) p[i] = solver.Transform(p[i] + solver.GetMoves()[i]);
  EXPECT_NEAR((p[1] - p[0]) * (p[3] - p[0]), 0.0, 1e-12);
  EXPECT_NEAR((p[2] - p[1]).Norm() * 1.5, (p[2] - p[3]).Norm(), 1e-12);
}

TEST(PlaneConditions, TellWhatIsOpenOrWrong) {
  const auto run = [](eZuTrafo2DType eType, auto add) {
    ZuPlaneConditions solver(eType);
    for (const ZuPoint2d& p : kSquare) solver.AddPoint(p);
    add(&solver);
    solver.Calc();
    return Text(ZuConditionsStatusText(solver.GetStatus())) + ";" + solver.GetFree();
  };
  using Solver = ZuPlaneConditions*;
  const std::string strOpen = "the conditions leave the map open;";
  EXPECT_EQ(run(eZuTrafo2DAffin, [](Solver s) { s->AddParallel(0, 1, 3, 2); }),
            strOpen + "shear and ratio of the axes");
  EXPECT_EQ(run(eZuTrafo2DAffin, [](Solver s) { s->AddRightAngle(0, 1, 0, 3); }),
            strOpen + "ratio of the axes");
  EXPECT_EQ(run(eZuTrafo2DAffin, [](Solver s) { s->AddRightAngle(0, 2, 4, 5); }),
            strOpen + "shear against the ratio of the axes");
  EXPECT_EQ(run(eZuTrafo2DProjektiv,
                [](Solver s) {
                  s->AddParallel(0, 1, 3, 2);
                  s->AddRightAngle(0, 1, 0, 3);
                  s->Add(ZuLenghtRatioConstraint(0, 1, 0, 3, 1.5));
                })
                .substr(0, strOpen.size()),
            strOpen);
  for (const auto& [c, eStatus] : Cases<ZuLenghtRatioConstraint, eConditionsStatus>{
           {{0, 0, 1, 2}, eConditionsCoincident},
           {{0, 1, 1, 9}, eConditionsTooFew},
           {{0, 1, 1, 2, 0.0}, eConditionsNotFinite},
           {{0, 1, 0, 3, 1.2}, eConditionsContradict}}) {
    EXPECT_EQ(run(eZuTrafo2DAffin,
                  [&condition = c](Solver s) {
                    s->Add(ZuLenghtRatioConstraint(0, 1, 0, 3, 1.5));
                    s->Add(condition);
                  }),
              ZuConditionsStatusText(eStatus) + std::string(";"));
  }
  EXPECT_EQ(run(eZuTrafo2DAffin,
                [](Solver s) {
                  s->AddRightAngle(0, 1, 0, s->AddPoint({NAN, 0}));
                }),
            "a number is not finite, or a ratio not above 0;");
  EXPECT_EQ(run(eZuTrafo2DAffin, [](Solver) {}),
            "there are no conditions, or they name no points;");
}

}  // namespace
