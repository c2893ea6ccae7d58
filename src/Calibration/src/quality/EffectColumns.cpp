/// What effects that the computation took for zero do to the pixels.
#include "quality/EffectColumns.h"

#include <cmath>
#include <utility>

#include "quality/EnlargedEquations.h"

namespace velmora {

using Eigen::Index;

namespace {

void Set(EffectRow row, Index first, const cv::Vec3d& rotation, const cv::Vec3d& translation) {
  for (int i = 0; i < 3; ++i) {
    row(first + i) = rotation[i];
    row(first + 3 + i) = translation[i];
  }
}

}  // namespace

EffectColumns Joined(const EffectColumns& a, const EffectColumns& b) {
  return {a.count + b.count,
          [a, b](const ObservedPoint& observed, const solver::Coordinate& coordinate, EffectRow columns) {
            a.fill(observed, coordinate, columns.head(a.count));
            b.fill(observed, coordinate, columns.tail(b.count));
          }};
}

cv::Vec3d ByTarget(const ObservedPoint& observed, const solver::Coordinate& coordinate) {
  return observed.rotation.t() * coordinate.byPoint;
}

EffectJacobian::EffectJacobian(const Solution& solution, EffectColumns columns)
    : solution_(solution), layout_(LayoutOf(solution)), columns_(std::move(columns)) {
  for (const Camera& camera : solution.rig.cameras) {
    Intrinsics intrinsics = camera.intrinsics;
    // Derivatives by terms that were not estimated are asked for, too.
    intrinsics.estimated = FULL_PARAMETERS;
    projections_.emplace_back(intrinsics);
  }
}

Eigen::MatrixXd EffectJacobian::ProductsOf(const TargetView& view) const {
  Index rows = 0;
  for (const Observation& observation : view.observations)
    rows += 2 * static_cast<Index>(observation.object.size());
  RowMatrix jacobian = RowMatrix::Zero(rows, Shared() + Effects() + POSE_PARAMETERS + 1);
  Index row = 0;
  for (size_t camera = 0; camera < view.observations.size(); ++camera) {
    const Observation& observation = view.observations[camera];
    const auto& values = solution_.rig.cameras[camera].intrinsics.values;
    const RigidTransform pose = solution_.rig.cameras[camera].cameraFromRig * view.rigFromTarget;
    for (size_t k = 0; k < observation.object.size(); ++k, row += 2) {
      solver::Coordinate u;
      solver::Coordinate v;
      const cv::Vec3d inCamera = pose * observation.object[k];
      if (!projections_[camera].Differentiate(inCamera, u, v)) continue;
      const ObservedPoint observed{observation.object[k], pose.R, inCamera, camera,
                                   (v.value - values[CY]) / values[FY]};
      FillRow(observed, u, view.rigFromTarget, jacobian.row(row));
      FillRow(observed, v, view.rigFromTarget, jacobian.row(row + 1));
      jacobian(row, jacobian.cols() - 1) = u.value - observation.image[k].x;
      jacobian(row + 1, jacobian.cols() - 1) = v.value - observation.image[k].y;
      jacobian.middleRows(row, 2) *= std::sqrt(observation.Weight(k));
    }
  }
  Eigen::MatrixXd products = Eigen::MatrixXd::Zero(jacobian.cols(), jacobian.cols());
  products.selfadjointView<Eigen::Lower>().rankUpdate(jacobian.transpose());
  products.triangularView<Eigen::StrictlyUpper>() = products.transpose();
  return products;
}

void EffectJacobian::FillRow(const ObservedPoint& observed, const solver::Coordinate& coordinate,
                             const RigidTransform& rigFromTarget, EffectRow row) const {
  const Layout::Block& block = layout_.cameras[observed.camera];
  for (int i = 0; i < block.count; ++i) {
    row(block.intrinsics + i) = coordinate.byIntrinsics[static_cast<size_t>(i)];
  }
  const cv::Matx33d& cameraFromRig = solution_.rig.cameras[observed.camera].cameraFromRig.R;
  const cv::Vec3d turned = rigFromTarget.R * cv::Vec3d(observed.point.x, observed.point.y, observed.point.z);
  if (block.pose != Layout::FIXED) {
    Set(row, block.pose, (cameraFromRig * (turned + rigFromTarget.t)).cross(coordinate.byPoint),
        coordinate.byPoint);
  }
  const cv::Vec3d byRig = cameraFromRig.t() * coordinate.byPoint;
  Set(row, Shared() + Effects(), turned.cross(byRig), byRig);
  columns_.fill(observed, coordinate, row.segment(Shared(), Effects()));
}

solver::ReducedSystem WithoutPose(const Eigen::MatrixXd& products, Index kept) {
  Eigen::MatrixXd coupled(POSE_PARAMETERS, kept + 1);
  coupled.leftCols(kept) = products.block(kept, 0, POSE_PARAMETERS, kept);
  coupled.col(kept) = products.col(kept + POSE_PARAMETERS).segment(kept, POSE_PARAMETERS);
  solver::ReducedSystem left;
  Eigen::MatrixXd spread;
  left.solvable = SolveScaled(products.block(kept, kept, POSE_PARAMETERS, POSE_PARAMETERS), coupled, spread);
  if (!left.solvable) return left;
  left.matrix =
      products.topLeftCorner(kept, kept) - coupled.leftCols(kept).transpose() * spread.leftCols(kept);
  left.gradient =
      products.col(kept + POSE_PARAMETERS).head(kept) - coupled.leftCols(kept).transpose() * spread.col(kept);
  return left;
}

}  // namespace velmora
