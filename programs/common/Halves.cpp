/// Cuts a frame that shows two cameras into the image of each.
#include "common/Halves.h"

namespace common {

cv::Mat HalfOf(const cv::Mat& frame, Split split, Camera camera) {
  const bool horizontal = split == Split::Horizontal;
  const cv::Size half(horizontal ? frame.cols : frame.cols / 2, horizontal ? frame.rows / 2 : frame.rows);
  if (half.width <= 0 || half.height <= 0) return {};
  cv::Point corner(0, 0);
  if (camera == Camera::Right) corner = horizontal ? cv::Point(0, half.height) : cv::Point(half.width, 0);
  return frame(cv::Rect(corner, half)).clone();
}

}  // namespace common
