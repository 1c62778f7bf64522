#include "zu/image/target.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "zu/image/image.h"
#include "zu/image/internal/ellipse_fit.h"
#include "zu/image/internal/grey.h"

namespace {

constexpr double kOfEllipse = 0.15;  // difference of a blob's area from that of its ellipse [-]
constexpr double kFlattest = 0.12;   // ratio of the axes; flatter ones are edges of something else
constexpr std::size_t kLeastContour = 12;  // [pixel]

// Blobs that stand out from the mean of their surroundings, as ellipses. A disk is a blob where the
// surroundings are some times as large.
void AddBlobs(const cv::Mat& eight, const ZuTargetOptions& options, int iSurroundings,
              std::vector<ZuTarget>* pTargets) {
  cv::Mat blobs;
  const double dThreshold = std::max(3.0, options.m_dLeastContrast * 255 / 2);
  cv::adaptiveThreshold(eight, blobs, 255, cv::ADAPTIVE_THRESH_MEAN_C,
                        options.m_bBright ? cv::THRESH_BINARY : cv::THRESH_BINARY_INV,
                        iSurroundings, options.m_bBright ? -dThreshold : dThreshold);
  std::vector<std::vector<cv::Point>> contours;
  cv::findContours(blobs, contours, cv::RETR_LIST, cv::CHAIN_APPROX_NONE);
  for (const std::vector<cv::Point>& contour : contours) {
    if (contour.size() < kLeastContour || contour.size() > 4 * options.m_dMostDiameter) continue;
    const cv::RotatedRect ellipse = cv::fitEllipseDirect(contour);
    const double dArea = CV_PI / 4 * ellipse.size.width * ellipse.size.height;
    if (!(std::fabs(cv::contourArea(contour) / dArea - 1) < kOfEllipse)) continue;
    ZuTarget target;
    target.m_dX = ellipse.center.x;
    target.m_dY = ellipse.center.y;
    // A contour runs through the outermost pixels, half a pixel inside the edge.
    target.m_dA = ellipse.size.width / 2 + 0.5;
    target.m_dB = ellipse.size.height / 2 + 0.5;
    target.m_dAngle = ellipse.angle * CV_PI / 180;
    if (std::min(target.m_dA, target.m_dB) * 3 < options.m_dLeastDiameter) continue;
    pTargets->push_back(target);
  }
}

bool Keeps(const ZuTarget& target, const ZuTargetOptions& options, double dRange) {
  const double dContrast = options.m_bBright ? -target.m_dContrast : target.m_dContrast;
  return dContrast >= options.m_dLeastContrast * dRange &&
         2 * target.m_dB >= options.m_dLeastDiameter &&
         2 * target.m_dA <= options.m_dMostDiameter && target.m_dB >= kFlattest * target.m_dA;
}

bool IsBefore(const ZuTarget& a, const ZuTarget& b) {
  return a.m_dY != b.m_dY ? a.m_dY < b.m_dY : a.m_dX < b.m_dX;
}

// Of ellipses within each other the one with the strongest contrast stays: inner and outer edge of
// a ring, or one disk found among surroundings of several sizes.
std::vector<ZuTarget> WithoutDoubles(std::vector<ZuTarget> targets) {
  std::stable_sort(targets.begin(), targets.end(), [](const ZuTarget& a, const ZuTarget& b) {
    return std::fabs(a.m_dContrast) > std::fabs(b.m_dContrast);
  });
  std::vector<ZuTarget> kept;
  for (const ZuTarget& target : targets) {
    const bool bDouble = std::any_of(kept.begin(), kept.end(), [&](const ZuTarget& other) {
      return std::hypot(other.m_dX - target.m_dX, other.m_dY - target.m_dY) <
             std::max(other.m_dB, target.m_dB);
    });
    if (!bDouble) kept.push_back(target);
  }
  std::sort(kept.begin(), kept.end(), IsBefore);
  return kept;
}

}  // namespace

std::vector<ZuTarget> ZuDetectTargets(const ZuImage& image, const ZuTargetOptions& options) {
  if (image.IsEmpty()) return {};
  const ZuGrey grey = ZuGreyOf(image);
  const double dRange = grey.m_Values.depth() == CV_8U ? 255.0 : 65535.0;
  const double dLargest =
      std::min<double>(3 * options.m_dMostDiameter, std::max(image.GetWidth(), image.GetHeight()));
  std::vector<ZuTarget> blobs, targets;
  for (double d = 4 * options.m_dLeastDiameter;; d *= 3) {
    AddBlobs(grey.m_Eight, options, 2 * static_cast<int>(std::min(d, dLargest) / 2) + 3, &blobs);
    if (d >= dLargest) break;
  }
  for (ZuTarget& target : blobs) {
    if (!ZuFitEllipse(grey.m_Values, &target) || !Keeps(target, options, dRange)) continue;
    target.AddDeviation(options.m_dSigmaFloor);
    targets.push_back(target);
  }
  return WithoutDoubles(std::move(targets));
}
