/// Compares a fisheye with the lenses of planes.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "ModelChoice.h"
#include "model/Solution.h"
#include "solver/SparseIntrinsics.h"

namespace velmora {

/// A fisheye and the model of that number, both from the same points with sheets as free as each asks for.
/// Where the options are robust these are the points that the fisheye keeps, if it keeps clearly more of
/// them, else those of the model.
struct FisheyeComparison {
  bool computed = false;           ///< whether there is a fisheye of the views at all
  bool planeComputed = false;      ///< whether the model could be computed from the same points
  ModelChoice::Candidate fisheye;  ///< its `model` is 0
  ModelChoice::Candidate plane;
  double widest = 0.0;  ///< the largest angle between the fisheye's axis and the ray of a point, degrees
};

/// The largest angle between the axis of a fisheye and the ray of a point that it was computed from, degrees.
double WidestAngleOf(const Solution& fisheye);

FisheyeComparison CompareWithFisheye(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                     const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                     const cv::Size& imageSize, int model, const SparseOptions& options);

}  // namespace velmora
