/// A picture of how sure a camera's projections are, place by place.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Verdict.h"

namespace common {

/// Where things are in the picture.
struct UncertaintyLayout {
  cv::Size picture;
  cv::Rect map;    ///< shows the whole image of the camera
  cv::Rect scale;  ///< the colours, the least uncertainty below

  explicit UncertaintyLayout(const cv::Size& frame);
};

/// What stands for places without data (outside the data's hull) and without a ray.
extern const cv::Vec3b NO_DATA;

/// The pixels at which lines of equal uncertainty are drawn between two values: 1, 2, 5, 10, ... times powers
/// of ten.
std::vector<double> UncertaintyLevels(double least, double most);

/// The standard deviation of projections as colours, from the verdict's map, with a scale and labelled lines
/// of equal standard deviation in pixels; over it the circles that were seen, and their hull. The title is
/// that with the grade unless another one is given.
cv::Mat DrawUncertainty(const CalibrationVerdict& verdict, const cv::Size& frame,
                        const std::vector<std::vector<cv::Point2d>>& seen, const std::string& title = "");

}  // namespace common
