/// Where points of the grid are in the image: a homography and a polynomial for the lens's distortion.
#pragma once

#include <Eigen/Cholesky>
#include <opencv2/core.hpp>
#include <vector>

#include "finder/WideLens.h"

namespace velmora::finder {

/// Discs with known centres, by grid index.
struct LabelledDiscs {
  cv::Size grid;
  std::vector<cv::Point> gridIndices;  ///< all of the pattern
  std::vector<cv::Point2d> centres;    ///< as many
  std::vector<double> radii;           ///< as many, pixels; 0 for a disc that is missing

  bool Has(size_t k) const { return radii[k] > 0.0; }
  /// The disc of a grid index, -1 when it is missing or there is none.
  int At(const cv::Point& gridIndex) const;
  int Missing() const;
  double MedianRadius() const;
};

class GridProjection {
 public:
  /// Fits the homography, and then the distortion, to the discs that are not missing. False when they
  /// determine none.
  bool Fit(const LabelledDiscs& discs) { return FitGridHomography(discs) && FitDistortion(discs); }

  /// Fit() to what a lens bends: the homography leads to its rays. Later fits keep the lens.
  bool Fit(const LabelledDiscs& discs, const WideLens& lens) {
    wide_ = lens;
    return Fit(discs);
  }

  /// Fits the distortion anew, for discs that have moved a little; the homography stays.
  bool FitDistortion(const LabelledDiscs& discs);

  /// The projection of a grid point by the homography alone, and the lens where there is one.
  cv::Point2d Project(const cv::Point2d& gridPoint) const;
  /// How the pixel changes with the grid point, pixels per step.
  cv::Matx22d Slope(const cv::Point2d& gridPoint) const;
  /// The length of a step around a grid point, pixels.
  double Step(const cv::Point2d& gridPoint) const;

  /// The projection of a grid point with distortion.
  cv::Point2d Predict(const cv::Point2d& gridPoint) const {
    return Project(gridPoint) + DistortionAt(gridPoint);
  }
  /// How far a disc is from where the others put it, steps; for one that is not missing.
  double ScaledResidual(const LabelledDiscs& discs, size_t k) const;

 private:
  static constexpr int TERMS = 10;  ///< of a polynomial of third degree; those beyond a lower degree are 0
  using Column = Eigen::Matrix<double, TERMS, 1>;

  bool FitGridHomography(const LabelledDiscs& discs);
  bool FitRays(const std::vector<cv::Point2d>& from, const std::vector<cv::Point2d>& to);
  bool IsInFront(const LabelledDiscs& discs, const cv::Vec3d& axis) const;
  Column Terms(const cv::Point2d& gridPoint) const;
  cv::Point2d DistortionAt(const cv::Point2d& gridPoint) const;

  cv::Matx33d H_ = cv::Matx33d::eye();  ///< to pixels, or to rays of the lens
  cv::Point2d middle_;
  cv::Point2d half_{1.0, 1.0};
  int degree_ = 0;  ///< of the distortion polynomial
  /// Its coefficients, of x and y.
  Eigen::Matrix<double, TERMS, 2> distortion_ = Eigen::Matrix<double, TERMS, 2>::Zero();
  Eigen::LLT<Eigen::Matrix<double, TERMS, TERMS>> normal_;  ///< its normal equations
  WideLens wide_;
  cv::Vec3d axis_;  ///< the middle one of the discs' rays
};

}  // namespace velmora::finder
