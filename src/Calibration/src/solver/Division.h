/// Radial distortion of one parameter, which needs no camera to be taken off.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "model/Observation.h"

namespace velmora::solver {

/// A pixel at the distance r from the image's middle is undistorted to the distance r / (1 + lambda r^2), r
/// in half diagonals of the image. That follows lenses of every kind well enough to tell the image of a
/// plane from any other, fisheyes with a negative lambda.
class Division {
 public:
  Division(double lambda, const cv::Size& imageSize);

  double Lambda() const { return lambda_; }

  /// Not finite where nothing is imaged.
  cv::Point2d Undistorted(const cv::Point2d& pixel) const;
  /// The pixel that is undistorted to the point; not finite when none is.
  cv::Point2d Distorted(const cv::Point2d& point) const;

 private:
  double lambda_;
  double unit_;
  cv::Point2d middle_;
};

/// The root of the mean square of the points' distances, in pixels, from the homography that fits the
/// undistorted view best; infinite when there is none.
double HomographyResidual(const Observation& view, const Division& division);

/// The division under which most views are near homographies: the residuals' sum is least, none of which
/// counts more than `most` pixels. Looks at 40 views at the most, those that are largest in the image.
Division BestDivision(const std::vector<Observation>& views, const cv::Size& imageSize, double most);

}  // namespace velmora::solver
