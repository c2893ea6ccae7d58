/// Effects that a solution did not model, estimated from its residuals.
#include "quality/OmittedEffects.h"

#include <Eigen/Cholesky>
#include <Eigen/SVD>
#include <algorithm>
#include <cmath>
#include <functional>

#include "solver/NormalEquations.h"
#include "solver/Projection.h"
#include "solver/WeakPrior.h"

namespace velmora {

namespace {

using Eigen::Index;
using RowMatrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
using Row = Eigen::Ref<Eigen::RowVectorXd>;

/// A point of the target as one of the cameras sees it.
struct ObservedPoint {
  const cv::Point3d& point;
  const cv::Matx33d& rotation;  ///< of the target before the camera
  size_t camera;
};

/// The derivatives of a coordinate by the effect's parameters.
using Columns =
    std::function<void(const ObservedPoint& observed, const solver::Coordinate& coordinate, Row columns)>;

cv::Vec3d ByTarget(const ObservedPoint& observed, const solver::Coordinate& coordinate) {
  return observed.rotation.t() * coordinate.byPoint;
}

/// Solves for a symmetric positive definite matrix, scaled to a diagonal of ones: the parameters' sizes lie
/// many orders of magnitude apart.
bool SolveScaled(const Eigen::MatrixXd& matrix, const Eigen::MatrixXd& right, Eigen::MatrixXd& solution) {
  if (!(matrix.diagonal().array() > 0.0).all()) return false;
  const Eigen::VectorXd scale = matrix.diagonal().array().rsqrt();
  const Eigen::LLT<Eigen::MatrixXd> cholesky(scale.asDiagonal() * matrix * scale.asDiagonal());
  if (cholesky.info() != Eigen::Success) return false;
  solution = scale.asDiagonal() * cholesky.solve(scale.asDiagonal() * right);
  return true;
}

/// Wilson and Hilferty's approximation to the chi-squared distribution, four standard deviations above its
/// mean.
double Threshold(Index degrees) {
  const auto count = static_cast<double>(degrees);
  const double variance = 2.0 / (9.0 * count);
  return count * std::pow(1.0 - variance + 4.0 * std::sqrt(variance), 3.0);
}

/// The normal equations of what all views share and of an effect, the poses eliminated.
class EnlargedSystem {
 public:
  EnlargedSystem(const Solution& solution, int effects, const Columns& columns)
      : solution_(solution),
        layout_(LayoutOf(solution.rig, solution.estimated)),
        effects_(effects),
        columns_(columns),
        matrix_(Eigen::MatrixXd::Zero(Kept(), Kept())),
        gradient_(Eigen::VectorXd::Zero(Kept())) {
    for (const Camera& camera : solution.rig.cameras) {
      Intrinsics intrinsics = camera.intrinsics;
      intrinsics.estimated =
          FULL_PARAMETERS;  // derivatives by terms that were not estimated are asked for, too
      projections_.emplace_back(intrinsics);
    }
    for (const TargetView& view : solution.views) {
      if (solvable_) AddView(view);
    }
    matrix_.diagonal().head(layout_.shared) +=
        solver::PriorTermsOf(solution.priors, solution.rig, layout_).strengths;
  }

  /// Pulls the effect's parameters toward zero.
  void Restrain(int parameter, double weight) {
    matrix_(layout_.shared + parameter, layout_.shared + parameter) += weight;
  }

  OmittedEffect Effect() const {
    OmittedEffect effect;
    const Index shared = layout_.shared;
    Eigen::MatrixXd spread;
    Eigen::MatrixXd values;
    const auto coupling = matrix_.topRightCorner(shared, effects_);
    if (!solvable_ || !SolveScaled(matrix_.topLeftCorner(shared, shared), coupling, spread)) return effect;
    const Eigen::MatrixXd own = matrix_.bottomRightCorner(effects_, effects_) - spread.transpose() * coupling;
    // The data's own slope at the rig is not zero: a prior pulls, and the corrections of the discs may be
    // newer than the solution. What the rig alone would gain by following it is not the effect's.
    const Eigen::VectorXd slope = gradient_.tail(effects_) - spread.transpose() * gradient_.head(shared);
    if (!SolveScaled(own, slope, values)) return effect;
    effect.values = -values.col(0);
    effect.shift = spread * values.col(0);
    effect.costReduction = slope.dot(values.col(0)) / NoiseVariance(solution_);
    effect.significant = effect.costReduction > Threshold(effects_);
    return effect;
  }

