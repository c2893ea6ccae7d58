/// Where points of the pattern are in the image: a plane in perspective, bent a little by the lens.
#pragma once

#include <Eigen/Cholesky>
#include <opencv2/core.hpp>
#include <vector>

namespace velmora::finder {

/// Discs with known centres, by grid index.
struct LabelledDiscs {
  cv::Size grid;
  std::vector<cv::Point> gridIndices;  ///< all of the pattern
  std::vector<cv::Point2d> centres;    ///< as many
  std::vector<double> radii;           ///< as many, pixels; 0 for a disc that is missing

  bool Has(size_t k) const { return radii[k] > 0.0; }
  /// The disc of a grid index, -1 when it is missing or there is none.
  int At(const cv::Point& gridPoint) const;
  int Missing() const;
  double MedianRadius() const;
};

class SheetPlane {
 public:
  /// Fits the plane, and then how it is bent, to the discs that are not missing. False when there is no such
  /// plane.
  bool Fit(const LabelledDiscs& discs) { return FitPlane(discs) && FitBend(discs); }

  /// Fits how it is bent anew, for discs that have moved a little; the plane stays.
  bool FitBend(const LabelledDiscs& discs);

  /// By the plane alone.
  cv::Point2d Project(const cv::Point2d& gridPoint) const;
  /// How the pixel changes with the grid point, pixels per step.
  cv::Matx22d Slope(const cv::Point2d& gridPoint) const;
  /// The length of a step around a grid point, pixels.
  double Step(const cv::Point2d& gridPoint) const;

  /// The plane's word, corrected for the lens.
  cv::Point2d Predict(const cv::Point2d& gridPoint) const { return Project(gridPoint) + BendAt(gridPoint); }
  /// How far a disc is from where the others put it, steps; for one that is not missing.
  double ScaledResidual(const LabelledDiscs& discs, size_t k) const;

 private:
  static constexpr int TERMS = 10;  ///< of a polynomial of third degree; those beyond a lower degree are 0
  using Column = Eigen::Matrix<double, TERMS, 1>;

  bool FitPlane(const LabelledDiscs& discs);
  Column Terms(const cv::Point2d& gridPoint) const;
  cv::Point2d BendAt(const cv::Point2d& gridPoint) const;

  cv::Matx33d H_ = cv::Matx33d::eye();
  cv::Point2d middle_;
  cv::Point2d half_{1.0, 1.0};
  int degree_ = 0;  ///< of the polynomial that the picture is bent by
  /// Its coefficients, of x and y.
  Eigen::Matrix<double, TERMS, 2> bend_ = Eigen::Matrix<double, TERMS, 2>::Zero();
  Eigen::LLT<Eigen::Matrix<double, TERMS, TERMS>> normal_;  ///< its normal equations
};

}  // namespace velmora::finder
