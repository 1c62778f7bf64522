#include "zu/image/internal/corner_refine.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace {

constexpr int kSteps = 30;
constexpr double kMove = 0.001;  // after which a corner stands [pixel]

// The residuals of the lines towards the corner against the normal equations of its place.
void SetDeviations(const cv::Mat& values, int iHalf, double dSigmaFloor, ZuDetectedPoint* pPoint) {
  const int iSide = 2 * iHalf + 1;
  cv::Mat patch;
  const cv::Point2f centre(static_cast<float>(pPoint->m_dX), static_cast<float>(pPoint->m_dY));
  cv::getRectSubPix(values, cv::Size(iSide + 2, iSide + 2), centre, patch, CV_32F);
  double dXX = 0.0, dXY = 0.0, dYY = 0.0, dSum = 0.0;
  for (int y = 1; y <= iSide; ++y) {
    for (int x = 1; x <= iSide; ++x) {
      const double u = x - 1 - iHalf, v = y - 1 - iHalf;
      const double gx = patch.at<float>(y, x + 1) - patch.at<float>(y, x - 1);
      const double gy = patch.at<float>(y + 1, x) - patch.at<float>(y - 1, x);
      const double dWeight = std::exp(-(u * u + v * v) / (iHalf * iHalf));
      const double e = gx * u + gy * v;
      dXX += dWeight * gx * gx;
      dXY += dWeight * gx * gy;
      dYY += dWeight * gy * gy;
      dSum += dWeight * e * e;
    }
  }
  const double dDet = dXX * dYY - dXY * dXY;
  if (!(dDet > 0.0)) return;
  const double dVariance = dSum / (iSide * iSide - 2);
  pPoint->m_dDX = std::sqrt(dVariance * dYY / dDet);
  pPoint->m_dDY = std::sqrt(dVariance * dXX / dDet);
  pPoint->AddDeviation(dSigmaFloor);
}

}  // namespace

std::vector<ZuDetectedPoint> ZuRefineCorners(const ZuGrey& grey, std::vector<cv::Point2f> corners,
                                             double dDistance, double dSigmaFloor) {
  const int iHalf = std::clamp(static_cast<int>(dDistance / 2), 1, kZuCornerWindow);
  if (!corners.empty()) {
    const cv::TermCriteria criteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, kSteps, kMove);
    cv::cornerSubPix(grey.m_Values, corners, cv::Size(iHalf, iHalf), cv::Size(-1, -1), criteria);
  }
  std::vector<ZuDetectedPoint> points;
  for (const cv::Point2f& corner : corners) {
    ZuDetectedPoint point;
    point.m_dX = corner.x;
    point.m_dY = corner.y;
    SetDeviations(grey.m_Values, iHalf, dSigmaFloor, &point);
    points.push_back(point);
  }
  return points;
}
