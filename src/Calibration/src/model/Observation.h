/// What a camera observed of the target.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace velmora {

/// One image of the target: points in the target's frame and the pixels where they were observed.
struct Observation {
  std::vector<cv::Point3d> object;
  std::vector<cv::Point2d> image;
  std::vector<double> weights;   ///< of the points' squared residuals; empty: all one
  std::vector<size_t> places{};  ///< which points of the target these are; empty: all, in their order

  /// Whether the camera observed the target at all.
  bool IsEmpty() const { return object.empty(); }

  size_t Place(size_t point) const { return places.empty() ? point : places[point]; }
  double Weight(size_t point) const { return weights.empty() ? 1.0 : weights[point]; }

  /// How many points there are. A point without weight is none: it was rejected.
  double Count() const;
};

/// The number of points of all the observations together.
double CountOf(const std::vector<Observation>& observations);

}  // namespace velmora
