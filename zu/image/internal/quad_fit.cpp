#include "zu/image/internal/quad_fit.h"

#include <algorithm>
#include <cmath>

#include "zu/image/internal/value_at.h"

namespace {

constexpr double kEnds = 0.12;  // of a side at either corner, where two edges blur into one [-]
constexpr double kStep = 0.25;  // between the samples across an edge [pixel]
constexpr double kReach = 4.0;  // to either side, at most [pixel]
constexpr int kLeastEdges = 5;
constexpr int kRounds = 2;  // the second from the corners of the first

// n . x = d, and the standard deviations of offset and turn about the middle of the side.
struct Line {
  cv::Vec2d normal, middle;
  double dOffset = 0.0;
  double dOffsetSd = 0.0, dTurnSd = 0.0;
};

// Fits offset and turn of the edge against the side from a to b.
bool FitLine(const cv::Mat& values, const cv::Vec2d& a, const cv::Vec2d& b, double dRim,
             Line* pLine) {
  const double dLength = cv::norm(b - a);
  const double dReach = std::clamp(0.6 * dRim, 1.0, kReach);
  if (!(dLength > 4.0)) return false;
  const cv::Vec2d along = (b - a) / dLength, across(along[1], -along[0]);
  const cv::Vec2d middle = (a + b) / 2;
  double dN = 0.0, dT = 0.0, dTT = 0.0, dE = 0.0, dTE = 0.0, dEE = 0.0;
  for (double t = (kEnds - 0.5) * dLength; t <= (0.5 - kEnds) * dLength; t += 1.0) {
    const auto at = [&](double s) {
      const cv::Vec2d place = middle + t * along + s * across;
      const bool bInside = place[0] >= 0.0 && place[0] < values.cols - 1 && place[1] >= 0.0 &&
                           place[1] < values.rows - 1;
      return bInside ? ZuValueAt(values, place[0], place[1]) : std::nan("");
    };
    const double dLevel = (at(-dReach) + at(dReach)) / 2;
    double dBest = 1e9;
    for (double s = -dReach; s < dReach - kStep / 2; s += kStep) {
      const double d0 = at(s) - dLevel, d1 = at(s + kStep) - dLevel;
      if (!(d0 * d1 <= 0.0) || d0 == d1) continue;
      const double e = s + kStep * d0 / (d0 - d1);
      if (std::fabs(e) < std::fabs(dBest)) dBest = e;
    }
    if (dBest > 1e8) continue;
    dN += 1.0, dT += t, dTT += t * t, dE += dBest, dTE += t * dBest, dEE += dBest * dBest;
  }
  if (dN < kLeastEdges) return false;
  // e = p + q (t - mean)
  const double dMean = dT / dN, dSpread = dTT - dN * dMean * dMean;
  const double q = (dTE - dMean * dE) / dSpread, p = dE / dN;
  const double dVariance = std::max(0.0, dEE - dN * p * p - q * q * dSpread) / (dN - 2);
  pLine->middle = middle + dMean * along + p * across;
  pLine->normal = cv::normalize(across - q * along);
  pLine->dOffset = pLine->normal.dot(pLine->middle);
  pLine->dOffsetSd = std::sqrt(dVariance / dN);
  pLine->dTurnSd = std::sqrt(dVariance / dSpread);
  return true;
}

bool Meet(const Line& a, const Line& b, ZuDetectedPoint* pPoint) {
  const double dDet = a.normal[0] * b.normal[1] - a.normal[1] * b.normal[0];
  if (std::fabs(dDet) < 0.05) return false;
  pPoint->m_dX = (a.dOffset * b.normal[1] - b.dOffset * a.normal[1]) / dDet;
  pPoint->m_dY = (b.dOffset * a.normal[0] - a.dOffset * b.normal[0]) / dDet;
  const cv::Vec2d place(pPoint->m_dX, pPoint->m_dY);
  const double dA = std::hypot(a.dOffsetSd, a.dTurnSd * cv::norm(place - a.middle)) / dDet;
  const double dB = std::hypot(b.dOffsetSd, b.dTurnSd * cv::norm(place - b.middle)) / dDet;
  pPoint->m_dDX = std::hypot(dA * b.normal[1], dB * a.normal[1]);
  pPoint->m_dDY = std::hypot(dB * a.normal[0], dA * b.normal[0]);
  return true;
}

}  // namespace

std::vector<ZuDetectedPoint> ZuFitQuad(const cv::Mat& values,
                                       const std::vector<cv::Point2f>& corners, double dRim) {
  std::vector<ZuDetectedPoint> points(corners.size());
  std::vector<cv::Vec2d> places;
  for (const cv::Point2f& corner : corners) places.emplace_back(corner.x, corner.y);
  const std::size_t n = places.size();
  for (int iRound = 0; iRound < kRounds; ++iRound) {
    std::vector<Line> lines(n);
    for (std::size_t i = 0; i < n; ++i) {
      if (!FitLine(values, places[i], places[(i + 1) % n], dRim, &lines[i])) return {};
    }
    for (std::size_t i = 0; i < n; ++i) {
      if (!Meet(lines[(i + n - 1) % n], lines[i], &points[i])) return {};
      if (!(cv::norm(cv::Vec2d(points[i].m_dX, points[i].m_dY) - places[i]) < 2 * kReach))
        return {};
    }
    for (std::size_t i = 0; i < n; ++i) places[i] = {points[i].m_dX, points[i].m_dY};
  }
  return points;
}
