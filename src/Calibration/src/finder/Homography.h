/// The view of a plane, from points on it.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace velmora::finder {

/// The homography that puts `from` nearest to `to`: with the least sum of squared distances there. `H` is
/// scaled so that its last element is 1. False, and `H` as it was, when the points determine none: fewer than
/// four, points on one line, or points that are not finite. As many points in both lists.
bool FitHomography(const std::vector<cv::Point2d>& from, const std::vector<cv::Point2d>& to, cv::Matx33d& H);

}  // namespace velmora::finder
