/// The records of a calibrator as the solver takes them.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "solver/Problem.h"

namespace velmora::solver {

/// Views with the target's frame moved to the middle of its points, where turns and shifts of a pose hardly
/// depend on each other, and where that middle was.
struct Target {
  std::vector<View> views;
  std::vector<cv::Vec3d> middles;
};

/// Takes coordinates in single precision, as the other solver does: both are given the same numbers. Raises
/// cv::Exception for lists that are empty or do not match, for points that are not finite, and for targets
/// with points off the plane z = 0.
Target TargetOf(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                const std::vector<std::vector<cv::Point2d>>& imagePoints);

}  // namespace velmora::solver
