/// Whether the views that were left out are of another camera, or of another setting of this one.
#pragma once

#include <string>
#include <vector>

#include "model/Solution.h"

namespace velmora {

struct OtherCamera {
  int views = 0;             ///< that agree among themselves; 0: they do not, or are too few to tell
  double focalLength = 0.0;  ///< over that of the solution
  std::string reason;
  std::string advice;
};

/// Solves the images of one of the cameras that the solution is without, if there are five of them or more.
OtherCamera OtherCameraAmong(const std::vector<Observation>& leftOut, const Solution& solution,
                             size_t camera);

}  // namespace velmora
