// Estimates of plane transformations beside a least-squares solution by QR.
#include "zu/transform/calc_trafo2d.h"

#include <Eigen/Core>

#include "tests/support/eigen_solvers.h"
#include "tests/support/random_geometry.h"
#include "tests/support/test.h"
#include "zu/rectify/region.h"

namespace {

constexpr int kTerms = 10;

void Terms(double x, double y, double* pd) {
  const double values[] = {1,     x,         y,         x * x,     x * y,
                           y * y, x * x * x, x * x * y, x * y * y, y * y * y};
  std::copy(values, values + kTerms, pd);
}

// The observation rows of a type, two a point, and their right sides.
void Observations(eZuTrafo2DType eType, const ZuPointList& source, const ZuPointList& reference,
                  Eigen::MatrixXd* pA, Eigen::VectorXd* pB) {
  const int n = source.Count();
  const int aiUnknowns[] = {0, 4, 6, 8, 20};
  pA->setZero(2 * n, aiUnknowns[eType]);
  pB->resize(2 * n);
  int i = 0;
  for (const ZuPoint* p = source.First(); p != nullptr; p = p->Next(), i += 2) {
    const ZuPoint* q = reference.Find(p->GetId());
    const double x = p->m_dX, y = p->m_dY, X = q->m_dX, Y = q->m_dY;
    auto row1 = pA->row(i), row2 = pA->row(i + 1);
    double t[kTerms];
    Terms(x, y, t);
    switch (eType) {
      case eZuTrafo2DHelmert:  // in the order a0, a1, a2, a3
        row1 << 1, x, 0, -y;
        row2 << 0, y, 1, x;
        break;
      case eZuTrafo2DAffin:
        row1 << 1, x, y, 0, 0, 0;
        row2 << 0, 0, 0, 1, x, y;
        break;
      case eZuTrafo2DProjektiv:
        row1 << x, y, 1, 0, 0, 0, -X * x, -X * y;
        row2 << 0, 0, 0, x, y, 1, -Y * x, -Y * y;
        break;
      default:
        for (int k = 0; k < kTerms; ++k) row1(k) = row2(kTerms + k) = t[k];
    }
    (*pB)(i) = X;
    (*pB)(i + 1) = Y;
  }
}

bool Estimate(ZuCalcTrafo2D* pTrafo, eZuTrafo2DType eType, ZuPointList* pSource) {
  switch (eType) {
    case eZuTrafo2DHelmert:
      return pTrafo->CalcTrafoHelmert(pSource);
    case eZuTrafo2DAffin:
      return pTrafo->CalcTrafoAffin(pSource);
    case eZuTrafo2DProjektiv:
      return pTrafo->CalcTrafoProjectiv(pSource);
    default:
      return pTrafo->CalcTrafoPolynom(pSource);
  }
}

constexpr eZuTrafo2DType kTypes[] = {eZuTrafo2DHelmert, eZuTrafo2DAffin, eZuTrafo2DProjektiv,
                                     eZuTrafo2DPolynomial};

// Points over a square of 2 x dRange around (dShift, dShift) and their images under a mild
// projective map with noise; the reference stands in another order.
struct Lists {
  ZuPointList source, reference;

