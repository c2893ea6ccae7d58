/// Grey values between pixels.
#pragma once

#include <algorithm>
#include <opencv2/core.hpp>

namespace velmora::finder {

/// The value at a point, from the four pixels around it; beyond the image that of its edge.
inline double GreyAt(const cv::Mat& grey, const cv::Point2d& at) {
  const double x = std::min(std::max(at.x, 0.0), grey.cols - 1.001);
  const double y = std::min(std::max(at.y, 0.0), grey.rows - 1.001);
  const int column = static_cast<int>(x);
  const int row = static_cast<int>(y);
  const double u = x - column;
  const double v = y - row;
  const unsigned char* upper = grey.ptr(row) + column;
  const unsigned char* lower = grey.ptr(row + 1) + column;
  return (1.0 - v) * ((1.0 - u) * upper[0] + u * upper[1]) + v * ((1.0 - u) * lower[0] + u * lower[1]);
}

}  // namespace velmora::finder
