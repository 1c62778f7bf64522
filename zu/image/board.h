// Corners of a chessboard in a picture.
#pragma once

#include <string>
#include <vector>

#include "zu/image/detected_point.h"
#include "zu/image/export.h"

class ZuImage;
class ZuPointList;

// A board by its inner corners, where four squares meet. Point k, from 1, stands in column
// (k - 1) mod columns and row (k - 1) div columns; seen from the front, rows count from the top and
// columns from the left, X goes to the right, Y up, Z from the board to the camera. The four
// corners of a board whose numbers of columns and rows are one even and one odd differ by the
// squares that touch them: the square between points 1, 2 and the two below is dark.
struct ZU_IMAGE_API ZuChessboard {
  int m_iColumns = 0;
  int m_iRows = 0;

  // One number of corners is even and the other odd: half a turn of the board is seen.
  bool HasOneWay() const { return (m_iColumns + m_iRows) % 2 != 0; }
  // The points of the board, ids from 1, with squares of this side; Z is 0, Y of the lowest row,
  // too.
  void AddPoints(double dSquare, ZuPointList* pPoints) const;
};

struct ZuBoardDetection {
  std::vector<ZuDetectedPoint> m_points;  // all of them, by id; or none
  std::string m_strText;  // why there are none, or what is not certain; may be empty
};

// Finds all corners of the board, or none: a board that is not whole in the picture is not found.
// At least 3 by 3 corners. A board that half a turn (a square one: a quarter) carries onto itself
// is numbered so that its rows run to the right of the picture, and the text tells it. Takes some
// tenths of a second; with OpenCV's threads, the same result for any number of them. The floor of
// the standard deviations is in pixels.
ZU_IMAGE_API ZuBoardDetection ZuDetectChessboard(const ZuImage& image, const ZuChessboard& board,
                                                 double dSigmaFloor = kZuSigmaFloor);
