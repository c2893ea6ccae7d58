/// How far the pixels of rays may be off.
#pragma once

#include <Eigen/Core>
#include <opencv2/core.hpp>
#include <vector>

#include "model/Rig.h"
#include "quality/RadialTerms.h"
#include "solver/Projection.h"

namespace velmora {

/// The ray (x, y, 1) of a pixel; of a fisheye that of length one. False when none is found.
bool RayOf(const solver::Projection& projection, const Intrinsics& intrinsics, const cv::Point2d& pixel,
           cv::Vec3d& ray);

/// The convex hull of what a camera saw in all views, without points that were left out.
std::vector<cv::Point2f> DataAreaOf(const std::vector<TargetView>& views, size_t camera);

/// The derivatives of the pixels of fixed rays, over a grid of the image, without what a common rotation of
/// the camera's frame does.
class ProjectionUncertainty {
 public:
  static constexpr int COLUMNS = 40;
  static constexpr int ROWS = 30;

  /// The rotation is the one that changes least within the area. With `radial`, covariances are of the
  /// estimated parameters and, after them, of these terms.
  ProjectionUncertainty(const Intrinsics& intrinsics, const cv::Size& imageSize,
                        const std::vector<cv::Point2f>& area, const RadialTerms* radial = nullptr);

  /// The standard deviation of a coordinate in each cell, given the covariance of the estimated parameters.
  cv::Mat Map(const Eigen::MatrixXd& covariance) const;
  double InArea(const Eigen::MatrixXd& covariance) const;
  /// Over the cells that have a ray.
  double InImage(const Eigen::MatrixXd& covariance) const;
  /// The share of the cells for whose middle the lens has no ray.
  double ShareWithoutRay() const;
  /// The mean product of the derivatives with themselves over the image, a square: half its trace with a
  /// covariance is the square of InImage.
  Eigen::MatrixXd MeanProduct() const;

 private:
  std::vector<int> cells_;        ///< those that have a ray, the ones in the area first
  int inArea_ = 0;                ///< how many of them are in it
  Eigen::MatrixXd byIntrinsics_;  ///< two rows of derivatives by the parameters for each of them
};

}  // namespace velmora
