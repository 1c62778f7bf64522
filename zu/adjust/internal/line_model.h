// Lines of a plane in one photo: their conditions, and the least squares that fulfils them.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace zu::internal {

// With u = R (x, y, -c), R from the image to the axes of the plane, and u3 < 0, the plane at
// distance 1 is met in X = -u1 / u3, Y = -u2 / u3.
struct LineState {
  std::array<double, 9> R{1, 0, 0, 0, 1, 0, 0, 0, 1};  // by rows
  double c = 0.0;
  std::vector<double> angles;  // of the directions, from the X axis
  double dLogScale = 0.0;      // logarithm of the distance of the plane
  std::vector<double> moves;   // of the points, x and y of each [mm]
};

struct LineFitResult {
  bool bGood = false;
  double dSquares = 0.0;          // of the moves
  std::vector<double> cofactors;  // of the unknowns, by rows
  double dLeastEigenvalue = 1.0;  // of the normal matrix scaled to 1 on its diagonal
  std::vector<double> direction;  // its eigenvector; empty where none was formed
};

class LineModel {
 public:
  struct Line {
    std::size_t uFirst, uSecond;  // points
    int iGroup = -1;              // of the directions; -1: of none
    bool bAcross = false;         // perpendicular to the direction of its group
    double dLength = 0.0;         // 0: not told
  };

  enum Unknown { eTurnX, eTurnY, eTurnZ, eC, eAngle, eScale };

  // Conditions that follow from others, where the plane is as the state has it, are left out.
  void Prepare(const LineState& state);
  int Conditions() const { return static_cast<int>(m_conditions.size()); }
  int Unknowns() const { return static_cast<int>(m_unknowns.size()); }
  const std::vector<Unknown>& Kinds() const { return m_unknowns; }

  // Angles and scale that suit the rotation best, the X axis in the first direction. False where a
  // point lies beyond the horizon.
  bool Complete(LineState* p) const;
  // Squares of the conditions over their variances, without correlations.
  double Cost(const LineState& state) const;
  LineFitResult Adjust(LineState* p) const;

  // Of a line, from its first to its second point, as the state has them; bMoved: with the moves.
  std::array<double, 2> InPlane(const LineState& state, const Line& line, bool bMoved) const;
  std::array<double, 2> PointInPlane(const LineState& state, std::size_t uPoint) const;
  bool IsBefore(const LineState& state) const;  // all points

  std::vector<std::array<double, 2>> points;  // corrected [mm]
  std::vector<Line> lines;
  int iGroups = 0;
  bool bEstimateC = false;

 private:
  struct Condition {
    const Line* pLine;
    bool bLength;
  };
  // w + a dx + b dv: b to x, y of the first and of the second point.
  struct Row {
    double w = 0.0;
    std::vector<double> a;
    std::array<double, 4> b{};
  };
  struct PlanePoint {
    double p[2], move[2][2], turn[2][3], c[2];
  };

  void MakeUnknowns();
  PlanePoint At(const LineState& state, std::size_t uPoint, bool bMoved) const;
  Row RowOf(const LineState& state, const Condition& condition) const;
  std::vector<double> Product(const std::vector<Row>& rows) const;  // b b', by rows
  void Move(const std::vector<double>& step, LineState* p) const;

  std::vector<Unknown> m_unknowns;
  std::vector<Condition> m_conditions;
};

}  // namespace zu::internal
