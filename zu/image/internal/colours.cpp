#include "zu/image/internal/colours.h"

#include <png.h>

#include <opencv2/imgproc.hpp>

cv::Mat ZuColoursOf(const ZuImage& image) {
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

std::string ZuPngOf(const cv::Mat& colours) {
  png_image png = {};
  png.version = PNG_IMAGE_VERSION;
  png.width = static_cast<png_uint_32>(colours.cols);
  png.height = static_cast<png_uint_32>(colours.rows);
  png.format = PNG_FORMAT_RGB;
  png.flags = PNG_IMAGE_FLAG_FAST;
  png_alloc_size_t uSize = PNG_IMAGE_PNG_SIZE_MAX(png);
  std::string bytes(uSize, '\0');
  if (!png_image_write_to_memory(&png, bytes.data(), &uSize, 0, colours.data, 0, nullptr))
    return {};
  bytes.resize(uSize);
  return bytes;
}
