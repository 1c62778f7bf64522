// The inverse of a camera's forward map as a dense table: node (i, j) holds the corrected
// coordinates of the measured point (s (i - 390), s (j - 390)), s = 2 limit / 780.
#pragma once

#include <memory>

#include "zu/foundation/internal/build_size.h"
#include "zu/numerics/matrix.h"

class ZuCamera;

class ZuInvAdjustTable {
 public:
  static constexpr int kNodes = ZuBuildSize(781, 29);  // along each axis
  static constexpr int kCells = kNodes - 1;

  ZuInvAdjustTable() : m_Matrix(3, 3) {}

  bool IsFor(const ZuCamera& camera) const;
  // Fills the table on all processors. Does nothing when it already reaches the camera's m_dRMax.
  void Build(const ZuCamera& camera);
  // The measured point whose nodes enclose the corrected point (x, y), each axis interpolated on
  // its own within the cell. False, point untouched: at or beyond the limit, no finite answer.
  bool LookUp(double* x, double* y) const;

 private:
  struct Node {
    double x, y;
  };
  struct Cell {
    int i, j;  // upper node, 1 to kCells
  };

  const Node& At(int i, int j) const { return m_pNodes[static_cast<size_t>(i) * kNodes + j]; }
  // Between which cells a bisection still looks.
  struct Bounds {
    int iLower = 1, iUpper = kCells, jLower = 1, jUpper = kCells;
  };
  struct Place {
    float i, j;  // in the grid, 0 to kCells
  };
  static constexpr int kGuessCells =
      ZuBuildSize(32, 4);  // of the lattice of guesses, along each axis
  static constexpr int kGuessNodes = kGuessCells + 1;

  static int ClampCell(int i) { return i < 1 ? 1 : i > kCells ? kCells : i; }
  bool Contains(Cell cell, double X, double Y) const;
  Cell Bisect(const Bounds& bounds, double X, double Y) const;
  Cell Step(Cell cell, double X, double Y) const;
  Cell Walk(Cell cell, double X, double Y) const;
  Cell Find(double X, double Y) const;
  void Interpolate(Cell cell, double X, double Y, double* fi, double* fj) const;

  void FillGuesses();
  // The cell that probably holds the point.
  Cell Guess(double X, double Y) const;
  // Whether the bisection of the whole table goes straight to this cell and ends there, as it does
  // for all but few points in it. If not, *pBounds gets the bounds of its first step astray.
  bool LeadsBisectionTo(Cell cell, double X, double Y, Bounds* pBounds) const;

  unsigned int m_iCameraId = 0;
  double m_dCameraC = 0.0;
  std::unique_ptr<Node[]> m_pNodes;  // none while the limit is 0
  double m_dLimit = 0.0;             // half-width in measured coordinates [mm], 0 until built
  ZuMatrix m_Matrix;                 // grid index to measured coordinates

  // Where in the grid the nodes of a coarse lattice of corrected coordinates, -limit to limit, lie.
  // What is interpolated between them misses by hundredths of a cell.
  Place m_aGuesses[kGuessNodes * kGuessNodes];
  double m_dGuessScale = 0.0;  // lattice cells per mm
};

// The camera's table, built at the first call of its id and constant; null for a NaN constant,
// which equals no key. One thread at a time.
ZuInvAdjustTable* GetInvAdjustTable(const ZuCamera& camera);
