/// The derivatives of a view's pixels by everything that a computation estimates, and by more.
#include "solver/ViewJacobian.h"

#include <cmath>
#include <utility>

namespace velmora::solver {

using Eigen::Index;

namespace {

void Set(JacobianRow row, Index first, const cv::Vec3d& rotation, const cv::Vec3d& translation) {
  for (int i = 0; i < 3; ++i) {
    row(first + i) = rotation[i];
    row(first + 3 + i) = translation[i];
  }
}

}  // namespace

cv::Vec3d ByTarget(const ObservedPoint& observed, const Coordinate& coordinate) {
  return observed.rotation.t() * coordinate.byPoint;
}

ViewJacobian::ViewJacobian(const Rig& rig, const Layout& layout, const Sheet& sheet, ExtraColumns extra)
    : rig_(rig), layout_(layout), sheet_(sheet), extra_(std::move(extra)) {
  for (const Camera& camera : rig.cameras) {
    Intrinsics intrinsics = camera.intrinsics;
    if (extra_.count > 0) intrinsics.estimated = FULL_PARAMETERS;
    projections_.emplace_back(intrinsics);
  }
}

ViewJacobian::Products ViewJacobian::ProductsOf(const TargetView& view) const {
  Index rows = 0;
  for (const Observation& observation : view.observations)
    rows += 2 * static_cast<Index>(observation.object.size());
  RowMatrix jacobian =
      RowMatrix::Zero(rows, Shared() + Extra() + POSE_PARAMETERS + sheet_.ownBend.Count() + 1);
  const Index last = jacobian.cols() - 1;
  Products products;
  Index row = 0;
  for (size_t camera = 0; camera < view.observations.size(); ++camera) {
    const Observation& observation = view.observations[camera];
    const auto& values = rig_.cameras[camera].intrinsics.values;
    const RigidTransform pose = rig_.cameras[camera].cameraFromRig * view.rigFromTarget;
    const Index first = row;
    double pixelCost = 0.0;
    for (size_t k = 0; k < observation.object.size(); ++k, row += 2) {
      Coordinate u;
      Coordinate v;
      const cv::Vec3d inCamera = pose * observation.object[k];
      if (!projections_[camera].Differentiate(inCamera, u, v)) {
        products.usable = false;
        continue;
      }
      const ObservedPoint observed{observation.object[k],
                                   observation.Place(k),
                                   pose.R,
                                   inCamera,
                                   camera,
                                   (v.value - values[CY]) / values[FY]};
      FillRow(observed, u, view.rigFromTarget, jacobian.row(row));
      FillRow(observed, v, view.rigFromTarget, jacobian.row(row + 1));
      jacobian(row, last) = u.value - observation.image[k].x;
      jacobian(row + 1, last) = v.value - observation.image[k].y;
      jacobian.middleRows(row, 2) *= std::sqrt(observation.Weight(k));
      pixelCost += std::pow(observation.Deviation(k), 2) * jacobian.col(last).segment<2>(row).squaredNorm();
    }
    const double cost = jacobian.col(last).segment(first, row - first).squaredNorm();
    products.cost += cost;
    products.pixelCosts.push_back(observation.deviations.empty() ? cost : pixelCost);
  }
  products.matrix.setZero(jacobian.cols(), jacobian.cols());
  products.matrix.selfadjointView<Eigen::Lower>().rankUpdate(jacobian.transpose());
  if (sheet_.HasOwnBends()) AddWhatIsKnown(view.bend, products.matrix);
  return products;
}

void ViewJacobian::FillRow(const ObservedPoint& observed, const Coordinate& coordinate,
                           const RigidTransform& rigFromTarget, JacobianRow row) const {
  const Layout::Block& block = layout_.cameras[observed.camera];
  for (int i = 0; i < block.count; ++i) {
    row(block.intrinsics + i) = coordinate.byIntrinsics[static_cast<size_t>(i)];
  }
  const cv::Matx33d& cameraFromRig = rig_.cameras[observed.camera].cameraFromRig.R;
  const cv::Vec3d turned = rigFromTarget.R * cv::Vec3d(observed.point.x, observed.point.y, observed.point.z);
  if (block.pose != Layout::FIXED) {
    Set(row, block.pose, (cameraFromRig * (turned + rigFromTarget.t)).cross(coordinate.byPoint),
        coordinate.byPoint);
  }
  const cv::Vec3d byRig = cameraFromRig.t() * coordinate.byPoint;
  const Index pose = Shared() + Extra();
  Set(row, pose, turned.cross(byRig), byRig);
  if (extra_.count > 0) extra_.fill(observed, coordinate, row.segment(Shared(), Extra()));
  if (sheet_.IsFlat()) return;
  const cv::Vec3d byTarget = ByTarget(observed, coordinate);
  const Eigen::Map<const Eigen::RowVector3d> by(byTarget.val);
  const auto at = static_cast<Index>(3 * observed.place);
  const Index terms = sheet_.terms.Count();
  if (terms > 0) row.segment(layout_.sheet, terms).noalias() = by * sheet_.terms.columns.middleRows<3>(at);
  if (sheet_.HasOwnBends()) {
    row.segment<3>(pose + POSE_PARAMETERS).noalias() = by * sheet_.ownBend.columns.block<3, 3>(at, 0);
  }
}

void ViewJacobian::AddWhatIsKnown(const cv::Vec3d& bend, Eigen::MatrixXd& products) const {
  const Eigen::Vector3d pulls = PullsOf(sheet_.ownBend, sheet_.variance);
  const Index last = products.rows() - 1;
  for (Index i = 0; i < pulls.size(); ++i) {
    const Index at = last - pulls.size() + i;
    products(at, at) += pulls(i);
    products(last, at) += pulls(i) * bend[static_cast<int>(i)];
  }
}

}  // namespace velmora::solver
