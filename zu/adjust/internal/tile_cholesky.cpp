#include "zu/adjust/internal/tile_cholesky.h"

#include <Eigen/Cholesky>
#include <limits>

namespace zu::internal {

namespace {

using Eigen::Lower;
using Eigen::MatrixXd;
using Eigen::OnTheRight;
using Tile = Eigen::Map<MatrixXd>;
using ConstTile = Eigen::Map<const MatrixXd>;
using ConstPart = Eigen::Map<const Eigen::VectorXd>;
using Part = Eigen::Map<Eigen::VectorXd>;

constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

std::size_t Index(int i) { return static_cast<std::size_t>(i); }

}  // namespace

std::size_t TileCholesky::Place(int r, int c) const {
  return m_place[Index(r) * (m_starts.size() - 1) + Index(c)];
}

int TileCholesky::Rows(int iTile) const {
  return m_starts[Index(iTile) + 1] - m_starts[Index(iTile)];
}

void TileCholesky::SetStructure(const std::vector<int>& starts, const std::vector<char>& coupled) {
  m_starts = starts;
  const int n = static_cast<int>(starts.size()) - 1;
  m_tileOf.clear();
  for (int t = 0; t < n; ++t) m_tileOf.insert(m_tileOf.end(), Index(Rows(t)), t);
  std::vector<char> full = coupled;
  m_below.assign(Index(n), {});
  m_left.assign(Index(n), {});
  m_place.assign(Index(n) * Index(n), kNone);
  std::size_t uSize = 0;
  for (int j = 0; j < n; ++j) {
    for (int i = j; i < n; ++i) {
      if (i != j && !full[Index(i) * Index(n) + Index(j)]) continue;
      m_place[Index(i) * Index(n) + Index(j)] = uSize;
      uSize += Index(Rows(i)) * Index(Rows(j));
      if (i == j) continue;
      m_below[Index(j)].push_back(i);
      m_left[Index(i)].push_back(j);
    }
    for (const int i : m_below[Index(j)]) {  // fill
      for (const int k : m_below[Index(j)]) full[Index(i) * Index(n) + Index(k)] = 1;
    }
  }
  m_a.resize(uSize);
}

void TileCholesky::SetZero() { m_a.assign(m_a.size(), 0.0); }

double* TileCholesky::At(int iRow, int iColumn, std::size_t* puStride) {
  const int r = m_tileOf[Index(iRow)], c = m_tileOf[Index(iColumn)];
  const std::size_t uStride = Index(Rows(r));
  if (puStride != nullptr) *puStride = uStride;
  return &m_a[Place(r, c) + Index(iRow - m_starts[Index(r)]) +
              uStride * Index(iColumn - m_starts[Index(c)])];
}

void TileCholesky::Divide(const std::vector<double>& by, std::vector<double>* pTiles) const {
  for (int j = 0; j < static_cast<int>(m_below.size()); ++j) {
    const auto divide = [&](int i) {
      double* p = &(*pTiles)[Place(i, j)];
      for (int c = 0; c < Rows(j); ++c) {
        const double d = by[Index(m_starts[Index(j)] + c)];
        for (int r = 0; r < Rows(i); ++r) *p++ /= by[Index(m_starts[Index(i)] + r)] * d;
      }
    };
    divide(j);
    for (const int i : m_below[Index(j)]) divide(i);
  }
}

// Column j less what the columns before it take off, then divided by its own factor.
bool TileCholesky::FactoriseColumn(int j) {
  const auto reduce = [&](int i) {
    Tile a(&m_a[Place(i, j)], Rows(i), Rows(j));
    for (const int k : m_left[Index(j)]) {
      if (Place(i, k) == kNone) continue;
      const ConstTile x(&m_a[Place(i, k)], Rows(i), Rows(k));
      const ConstTile y(&m_a[Place(j, k)], Rows(j), Rows(k));
      a.noalias() -= x * y.transpose();
    }
    return a;
  };
  Tile diagonal = reduce(j);
  const Eigen::LLT<Eigen::Ref<MatrixXd>> llt(diagonal);
  if (llt.info() != Eigen::Success) return false;
  const std::vector<int>& below = m_below[Index(j)];
  const int n = static_cast<int>(below.size());
  for (int i = 0; i < n; ++i) {
    Tile a = reduce(below[Index(i)]);
    diagonal.transpose().triangularView<Eigen::Upper>().solveInPlace<OnTheRight>(a);
  }
  return true;
}

bool TileCholesky::Factorise() {
  for (int j = 0; j < static_cast<int>(m_below.size()); ++j) {
    if (!FactoriseColumn(j)) return false;
  }
  return true;
}

void TileCholesky::Solve(double* px) const {
  const int n = static_cast<int>(m_below.size());
  const auto tile = [&](int i, int j) { return ConstTile(&m_a[Place(i, j)], Rows(i), Rows(j)); };
  for (int j = 0; j < n; ++j) {
    Part x(px + m_starts[Index(j)], Rows(j));
    tile(j, j).triangularView<Lower>().solveInPlace(x);
    for (const int i : m_below[Index(j)]) {
      Part(px + m_starts[Index(i)], Rows(i)).noalias() -= tile(i, j) * x;
    }
  }
  for (int j = n - 1; j >= 0; --j) {
    Part x(px + m_starts[Index(j)], Rows(j));
    for (const int i : m_below[Index(j)]) {
      x.noalias() -= tile(i, j).transpose() * ConstPart(px + m_starts[Index(i)], Rows(i));
    }
    tile(j, j).transpose().triangularView<Eigen::Upper>().solveInPlace(x);
  }
}

// Z = L^-T L^-1 by columns from the last: with G = L_ij L_jj^-1 of a column, Z_ij is less the sum
// of Z_ik G_kj, and Z_jj is (L_jj L_jj')^-1 less the sum of G_kj' Z_kj.
void TileCholesky::InvertColumn(int j) {
  const std::vector<int>& below = m_below[Index(j)];
  const int n = static_cast<int>(below.size());
  const ConstTile diagonal(&m_a[Place(j, j)], Rows(j), Rows(j));
  std::vector<MatrixXd> g(below.size());
  for (int i = 0; i < n; ++i) {
    const int r = below[Index(i)];
    g[Index(i)] = ConstTile(&m_a[Place(r, j)], Rows(r), Rows(j));
    diagonal.triangularView<Lower>().solveInPlace<OnTheRight>(g[Index(i)]);
  }
  for (int i = 0; i < n; ++i) {
    const int r = below[Index(i)];
    Tile z(&m_z[Place(r, j)], Rows(r), Rows(j));
    z.setZero();
    for (int k = 0; k < n; ++k) {
      const int c = below[Index(k)];
      if (r >= c) {
        z.noalias() -= ConstTile(&m_z[Place(r, c)], Rows(r), Rows(c)) * g[Index(k)];
      } else {
        z.noalias() -= ConstTile(&m_z[Place(c, r)], Rows(c), Rows(r)).transpose() * g[Index(k)];
      }
    }
  }
  MatrixXd own = MatrixXd::Identity(Rows(j), Rows(j));
  diagonal.triangularView<Lower>().solveInPlace(own);
  diagonal.transpose().triangularView<Eigen::Upper>().solveInPlace(own);
  for (int k = 0; k < n; ++k) {
    const int r = below[Index(k)];
    own.noalias() -= g[Index(k)].transpose() * ConstTile(&m_z[Place(r, j)], Rows(r), Rows(j));
  }
  Tile(&m_z[Place(j, j)], Rows(j), Rows(j)) = 0.5 * (own + own.transpose());
}

void TileCholesky::Invert(const std::vector<double>& by) {
  m_z.resize(m_a.size());
  for (int j = static_cast<int>(m_below.size()) - 1; j >= 0; --j) InvertColumn(j);
  Divide(by, &m_z);
}

bool TileCholesky::Inverse(int iRow, int iRows, int iColumn, int iColumns, double* pBlock) const {
  const int tr = m_tileOf[Index(iRow)], tc = m_tileOf[Index(iColumn)];
  const bool bLower = tr >= tc;
  const std::size_t uPlace = bLower ? Place(tr, tc) : Place(tc, tr);
  if (uPlace == kNone) return false;
  const std::size_t uStride = Index(Rows(bLower ? tr : tc));
  const std::size_t r0 = Index(iRow - m_starts[Index(tr)]),
                    c0 = Index(iColumn - m_starts[Index(tc)]);
  for (std::size_t r = 0; r < Index(iRows); ++r) {
    for (std::size_t c = 0; c < Index(iColumns); ++c) {
      *pBlock++ =
          m_z[uPlace + (bLower ? r0 + r + uStride * (c0 + c) : c0 + c + uStride * (r0 + r))];
    }
  }
  return true;
}

}  // namespace zu::internal
