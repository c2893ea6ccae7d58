/// Cuts the frames of a side-by-side camera.
#pragma once

#include <opencv2/core.hpp>

namespace velmora {

/// What one turn of the reader delivers.
struct CapturedViews {
  cv::Mat frame;      ///< of the left or only camera
  cv::Mat right;      ///< empty without a second view
  bool pair = false;  ///< detection is to search both
};

/// Cuts a frame with two views side by side: mode 1 keeps the right half alone, -1 the left half alone, 0
/// both as a pair; any other value keeps both but leaves detection to the left one. The halves are copies of
/// their own, as wide as half of the frame, rounded down: both are empty for a frame one pixel wide.
CapturedViews SplitViews(const cv::Mat& frame, int mode);

}  // namespace velmora
