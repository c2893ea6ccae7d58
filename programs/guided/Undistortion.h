/// Shows images as a camera without distortion would have taken them.
#pragma once

#include <opencv2/core.hpp>

#include "common/Report.h"

namespace guided {

/// Of one camera's result. Straight edges are straight in what it gives, as far as the result is right. Of a
/// fisheye that is the part of the field that a plane image can hold.
class Undistortion {
 public:
  explicit Undistortion(const common::Report& result);

  /// The image, of the result's size, without distortion; what it does not show is black.
  cv::Mat Of(const cv::Mat& image) const;

 private:
  cv::Mat first_;  ///< the maps of cv::remap
  cv::Mat second_;
};

}  // namespace guided
