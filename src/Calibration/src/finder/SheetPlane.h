/// Where places of the pattern are in the picture: a plane in perspective, bent a little by the lens.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace finder {

/// Discs with known centres, by place.
struct PlacedDiscs {
  std::vector<cv::Point> places;     ///< all of the pattern
  std::vector<cv::Point2d> centres;  ///< as many
  std::vector<double> radii;         ///< as many, pixels; 0 for a disc that is missing

  bool Has(size_t k) const { return radii[k] > 0.0; }
  int Missing() const;
  double MedianRadius() const;
};

class SheetPlane {
 public:
  /// Fits the plane to the discs that are not missing. False when there is no such plane.
  bool Fit(const PlacedDiscs& discs);

  /// By the plane alone.
  cv::Point2d Project(const cv::Point2d& place) const;
  /// How the picture changes with the place, pixels per step.
  cv::Matx22d Slope(const cv::Point2d& place) const;
  /// The length of a step around a place, pixels.
  double Step(const cv::Point2d& place) const;

  /// How far the neighbours of a place are off the plane (the middle of them); zero without any.
  cv::Point2d NeighboursOffset(const PlacedDiscs& discs, const cv::Point& place) const;
  /// The plane's word, corrected by the neighbours'.
  cv::Point2d Predict(const PlacedDiscs& discs, const cv::Point& place) const;

 private:
  cv::Matx33d H_ = cv::Matx33d::eye();
};

}  // namespace finder
