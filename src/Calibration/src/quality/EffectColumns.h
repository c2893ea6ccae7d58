/// What effects that the computation took for zero do to the pixels.
#pragma once

#include <Eigen/Core>
#include <functional>
#include <opencv2/core.hpp>
#include <vector>

#include "model/Solution.h"
#include "solver/NormalEquations.h"
#include "solver/Projection.h"

namespace velmora {

using EffectRow = Eigen::Ref<Eigen::RowVectorXd>;

/// A point of the target as one of the cameras sees it.
struct ObservedPoint {
  const cv::Point3d& point;
  const cv::Matx33d& rotation;  ///< of the target before the camera
  const cv::Vec3d& inCamera;    ///< the point in the camera's frame
  size_t camera;
  /// Where the pixel stands in the image, from top to bottom, over the focal length from its middle.
  double row;
};

/// The derivatives of a coordinate by some effects' parameters.
struct EffectColumns {
  Eigen::Index count = 0;
  std::function<void(const ObservedPoint& observed, const solver::Coordinate& coordinate, EffectRow columns)>
      fill;
};

/// One after the other.
EffectColumns Joined(const EffectColumns& a, const EffectColumns& b);

/// The derivatives of a coordinate by the place of its point on the target.
cv::Vec3d ByTarget(const ObservedPoint& observed, const solver::Coordinate& coordinate);

/// Makes the equations of views with columns for effects.
class EffectJacobian {
 public:
  EffectJacobian(const Solution& solution, EffectColumns columns);

  Eigen::Index Shared() const { return layout_.shared; }
  Eigen::Index Effects() const { return columns_.count; }

  /// The products of a view's derivatives with themselves: by what all views share, by the effects, by the
  /// pose, and last the residuals.
  Eigen::MatrixXd ProductsOf(const TargetView& view) const;

 private:
  using RowMatrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

  void FillRow(const ObservedPoint& observed, const solver::Coordinate& coordinate,
               const RigidTransform& rigFromTarget, EffectRow row) const;

  const Solution& solution_;
  const Layout layout_;
  const EffectColumns columns_;
  std::vector<solver::Projection> projections_;
};

/// What is left of the first `kept` of a view's products when the pose, which follows them, is free.
solver::ReducedSystem WithoutPose(const Eigen::MatrixXd& products, Eigen::Index kept);

}  // namespace velmora