 private:
  Index Kept() const { return layout_.shared + effects_; }

  void AddView(const TargetView& view) {
    const RowMatrix jacobian = JacobianOf(view);
    const Index kept = Kept();
    const Eigen::MatrixXd products = jacobian.transpose() * jacobian;
    const Eigen::MatrixXd pose = products.block(kept, kept, POSE_PARAMETERS, POSE_PARAMETERS);
    Eigen::MatrixXd coupled(POSE_PARAMETERS, kept + 1);
    coupled.leftCols(kept) = products.block(kept, 0, POSE_PARAMETERS, kept);
    coupled.col(kept) = products.col(kept + POSE_PARAMETERS).segment(kept, POSE_PARAMETERS);
    Eigen::MatrixXd spread;
    solvable_ = SolveScaled(pose, coupled, spread);
    if (!solvable_) return;
    matrix_ +=
        products.topLeftCorner(kept, kept) - coupled.leftCols(kept).transpose() * spread.leftCols(kept);
    gradient_ += products.col(kept + POSE_PARAMETERS).head(kept) -
                 coupled.leftCols(kept).transpose() * spread.col(kept);
  }

  /// Rows: two for each point of each camera; columns: what is shared, the effect, the pose, the residual.
  RowMatrix JacobianOf(const TargetView& view) const {
    Index rows = 0;
    for (const Observation& observation : view.observations)
      rows += 2 * static_cast<Index>(observation.object.size());
    RowMatrix jacobian = RowMatrix::Zero(rows, Kept() + POSE_PARAMETERS + 1);
    Index row = 0;
    for (size_t camera = 0; camera < view.observations.size(); ++camera) {
      const Observation& observation = view.observations[camera];
      const RigidTransform pose = solution_.rig.cameras[camera].cameraFromRig * view.rigFromTarget;
      for (size_t k = 0; k < observation.object.size(); ++k, row += 2) {
        solver::Coordinate u;
        solver::Coordinate v;
        if (!projections_[camera].Differentiate(pose * observation.object[k], u, v)) continue;
        const ObservedPoint observed{observation.object[k], pose.R, camera};
        FillRow(observed, u, view.rigFromTarget, jacobian.row(row));
        FillRow(observed, v, view.rigFromTarget, jacobian.row(row + 1));
        jacobian(row, jacobian.cols() - 1) = u.value - observation.image[k].x;
        jacobian(row + 1, jacobian.cols() - 1) = v.value - observation.image[k].y;
        jacobian.middleRows(row, 2) *= std::sqrt(observation.Weight(k));
      }
    }
    return jacobian;
  }

  void FillRow(const ObservedPoint& observed, const solver::Coordinate& coordinate,
               const RigidTransform& rigFromTarget, Row row) const {
    const Layout::Block& block = layout_.cameras[observed.camera];
    for (int i = 0; i < block.count; ++i) {
      row(block.intrinsics + i) = coordinate.byIntrinsics[static_cast<size_t>(i)];
    }
    const cv::Matx33d& cameraFromRig = solution_.rig.cameras[observed.camera].cameraFromRig.R;
    const cv::Vec3d turned =
        rigFromTarget.R * cv::Vec3d(observed.point.x, observed.point.y, observed.point.z);
    if (block.pose != Layout::FIXED) {
      Set(row, block.pose, (cameraFromRig * (turned + rigFromTarget.t)).cross(coordinate.byPoint),
          coordinate.byPoint);
    }
    const cv::Vec3d byRig = cameraFromRig.t() * coordinate.byPoint;
    Set(row, Kept(), turned.cross(byRig), byRig);
    columns_(observed, coordinate, row.segment(layout_.shared, effects_));
  }

