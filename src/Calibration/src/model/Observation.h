/// What a camera observed of the target.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace velmora {

/// One image of the target: points in the target's frame and the pixels where they were observed.
struct Observation {
  std::vector<cv::Point3d> object;
  std::vector<cv::Point2d> image;
  std::vector<double> weights;   ///< of the points, 0 to 1; empty: all one
  std::vector<size_t> places{};  ///< which points of the target these are; empty: all, in their order
  /// Of the points' errors, where those of a usual point are 1; empty: all alike. Selecting outliers changes
  /// weights, and leaves these.
  std::vector<double> deviations{};

  /// Whether the camera observed the target at all.
  bool IsEmpty() const { return object.empty(); }

  size_t Place(size_t point) const { return places.empty() ? point : places[point]; }
  double Deviation(size_t point) const { return deviations.empty() ? 1.0 : deviations[point]; }
  /// Of the squared residual in the cost: the point's own weight, over its variance.
  double Weight(size_t point) const {
    const double deviation = Deviation(point);
    return (weights.empty() ? 1.0 : weights[point]) / (deviation * deviation);
  }

  /// How many points there are. A point without weight is none: it was rejected.
  double Count() const;
};

/// The number of points of all the observations together.
double CountOf(const std::vector<Observation>& observations);

}  // namespace velmora
