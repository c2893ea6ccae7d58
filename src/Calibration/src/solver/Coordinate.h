/// A pixel's coordinate with its derivatives.
#pragma once

#include <array>
#include <opencv2/core.hpp>

#include "model/Intrinsics.h"

namespace velmora::solver {

/// A pixel's coordinate with its derivatives by the intrinsics and by the point in the camera's frame.
struct Coordinate {
  double value = 0.0;
  std::array<double, FULL_PARAMETERS> byIntrinsics{};
  cv::Vec3d byPoint;
};

}  // namespace velmora::solver
