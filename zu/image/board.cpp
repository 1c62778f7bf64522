#include "zu/image/board.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include "zu/image/image.h"
#include "zu/image/internal/corner_refine.h"
#include "zu/points/point_list.h"

namespace {

// The longer side of a picture in which corners are searched; a larger one is made smaller first,
// since the search takes more than linear time [pixel].
constexpr double kSearched = 2400.0;

// Corners row by row, as the search gives them; the grid of one board.
class Grid {
 public:
  Grid(std::vector<cv::Point2f> corners, const ZuChessboard& board)
      : m_corners(std::move(corners)), m_iColumns(board.m_iColumns), m_iRows(board.m_iRows) {}

  const std::vector<cv::Point2f>& Corners() const { return m_corners; }
  const cv::Point2f& At(int iRow, int iColumn) const {
    return m_corners[static_cast<std::size_t>(iRow * m_iColumns + iColumn)];
  }

  // The board is seen from behind: rows to the right and columns down turn the wrong way.
  bool IsMirrored() const {
    const cv::Point2f row = At(0, m_iColumns - 1) - At(0, 0);
    const cv::Point2f column = At(m_iRows - 1, 0) - At(0, 0);
    return row.cross(column) < 0.0F;
  }
  void Mirror() {
    for (int i = 0; i < m_iRows; ++i) {
      const auto first = m_corners.begin() + static_cast<std::ptrdiff_t>(i) * m_iColumns;
      std::reverse(first, first + m_iColumns);
    }
  }
  void TurnHalf() { std::reverse(m_corners.begin(), m_corners.end()); }
  // Only of as many rows as columns.
  void TurnQuarter() {
    std::vector<cv::Point2f> turned;
    for (int iRow = 0; iRow < m_iRows; ++iRow) {
      for (int iColumn = 0; iColumn < m_iColumns; ++iColumn) {
        turned.push_back(At(iColumn, m_iColumns - 1 - iRow));
      }
    }
    m_corners = std::move(turned);
  }
  // How far the rows run to the right of the picture.
  float RowsToTheRight() const {
    const cv::Point2f row = At(0, m_iColumns - 1) - At(0, 0);
    return row.x / static_cast<float>(cv::norm(row));
  }

  // Mean grey of the squares that lie as the one at corner 0 does, less that of the others.
  double FirstSquares(const cv::Mat& eight) const {
    double adSum[2] = {0.0, 0.0};
    int aiCount[2] = {0, 0};
    for (int i = 0; i + 1 < m_iRows; ++i) {
      for (int j = 0; j + 1 < m_iColumns; ++j) {
        const cv::Point2f centre = (At(i, j) + At(i, j + 1) + At(i + 1, j) + At(i + 1, j + 1)) / 4;
        const cv::Point pixel(cvRound(centre.x), cvRound(centre.y));
        if (!cv::Rect(0, 0, eight.cols, eight.rows).contains(pixel)) continue;
        adSum[(i + j) % 2] += eight.at<uchar>(pixel);
        ++aiCount[(i + j) % 2];
      }
    }
    return adSum[0] / std::max(aiCount[0], 1) - adSum[1] / std::max(aiCount[1], 1);
  }

  double LeastDistance() const {
    double dLeast = 1e9;
    for (int i = 0; i < m_iRows; ++i) {
      for (int j = 0; j < m_iColumns; ++j) {
        if (j > 0) dLeast = std::min(dLeast, cv::norm(At(i, j) - At(i, j - 1)));
        if (i > 0) dLeast = std::min(dLeast, cv::norm(At(i, j) - At(i - 1, j)));
      }
    }
    return dLeast;
  }

 private:
  std::vector<cv::Point2f> m_corners;
  int m_iColumns, m_iRows;
};

// Pixels of a square at least, for the search to make sense of it.
constexpr int kLeastSquare = 3;

std::vector<cv::Point2f> Search(const cv::Mat& eight, const ZuChessboard& board) {
  const cv::Size size(board.m_iColumns, board.m_iRows);
  if (kLeastSquare * std::min(size.width, size.height) > std::min(eight.cols, eight.rows))
    return {};
  const double dScale = std::min(1.0, kSearched / std::max(eight.cols, eight.rows));
  cv::Mat small = eight;
  if (dScale < 1.0) cv::resize(eight, small, cv::Size(), dScale, dScale, cv::INTER_AREA);
  std::vector<cv::Point2f> corners;
  if (!cv::findChessboardCorners(small, size, corners) &&
      !cv::findChessboardCornersSB(small, size, corners)) {
    return {};
  }
  const float fScale = static_cast<float>(dScale);
  const cv::Point2f half(0.5F, 0.5F);  // pixel centres are whole numbers at both scales
  if (dScale < 1.0) {
    for (cv::Point2f& corner : corners) corner = (corner + half) / fScale - half;
  }
  return corners;
}

// Puts the numbering right; the text tells where it is a choice.
std::string Number(const cv::Mat& eight, const ZuChessboard& board, Grid* pGrid) {
  if (pGrid->IsMirrored()) pGrid->Mirror();
  if (board.HasOneWay()) {
    if (pGrid->FirstSquares(eight) > 0.0) pGrid->TurnHalf();
    return {};
  }
  if (board.m_iColumns == board.m_iRows) {
    for (int i = 0; i < 4 && pGrid->RowsToTheRight() < 0.7F; ++i) pGrid->TurnQuarter();
  }
  if (pGrid->RowsToTheRight() < 0.0F) pGrid->TurnHalf();
  return "the board looks the same after a turn: it is numbered with its rows to the right of the "
         "picture";
}

}  // namespace

void ZuChessboard::AddPoints(double dSquare, ZuPointList* pPoints) const {
  for (int i = 0; i < m_iRows * m_iColumns; ++i) {
    ZuPoint point(static_cast<unsigned>(i + 1), 0.0, 0.0);
    point.m_dX = dSquare * (i % m_iColumns);
    point.m_dY = dSquare * (m_iRows - 1 - i / m_iColumns);
    pPoints->Add(point);
  }
}

ZuBoardDetection ZuDetectChessboard(const ZuImage& image, const ZuChessboard& board,
                                    double dSigmaFloor) {
  ZuBoardDetection detection;
  if (image.IsEmpty() || board.m_iColumns < 3 || board.m_iRows < 3) {
    detection.m_strText =
        image.IsEmpty() ? "there is no picture" : "a board has 3 by 3 corners or more";
    return detection;
  }
  const ZuGrey grey = ZuGreyOf(image);
  Grid grid(Search(grey.m_Eight, board), board);
  if (grid.Corners().empty()) {
    detection.m_strText = "no board of " + std::to_string(board.m_iColumns) + " x " +
                          std::to_string(board.m_iRows) + " inner corners is whole in the picture";
    return detection;
  }
  detection.m_strText = Number(grey.m_Eight, board, &grid);
  detection.m_points = ZuRefineCorners(grey, grid.Corners(), grid.LeastDistance(), dSigmaFloor);
  unsigned uId = 0;
  for (ZuDetectedPoint& point : detection.m_points) point.m_uId = ++uId;
  return detection;
}
