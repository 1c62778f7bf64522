// The estimates of plane transformations.
#include "zu/transform/calc_trafo2d.h"

#include <algorithm>
#include <cmath>

#include "zu/foundation/sort_helper.h"
#include "zu/numerics/internal/finite.h"
#include "zu/numerics/matrix.h"
#include "zu/numerics/vector.h"
#include "zu/transform/internal/polynomial_terms.h"

namespace {

struct Kind {
  eZuTrafo2DType eType;
  int iUnknowns;
  int iMinPoints;
};

constexpr Kind kKinds[] = {{eZuTrafo2DHelmert, 4, 2},
                           {eZuTrafo2DAffin, 6, 3},
                           {eZuTrafo2DProjektiv, 8, 4},
                           {eZuTrafo2DPolynomial, 20, 10}};

const Kind& KindOf(eZuTrafo2DType eType) {
  return *std::find_if(std::begin(kKinds), std::end(kKinds),
                       [eType](const Kind& kind) { return kind.eType == eType; });
}

// Bordered normal equations, see ZuMatrix::Cholesky. Rows are given by their elements that are not
// zero, and the triangle that the solver reads is filled: the same sums as of whole rows.
class NormalEquations {
 public:
  explicit NormalEquations(int iUnknowns)
      : m_iUnknowns(iUnknowns), m_Matrix(iUnknowns + 1, 2 * iUnknowns + 1) {
    for (int k = 1; k <= iUnknowns; ++k) m_Matrix[k][iUnknowns + 1 + k] = 1.0;
  }

  // Columns ascend, from 1; the observation is the last element, in column u + 1.
  template <size_t N>
  void AddRow(const int (&columns)[N], const double (&values)[N]) {
    for (size_t i = 0; i < N; ++i) {
      double* pRow = m_Matrix[columns[i]];
      for (size_t j = i; j < N; ++j) pRow[columns[j]] += values[i] * values[j];
    }
  }

  // An element of the triangle, rows and columns from 1.
  void Set(int i, int j, double dSum) { m_Matrix[i][j] = dSum; }

  // The solution, all 0.0 where there is none that is finite.
  void Solve(double* pdSolution) {
    ZuVector x(m_iUnknowns);
    m_Matrix.Cholesky(x);
    const bool bFinite = zu::internal::AreFinite(x);
    for (int i = 1; i <= m_iUnknowns; ++i) pdSolution[i - 1] = bFinite ? x[i] : 0.0;
  }

 private:
  int m_iUnknowns;
  ZuMatrix m_Matrix;
};

// The normal equations of a projective map, of the rows
//
//   x  y  1  0  0  0  -X x  -X y | X
//   0  0  0  x  y  1  -Y x  -Y y | Y
//
// Sums that are equal are formed once, in the order of the points, those of X and Y side by side.
class ProjectiveEquations {
 public:
  void Add(double x, double y, double X, double Y) {
    const double left[] = {x, y, 1.0};
    const double right[3][2] = {{-X * x, -Y * x}, {-X * y, -Y * y}, {X, Y}};
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) m_adLeft[i][j] += left[i] * left[j];
    }
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) {
        for (int k = 0; k < 2; ++k) m_adMixed[i][j][k] += left[i] * right[j][k];
      }
    }
    for (int k = 0; k < 2; ++k) {
      for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) m_adRight[i][j] += right[i][k] * right[j][k];
      }
    }
  }

  void CopyTo(NormalEquations* pEquations) const {
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) {
        if (j >= i) {
          pEquations->Set(1 + i, 1 + j, m_adLeft[i][j]);
          pEquations->Set(4 + i, 4 + j, m_adLeft[i][j]);
          pEquations->Set(7 + i, 7 + j, m_adRight[i][j]);
        }
        pEquations->Set(1 + i, 7 + j, m_adMixed[i][j][0]);
        pEquations->Set(4 + i, 7 + j, m_adMixed[i][j][1]);
      }
    }
  }

 private:
  double m_adLeft[3][3] = {}, m_adMixed[3][3][2] = {}, m_adRight[3][3] = {};
};

void AddPolynomialRows(NormalEquations& equations, double x, double y, double X, double Y) {
  constexpr int kColumnsX[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 21};
  constexpr int kColumnsY[] = {11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21};
  double values[kPolynomialTerms + 1];
  PolynomialTerms(x, y, values);
  values[kPolynomialTerms] = X;
  equations.AddRow(kColumnsX, values);
  values[kPolynomialTerms] = Y;
  equations.AddRow(kColumnsY, values);
}

