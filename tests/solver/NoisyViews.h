/// Views of the grid as a detector with a little noise sees them.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

#include "Views.h"
#include "unit/Collection.h"

namespace unit {

/// Random views of the camera with a tenth of a pixel of noise.
inline PointLists NoisyViews(const world::Camera& camera, int count, std::uint64_t seed) {
  const world::Sheet sheet(GRID, static_cast<double>(UNIT));
  cv::RNG random(seed + 1);
  PointLists views;
  for (const world::Pose& pose : world::SampleViews(camera, count, seed, sheet)) {
    views.push_back(world::TrueCentres(camera.lens, sheet, pose));
    for (cv::Point2d& centre : views.back()) {
      centre += cv::Point2d(random.gaussian(0.1), random.gaussian(0.1));
    }
  }
  return views;
}

}  // namespace unit