  Lists(RandomGeometry& random, int n, double dRange, double dShift, double dNoise) {
    for (int i = 1; i <= n; ++i) {
      const double u = random.Value(1.0), v = random.Value(1.0);
      const double w = 1.0 + 0.1 * u - 0.05 * v;
      const double X = (0.8 * u - 0.3 * v + 0.2) / w, Y = (0.25 * u + 0.9 * v - 0.4) / w;
      const auto uId = static_cast<unsigned int>(i);
      source.Add(ZuPoint(uId, u * dRange + dShift, v * dRange + dShift));
      reference.InsertFirst(new ZuPoint(uId, X + random.Value(dNoise), Y + random.Value(dNoise)));
    }
  }
};

ZuPointList Square(double dHalf) {
  ZuPointList list;
  const double signs[][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
  for (const auto& s : signs) {
    list.Add(ZuPoint(static_cast<unsigned int>(list.Count() + 1), s[0] * dHalf, s[1] * dHalf));
  }
  return list;
}

}  // namespace

// The fitted images of all points are those of the QR solution: on well scaled data to rounding, on
// data far from the origin to what normal equations keep of it.
TEST(CalcTrafo2D, EqualsLeastSquaresByQr) {
  const struct {
    double dRange, dShift, dTolerance;
  } scales[] = {{1.0, 0.0, 1e-11}, {100.0, 30.0, 1e-6}, {0.01, 0.0, 1e-6}, {3.0, 20.0, 1e-3}};
  RandomGeometry random(31);
  for (const auto& scale : scales) {
    for (const eZuTrafo2DType eType : kTypes) {
      for (const int n : {12, 40}) {
        SCOPED_TRACE(::testing::Message() << eType << ", " << n << " points of " << scale.dRange);
        Lists lists(random, n, scale.dRange, scale.dShift, 0.01);
        ZuCalcTrafo2D trafo(&lists.reference);
        ASSERT_TRUE(Estimate(&trafo, eType, &lists.source));
        EXPECT_EQ(trafo.GetType(), eType);

        Eigen::MatrixXd a;
        Eigen::VectorXd b;
        Observations(eType, lists.source, lists.reference, &a, &b);
        const Eigen::VectorXd expected = SolveByQr(a, b);
        Eigen::VectorXd ours(expected.size());
        for (int i = 0; i < ours.size(); ++i) ours(i) = trafo.GetCoef(i);
        EXPECT_LT((a * (ours - expected)).norm() / b.norm(), scale.dTolerance);
        if (scale.dRange == 1.0) {
          EXPECT_LT((ours - expected).norm(), 1e-9 * expected.norm());
        }
        if (eType == eZuTrafo2DHelmert) {
          EXPECT_NEAR(trafo.GetScale(), 1.0 / std::hypot(expected(1), expected(3)),
                      scale.dTolerance * trafo.GetScale());
        }
      }
    }
  }
}

// The polynomial gives exact cubic data back, coefficient by coefficient.
TEST(CalcTrafo2D, PolynomialReproducesACubic) {
  RandomGeometry random(32);
  double adCoef[20];
  for (double& d : adCoef) d = random.Value(1.0);
  ZuPointList source, reference;
  for (unsigned int u = 1; u <= 25; ++u) {
    const double x = random.Value(1.0), y = random.Value(1.0);
    double t[kTerms], X = 0.0, Y = 0.0;
    Terms(x, y, t);
    for (int k = 0; k < kTerms; ++k) {
      X += adCoef[k] * t[k];
      Y += adCoef[kTerms + k] * t[k];
    }
    source.Add(ZuPoint(u, x, y));
    reference.Add(ZuPoint(u, X, Y));
  }
  ZuCalcTrafo2D trafo(&reference);
  trafo.SetActList(&source);
  ASSERT_TRUE(trafo.CalcTrafoPolynom(nullptr));  // alone in taking the list set before
  for (int i = 0; i < 20; ++i) EXPECT_NEAR(trafo.GetCoef(i), adCoef[i], 1e-9) << i;
  EXPECT_TRUE(trafo.CalcResiduals(nullptr));
  EXPECT_LT(trafo.GetResidualX() + trafo.GetResidualY(), 1e-10);
  EXPECT_FALSE(trafo.CalcTrafoHelmert(nullptr) || trafo.CalcTrafoAffin(nullptr) ||
               trafo.CalcTrafoProjectiv(nullptr));
}

// Two points give an exact Helmert transformation, three an affine one, four a projective one.
TEST(CalcTrafo2D, LeastPointsFitExactly) {
  const double X[] = {3.0, 7.5, 8.0, 1.0}, Y[] = {1.0, 1.5, 6.0, 4.0};
  for (const int n : {2, 3, 4}) {
    ZuPointList source = Square(2.0), reference;
    while (source.Count() > n) delete source.SubtractLast();
    for (int i = 0; i < n; ++i)
      reference.Add(ZuPoint(static_cast<unsigned int>(i + 1), X[i], Y[i]));
    ZuCalcTrafo2D trafo(&reference);
    const eZuTrafo2DType eType = trafo.SuggestTrafoByPointsNbr(&source);
    EXPECT_EQ(eType, kTypes[n - 2]);
    ASSERT_TRUE(Estimate(&trafo, eType, &source));
    trafo.CalcResiduals(&source);
    EXPECT_LT(trafo.GetResidualX() + trafo.GetResidualY(), 1e-12) << n;
  }
}

// Too few points change nothing; too few partners, or points on a line, give zeros.
TEST(CalcTrafo2D, WhatIsNotDeterminedIsTold) {
  const int aiLeast[] = {2, 3, 4, 10};
  for (int i = 0; i < 4; ++i) {
    ZuPointList source, reference;
    for (int k = 1; k < aiLeast[i]; ++k)
      source.Add(ZuPoint(static_cast<unsigned int>(k), k, k * k));
    reference = source;
    ZuCalcTrafo2D trafo(&reference);
    trafo.SetIdent();
    EXPECT_FALSE(Estimate(&trafo, kTypes[i], &source));
    EXPECT_EQ(trafo.GetType(), eZuTrafo2DHelmert);
    EXPECT_EQ(trafo.GetCoef(1), 1.0);

    // All points of the source count, also those without a partner.
    source.Add(ZuPoint(99, 5.0, 5.0));
    reference.Destroy();
    EXPECT_TRUE(Estimate(&trafo, kTypes[i], &source));
    EXPECT_EQ(trafo.GetType(), kTypes[i]);
    for (int k = 0; k < 20; ++k) EXPECT_EQ(trafo.GetCoef(k), 0.0);
    trafo.CalcResiduals(&source);
    EXPECT_EQ(trafo.GetResidualX(), 0.0);  // over no partner

    reference = source;
    source.First()->m_dX = NAN;
    EXPECT_TRUE(Estimate(&trafo, kTypes[i], &source));
    for (int k = 0; k < 20; ++k) EXPECT_EQ(trafo.GetCoef(k), 0.0);
  }
}

// Residuals are transformed minus reference, over the partners alone; coordinates stay.
TEST(CalcTrafo2D, ResidualsOfThePartners) {
  ZuPointList source = Square(2.0), reference = Square(2.0);
  reference.Get(1)->m_dX -= 3.0;
  reference.Get(2)->m_dY += 4.0;
  source.Add(ZuPoint(77, 1.0, 1.0))->m_dRedu1 = 5.0;
  source.First()->m_dRedu3 = 5.0;
  ZuCalcTrafo2D trafo(&reference);
  trafo.SetIdent();
  trafo.SetActList(&source);
  ASSERT_TRUE(trafo.CalcResiduals(nullptr));
  EXPECT_ROW("1.5 2 3 3 -4 0", trafo.GetResidualX(), trafo.GetResidualY(), trafo.GetMaxError(),
             source.Get(1)->m_dRedu1, source.Get(2)->m_dRedu2, source.First()->m_dRedu3);
  EXPECT_EQ(source.Get(1)->IsFlagSet(0x20), 0x20);
  EXPECT_ROW("0 0", source.Last()->IsFlagSet(0x20), source.Last()->m_dRedu1);

  double dMaxX = -1.0, dMaxY = -1.0;
  int iWithin = -1;
  EXPECT_TRUE(trafo.CalcResiduals(dMaxX, dMaxY, iWithin, 3.0, &source));
  EXPECT_ROW("0 -4", dMaxX, dMaxY);
  EXPECT_EQ(iWithin, 2);  // the one at 3.0 itself is not within
  EXPECT_ROW("0 2", source.Get(1)->m_dRedu1, trafo.GetResidualY());
}

// A copy of an estimate with a list of its own refers to its own copy of that list.
TEST(CalcTrafo2D, CopyHasItsOwnList) {
  ZuCalcTrafo2D trafo;
  *trafo.GetPPList() = Square(1.0);
  ZuCalcTrafo2D copy(trafo);
  EXPECT_NE(copy.GetPPList(), trafo.GetPPList());
  EXPECT_EQ(copy.GetPPList()->Count(), 4);
  ZuPointList other;
  trafo.SetPPList(&other);
  copy = trafo;
  EXPECT_EQ(copy.GetPPList(), &other);
}

// Points over all quadrants and the centre earn a projective or polynomial transformation.
TEST(CalcTrafo2D, SuggestsByNumberAndDistribution) {
  const ZuRegion region(-6.0, -6.0, 6.0, 6.0);
  ZuCalcTrafo2D trafo;
  ZuPointList spread = Square(5.0);
  const eZuTrafo2DType byNumber[] = {eZuTrafo2DNone, eZuTrafo2DNone, eZuTrafo2DHelmert,
                                     eZuTrafo2DAffin};
  EXPECT_EQ(trafo.SuggestTrafoByPointsNbr(nullptr), eZuTrafo2DNone);
  for (int n = 0; n <= 14; ++n) {
    ZuPointList list;
    for (int i = 0; i < n; ++i) {
      // Corner, corner, corner, corner, centre, corner, ...
      const ZuPoint* p = i == 4 ? nullptr : spread.Get(i % 4);
      list.Add(ZuPoint(static_cast<unsigned int>(i + 1), p ? p->m_dX : 0.0, p ? p->m_dY : 0.0));
    }
    const eZuTrafo2DType eNumber = n < 4    ? byNumber[n]
                                   : n < 10 ? eZuTrafo2DProjektiv
                                            : eZuTrafo2DPolynomial;
    EXPECT_EQ(trafo.SuggestTrafoByPointsNbr(&list), eNumber) << n;
    const eZuTrafo2DType eSpread = n < 4     ? eNumber
                                   : n == 4  ? eZuTrafo2DAffin  // no centre
                                   : n <= 12 ? eZuTrafo2DProjektiv
                                             : eZuTrafo2DPolynomial;
    trafo.SetActList(&list);
    EXPECT_EQ(trafo.SuggestTrafoByDistrib(region, nullptr), eSpread) << n;
    EXPECT_EQ(trafo.SuggestTrafoByDistrib(ZuRegion(6, 6, -6, -6), &list), eSpread) << n;
    if (n == 5) {  // the centre ends a third of the half width from each side, bounds included
      list.Last()->m_dX = 4.0;
      EXPECT_EQ(trafo.SuggestTrafoByDistrib(region, nullptr), eZuTrafo2DProjektiv);
      list.Last()->m_dX = 4.1;
      EXPECT_EQ(trafo.SuggestTrafoByDistrib(region, nullptr), eZuTrafo2DAffin);
    }
    // One corner left empty.
    for (ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
      if (p->m_dX > 4.0 && p->m_dY > 4.0) p->m_dX = -5.0;
    }
    EXPECT_EQ(trafo.SuggestTrafoByDistrib(region, nullptr), n < 4 ? eNumber : eZuTrafo2DAffin);
  }
}
