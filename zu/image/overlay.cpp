#include "zu/image/overlay.h"

#include <opencv2/imgproc.hpp>
#include <ostream>
#include <string>

#include "zu/image/internal/colours.h"

namespace {

const cv::Scalar kMark(255, 40, 40), kText(0, 110, 255), kRim(255, 255, 255);
constexpr int kFraction = 4;  // bits of a pixel's fraction in drawing
constexpr int kFractions = 1 << kFraction;

void Draw(const ZuDetectedPoint& point, double dUnit, cv::Mat* pCanvas) {
  const auto place = [&](double dX, double dY) {
    return cv::Point(cvRound((point.m_dX + dX) * kFractions),
                     cvRound((point.m_dY + dY) * kFractions));
  };
  const int iThick = std::max(1, cvRound(dUnit / 8));
  const double d = dUnit;
  cv::line(*pCanvas, place(-d, 0), place(d, 0), kMark, iThick, cv::LINE_AA, kFraction);
  cv::line(*pCanvas, place(0, -d), place(0, d), kMark, iThick, cv::LINE_AA, kFraction);
  const cv::Point text(cvRound(point.m_dX + 0.6 * d), cvRound(point.m_dY - 0.6 * d));
  const double dFont = d / 14;
  for (const bool bRim : {true, false}) {
    cv::putText(*pCanvas, std::to_string(point.m_uId), text, cv::FONT_HERSHEY_SIMPLEX, dFont,
                bRim ? kRim : kText, bRim ? 3 * iThick : iThick, cv::LINE_AA);
  }
}

}  // namespace

bool ZuExportOverlay(std::ostream& stream, const ZuImage& image,
                     const std::vector<ZuDetectedPoint>& points) {
  if (image.IsEmpty()) return false;
  cv::Mat canvas = ZuColoursOf(image);
  const double dUnit = std::max(6.0, std::max(canvas.cols, canvas.rows) / 160.0);
  for (const ZuDetectedPoint& point : points) Draw(point, dUnit, &canvas);
  const std::string bytes = ZuPngOf(canvas);
  if (bytes.empty()) return false;
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return true;
}
