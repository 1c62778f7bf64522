// Grey values between pixels.
#pragma once

#include <opencv2/core.hpp>

// Bilinear; (x, y) and the next pixel to the right and below lie in the picture. Values are 8 bits
// or float.
inline double ZuValueAt(const cv::Mat& values, double x, double y) {
  const int i = static_cast<int>(x), j = static_cast<int>(y);
  const double u = x - i, v = y - j;
  const auto at = [&](int iRow, int iColumn) {
    return values.depth() == CV_8U ? static_cast<double>(values.at<uchar>(iRow, iColumn))
                                   : static_cast<double>(values.at<float>(iRow, iColumn));
  };
  return (1 - v) * ((1 - u) * at(j, i) + u * at(j, i + 1)) +
         v * ((1 - u) * at(j + 1, i) + u * at(j + 1, i + 1));
}