  static void Set(Row row, Index first, const cv::Vec3d& rotation, const cv::Vec3d& translation) {
    for (int i = 0; i < 3; ++i) {
      row(first + i) = rotation[i];
      row(first + 3 + i) = translation[i];
    }
  }

  const Solution& solution_;
  const Layout layout_;
  const Index effects_;
  const Columns& columns_;
  std::vector<solver::Projection> projections_;
  Eigen::MatrixXd matrix_;
  Eigen::VectorXd gradient_;
  bool solvable_ = true;
};

}  // namespace

OmittedEffect OmittedBend(const Solution& solution) {
  const Columns columns = [](const ObservedPoint& observed, const solver::Coordinate& coordinate, Row to) {
    const double byDepth = ByTarget(observed, coordinate)[2];
    to << byDepth * observed.point.x * observed.point.x, byDepth * observed.point.x * observed.point.y,
        byDepth * observed.point.y * observed.point.y;
  };
  return EnlargedSystem(solution, 3, columns).Effect();
}

OmittedEffect OmittedProportions(const Solution& solution) {
  const Columns columns = [](const ObservedPoint& observed, const solver::Coordinate& coordinate, Row to) {
    const cv::Vec3d byTarget = ByTarget(observed, coordinate);
    to << byTarget[1] * observed.point.y, byTarget[0] * observed.point.y;
  };
  return EnlargedSystem(solution, 2, columns).Effect();
}

OmittedEffect OmittedLensTerms(const Solution& solution, size_t camera) {
  const int estimated = solution.rig.cameras[camera].intrinsics.estimated;
  const int terms = FULL_PARAMETERS - estimated;
  if (terms == 0) return {};
  const Columns columns = [&](const ObservedPoint& observed, const solver::Coordinate& coordinate, Row to) {
    for (int i = 0; i < terms; ++i) {
      to(i) = observed.camera == camera ? coordinate.byIntrinsics[static_cast<size_t>(estimated + i)] : 0.0;
    }
  };
  EnlargedSystem system(solution, terms, columns);
  const Prior prior = solver::PriorFor(
      solver::DataRadius(solution.rig.cameras[camera], camera, solution.views), NoiseVariance(solution), 1.0);
  for (int i = 0; i < terms; ++i) system.Restrain(i, prior[static_cast<size_t>(estimated + i)]);
  OmittedEffect effect = system.Effect();
  if (effect.values.size() == 0) return effect;
  const Layout::Block block = LayoutOf(solution.rig, solution.estimated).cameras[camera];
  Eigen::VectorXd shift = Eigen::VectorXd::Zero(FULL_PARAMETERS);
  shift.head(block.count) = effect.shift.segment(block.intrinsics, block.count);
  shift.tail(terms) = effect.values;
  effect.shift = shift;
  return effect;
}

double DepthOfBend(const OmittedEffect& bend, const std::vector<cv::Point3d>& object) {
  const auto count = static_cast<Index>(object.size());
  Eigen::VectorXd depths(count);
  Eigen::MatrixXd plane(count, 3);
  for (Index i = 0; i < count; ++i) {
    const cv::Point3d& point = object[static_cast<size_t>(i)];
    depths(i) = bend.values(0) * point.x * point.x + bend.values(1) * point.x * point.y +
                bend.values(2) * point.y * point.y;
    plane.row(i) << point.x, point.y, 1.0;
  }
  const Eigen::VectorXd best = plane.jacobiSvd(Eigen::ComputeThinU | Eigen::ComputeThinV).solve(depths);
  const Eigen::VectorXd heights = depths - plane * best;
  return heights.maxCoeff() - heights.minCoeff();
}

}  // namespace velmora
