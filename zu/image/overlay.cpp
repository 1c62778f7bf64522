#include "zu/image/overlay.h"

#include <png.h>

#include <opencv2/imgproc.hpp>
#include <ostream>
#include <string>

#include "zu/image/internal/grey.h"

namespace {

const cv::Scalar kMark(255, 40, 40), kText(0, 110, 255), kRim(255, 255, 255);
constexpr int kFraction = 4;  // bits of a pixel's fraction in drawing
constexpr int kFractions = 1 << kFraction;

cv::Mat Canvas(const ZuImage& image) {
  const int iDepth = image.GetBits() == 16 ? CV_16U : CV_8U;
  const int nChannels = image.GetChannels();
  const cv::Mat whole(image.GetHeight(), image.GetWidth(), CV_MAKETYPE(iDepth, nChannels),
                      const_cast<std::uint8_t*>(image.GetData()));
  cv::Mat colours, eight;
  if (nChannels >= 3) {
    nChannels == 4 ? cv::cvtColor(whole, colours, cv::COLOR_RGBA2RGB) : whole.copyTo(colours);
  } else {
    cv::Mat single;
    cv::extractChannel(whole, single, 0);
    cv::cvtColor(single, colours, cv::COLOR_GRAY2RGB);
  }
  colours.convertTo(eight, CV_8U, iDepth == CV_16U ? 1.0 / 257.0 : 1.0);
  return eight;
}

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
  cv::Mat canvas = Canvas(image);
  const double dUnit = std::max(6.0, std::max(canvas.cols, canvas.rows) / 160.0);
  for (const ZuDetectedPoint& point : points) Draw(point, dUnit, &canvas);
  png_image png = {};
  png.version = PNG_IMAGE_VERSION;
  png.width = static_cast<png_uint_32>(canvas.cols);
  png.height = static_cast<png_uint_32>(canvas.rows);
  png.format = PNG_FORMAT_RGB;
  png.flags = PNG_IMAGE_FLAG_FAST;
  png_alloc_size_t uSize = PNG_IMAGE_PNG_SIZE_MAX(png);
  std::string bytes(uSize, '\0');
  if (!png_image_write_to_memory(&png, bytes.data(), &uSize, 0, canvas.data, 0, nullptr))
    return false;
  stream.write(bytes.data(), static_cast<std::streamsize>(uSize));
  return true;
}
