/// Where discs at any place of the pattern, or around it, are in a rendered frame.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "Scene.h"

namespace unit {

/// The grid indices of the discs of a grid, row by row, in steps.
std::vector<cv::Point> Places(const cv::Size& grid);

/// Scene and pose must outlive it; the pose may change meanwhile.
class DiscView {
 public:
  DiscView(const world::Scene& scene, const world::Pose& pose) : scene_(scene), pose_(pose) {}

  /// The image of a grid index's middle.
  cv::Point2d Centre(const cv::Point& gridIndex) const { return Project({Grid(gridIndex)}).front(); }
  /// Points of the image of a disc's rim.
  std::vector<cv::Point2d> Rim(const cv::Point& gridIndex, int points = 24) const;
  /// The middle of a disc's image.
  cv::Point2d Middle(const cv::Point& gridIndex) const;

  /// Whether a disc would be at least `margin` pixels inside of the outermost ones.
  bool Inside(const cv::Point& gridIndex, double margin) const;
  /// A disc would be on the sheet's paper, and on no ink.
  bool OnPaper(const cv::Point& gridIndex) const;

 private:
  cv::Point3d Grid(const cv::Point& gridIndex) const;
  std::vector<cv::Point2d> Project(const std::vector<cv::Point3d>& points) const;

  const world::Scene& scene_;
  const world::Pose& pose_;
};

}  // namespace unit