// The two observation rows of a point (x, y) with the partner (X, Y).
void AddRows(NormalEquations& equations, eZuTrafo2DType eType, double x, double y, double X,
             double Y) {
  switch (eType) {
    case eZuTrafo2DHelmert:
      equations.AddRow({1, 3, 4, 5}, {1.0, x, -y, X});
      equations.AddRow({2, 3, 4, 5}, {1.0, y, x, Y});
      break;
    case eZuTrafo2DAffin:
      equations.AddRow({1, 2, 3, 7}, {1.0, x, y, X});
      equations.AddRow({4, 5, 6, 7}, {1.0, x, y, Y});
      break;
    default:
      AddPolynomialRows(equations, x, y, X, Y);
      break;
  }
}

}  // namespace

ZuCalcTrafo2D::ZuCalcTrafo2D(ZuPointList* pReference)
    : m_pPPList(pReference != nullptr ? pReference : &m_lOwnList) {}

ZuCalcTrafo2D::ZuCalcTrafo2D(const ZuCalcTrafo2D& other)
    : ZuTrafo2d(other), m_pPPList(&m_lOwnList) {
  *this = other;
}

ZuCalcTrafo2D& ZuCalcTrafo2D::operator=(const ZuCalcTrafo2D& other) {
  if (this == &other) return *this;
  ZuTrafo2d::operator=(other);
  m_lOwnList = other.m_lOwnList;
  m_pPPList = other.m_pPPList == &other.m_lOwnList ? &m_lOwnList : other.m_pPPList;
  m_pActList = other.m_pActList;
  m_uMaxError = other.m_uMaxError;
  m_dResidualX = other.m_dResidualX;
  m_dResidualY = other.m_dResidualY;
  m_dScale = other.m_dScale;
  return *this;
}

bool ZuCalcTrafo2D::Estimate(const ZuPointList* pSource, eZuTrafo2DType eType, double* pdSolution) {
  const Kind& kind = KindOf(eType);
  if (pSource == nullptr || !pSource->CountMoreThan(kind.iMinPoints - 1)) return false;
  NormalEquations equations(kind.iUnknowns);
  const auto forPairs = [this, pSource](auto&& add) {
    const ZuSortHelper<ZuPoint> partners(m_pPPList);
    for (const ZuPoint* p = pSource->First(); p != nullptr; p = p->Next()) {
      const ZuPoint* pPartner = partners.Find(p->GetId());
      if (pPartner != nullptr) add(p->m_dX, p->m_dY, pPartner->m_dX, pPartner->m_dY);
    }
  };
  if (eType == eZuTrafo2DProjektiv) {
    ProjectiveEquations sums;
    forPairs([&sums](double x, double y, double X, double Y) { sums.Add(x, y, X, Y); });
    sums.CopyTo(&equations);
  } else {
    forPairs([&equations, eType](double x, double y, double X, double Y) {
      AddRows(equations, eType, x, y, X, Y);
    });
  }
  equations.Solve(pdSolution);
  m_eType = eType;
  return true;
}

bool ZuCalcTrafo2D::CalcTrafoHelmert(ZuPointList* pSource) {
  double s[4];
  if (!Estimate(pSource, eZuTrafo2DHelmert, s)) return false;
  m_adCoef[0] = s[0];
  m_adCoef[2] = s[1];
  m_adCoef[1] = s[2];
  m_adCoef[3] = s[3];
  m_dScale = std::sqrt(s[2] * s[2] + s[3] * s[3]);
  if (m_dScale > 0.0) m_dScale = 1.0 / m_dScale;
  return true;
}

bool ZuCalcTrafo2D::CalcTrafoAffin(ZuPointList* pSource) {
  return Estimate(pSource, eZuTrafo2DAffin, m_adCoef);
}

bool ZuCalcTrafo2D::CalcTrafoProjectiv(ZuPointList* pSource) {
  return Estimate(pSource, eZuTrafo2DProjektiv, m_adCoef);
}

bool ZuCalcTrafo2D::CalcTrafoPolynom(ZuPointList* pSource) {
  return Estimate(pSource != nullptr ? pSource : m_pActList, eZuTrafo2DPolynomial, m_adCoef);
}
