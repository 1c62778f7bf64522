// Sparse symmetric matrices in dense tiles: factor, solution, and those elements of the inverse
// that lie where the factor does.
#pragma once

#include <cstddef>
#include <vector>

namespace zu::internal {

// Sources: A. George and J. W. Liu, "Computer solution of large sparse positive definite systems",
// 1981 (fill); K. Takahashi, J. Fagan and M. Chin, "Formation of a sparse bus impedance matrix",
// 1973 (elements of the inverse).
class TileCholesky {
 public:
  // Tile t holds the rows starts[t] to starts[t + 1]; the last start is the size. coupled: tiles by
  // tiles, row by row, of which the lower triangle counts; what is not coupled is 0.
  void SetStructure(const std::vector<int>& starts, const std::vector<char>& coupled);
  int Size() const { return m_starts.empty() ? 0 : m_starts.back(); }

  void SetZero();
  // Where the element of a row and a column stands, row not above column unless both lie in one
  // tile, of which the lower triangle counts. Elements of a column follow each other, columns by
  // *puStride. Rows and columns must be coupled.
  double* At(int iRow, int iColumn, std::size_t* puStride = nullptr);
  double Diagonal(int i) { return *At(i, i); }
  // Divides each element by those of its row and its column.
  void Divide(const std::vector<double>& by) { Divide(by, &m_a); }

  // A = L L' in place. False where it is not positive definite.
  bool Factorise();
  // x becomes A^-1 x.
  void Solve(double* px) const;

  // The inverse where the factor is not 0, divided by `by` as Divide does. Cost: about two factors.
  void Invert(const std::vector<double>& by);
  // Rows by columns, row by row, of either triangle; both must lie within a tile. False, nothing
  // written, where the inverse is not kept.
  bool Inverse(int iRow, int iRows, int iColumn, int iColumns, double* pBlock) const;

 private:
  std::size_t Place(int iTileRow, int iTileColumn) const;
  int Rows(int iTile) const;
  void Divide(const std::vector<double>& by, std::vector<double>* pTiles) const;
  bool FactoriseColumn(int j);
  void InvertColumn(int j);

  std::vector<int> m_starts, m_tileOf;  // m_tileOf by row
  std::vector<std::size_t> m_place;     // by tile row and column, in m_a and m_z
  std::vector<std::vector<int>> m_below,
      m_left;  // tiles of a column under, of a row before its diagonal
  std::vector<double> m_a, m_z;
};

}  // namespace zu::internal
