/// The derivatives of a view's pixels by everything that a computation estimates, and by more.
#pragma once

#include <Eigen/Core>
#include <functional>
#include <opencv2/core.hpp>
#include <vector>

#include "model/Solution.h"
#include "solver/Projection.h"

namespace velmora::solver {

using JacobianRow = Eigen::Ref<Eigen::RowVectorXd>;

/// A point of the target as one of the cameras sees it.
struct ObservedPoint {
  const cv::Point3d& point;
  size_t place;                 ///< which point of the target it is
  const cv::Matx33d& rotation;  ///< of the target before the camera
  const cv::Vec3d& inCamera;    ///< the point in the camera's frame
  size_t camera;
  /// Where the pixel stands in the image, from top to bottom, over the focal length from its middle.
  double row;
};

/// The derivatives of a coordinate by parameters that are not estimated.
struct ExtraColumns {
  Eigen::Index count = 0;
  std::function<void(const ObservedPoint& observed, const Coordinate& coordinate, JacobianRow columns)> fill;
};

/// The derivatives of a coordinate by the place of its point on the target.
cv::Vec3d ByTarget(const ObservedPoint& observed, const Coordinate& coordinate);

class ViewJacobian {
 public:
  /// The rig and the sheet must outlive it. With extra columns, derivatives by all terms of the lens are
  /// known to them, estimated or not.
  ViewJacobian(const Rig& rig, const Layout& layout, const Sheet& sheet, ExtraColumns extra = {});

  Eigen::Index Shared() const { return layout_.shared; }
  Eigen::Index Extra() const { return extra_.count; }

  struct Products {
    /// The derivatives times themselves, lower triangle: by what all views share, by the extra columns, by
    /// the pose, by the view's own bend if it has one, and last the residuals. What is known beforehand of
    /// the bend is in it.
    Eigen::MatrixXd matrix;
    double cost = 0.0;               ///< the weighted sum of squared residuals
    std::vector<double> pixelCosts;  ///< of each camera: its part, if all points' deviations were alike
    bool usable = true;  ///< every point is in front of its camera; those that are not count for nothing
  };
  Products ProductsOf(const TargetView& view) const;

 private:
  using RowMatrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

  void FillRow(const ObservedPoint& observed, const Coordinate& coordinate,
               const RigidTransform& rigFromTarget, JacobianRow row) const;
  void AddWhatIsKnown(const cv::Vec3d& bend, Eigen::MatrixXd& products) const;

  const Rig& rig_;
  const Layout layout_;
  const Sheet& sheet_;
  const ExtraColumns extra_;
  std::vector<Projection> projections_;
};

}  // namespace velmora::solver
