#include "zu/image/internal/grey.h"

ZuGrey ZuGreyOf(const ZuImage& image) {
  ZuGrey grey;
  const int iDepth = image.GetBits() == 16 ? CV_16U : CV_8U;
  // The picture is read only.
  const cv::Mat whole(image.GetHeight(), image.GetWidth(), CV_MAKETYPE(iDepth, image.GetChannels()),
                      const_cast<std::uint8_t*>(image.GetData()));
  cv::Mat single;
  cv::extractChannel(whole, single, image.GetChannels() >= 3 ? 1 : 0);
  if (iDepth == CV_8U) {
    grey.m_Eight = single;
    grey.m_Values = single;
    return grey;
  }
  cv::normalize(single, grey.m_Eight, 0.0, 255.0, cv::NORM_MINMAX, CV_8U);
  single.convertTo(grey.m_Values, CV_32F);
  return grey;
}
