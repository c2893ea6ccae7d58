/// Grey images, and their values between pixels.
#pragma once

#include <algorithm>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace velmora::finder {

/// A frame of 8 bits and 1, 3 (BGR) or 4 channels in grey; one that is grey already is not copied.
inline cv::Mat GreyOf(const cv::Mat& frame) {
  cv::Mat grey = frame;
  if (frame.channels() == 3) cv::cvtColor(frame, grey, cv::COLOR_BGR2GRAY);
  if (frame.channels() == 4) cv::cvtColor(frame, grey, cv::COLOR_BGRA2GRAY);
  return grey;
}

/// True for a point between pixels of the image.
inline bool IsInside(const cv::Mat& grey, const cv::Point2d& at) {
  return at.x >= 0.0 && at.y >= 0.0 && at.x <= grey.cols - 1.001 && at.y <= grey.rows - 1.001;
}

/// The value at a point for which IsInside() holds, from the four pixels around it.
inline double GreyInside(const cv::Mat& grey, const cv::Point2d& at) {
  const int column = static_cast<int>(at.x);
  const int row = static_cast<int>(at.y);
  const double u = at.x - column;
  const double v = at.y - row;
  const unsigned char* upper = grey.ptr(row) + column;
  const unsigned char* lower = upper + grey.step[0];
  return (1.0 - v) * ((1.0 - u) * upper[0] + u * upper[1]) + v * ((1.0 - u) * lower[0] + u * lower[1]);
}

/// The value at any point; beyond the image that of its edge.
inline double GreyAt(const cv::Mat& grey, const cv::Point2d& at) {
  return GreyInside(grey, {std::min(std::max(at.x, 0.0), grey.cols - 1.001),
                           std::min(std::max(at.y, 0.0), grey.rows - 1.001)});
}

}  // namespace velmora::finder
