/// Problems of the solver without its algebra: residuals, their differences, and the whole normal matrix.
#pragma once

#include <Eigen/Cholesky>
#include <Eigen/Core>
#include <cmath>
#include <vector>

#include "model/Solution.h"
#include "solver/Projection.h"

namespace unit {

using namespace velmora;

/// The weighted residuals of all points and those of the priors. Not finite where a point has no pixel.
inline Eigen::VectorXd DenseResiduals(const CalibrationProblem& problem) {
  std::vector<double> residuals;
  for (const TargetView& view : problem.views) {
    for (size_t i = 0; i < problem.rig.cameras.size(); ++i) {
      const Camera& camera = problem.rig.cameras[i];
      const Observation& observation = view.observations[i];
      for (size_t k = 0; k < observation.object.size(); ++k) {
        const cv::Vec3d inRig = view.rigFromTarget * observation.object[k];
        cv::Point2d pixel(std::nan(""), std::nan(""));
        solver::Projection(camera.intrinsics).Project(camera.cameraFromRig * cv::Point3d(inRig), pixel);
        const double root = std::sqrt(observation.Weight(k));
        residuals.push_back(root * (pixel.x - observation.image[k].x));
        residuals.push_back(root * (pixel.y - observation.image[k].y));
      }
    }
  }
  const Layout layout = LayoutOf(problem.rig, problem.estimated);
  for (size_t i = 0; i < problem.priors.size(); ++i) {
    for (size_t k = 0; k < static_cast<size_t>(layout.cameras[i].count); ++k) {
      residuals.push_back(std::sqrt(problem.priors[i].pulls[k]) *
                          problem.rig.cameras[i].intrinsics.values[k]);
    }
  }
  return Eigen::Map<Eigen::VectorXd>(residuals.data(), static_cast<Eigen::Index>(residuals.size()));
}

/// How many parameters there are: those that all views share, then six for each view.
inline Eigen::Index DenseColumns(const CalibrationProblem& problem) {
  return LayoutOf(problem.rig, problem.estimated).shared +
         POSE_PARAMETERS * static_cast<Eigen::Index>(problem.views.size());
}

/// The problem after a step of all parameters.
inline CalibrationProblem DenseStepped(CalibrationProblem problem, const Eigen::VectorXd& step) {
  const Layout layout = LayoutOf(problem.rig, problem.estimated);
  for (size_t i = 0; i < problem.rig.cameras.size(); ++i) {
    Camera& camera = problem.rig.cameras[i];
    const Layout::Block& block = layout.cameras[i];
    for (int k = 0; k < block.count; ++k) {
      camera.intrinsics.values[static_cast<size_t>(k)] += step(block.intrinsics + k);
    }
    if (block.pose != Layout::FIXED) {
      camera.cameraFromRig = Retract(camera.cameraFromRig, step.data() + block.pose);
    }
  }
  for (size_t i = 0; i < problem.views.size(); ++i) {
    RigidTransform& pose = problem.views[i].rigFromTarget;
    pose = Retract(pose, step.data() + layout.shared + POSE_PARAMETERS * static_cast<Eigen::Index>(i));
  }
  return problem;
}

/// Central differences.
inline Eigen::MatrixXd DenseJacobian(const CalibrationProblem& problem) {
  const Layout layout = LayoutOf(problem.rig, problem.estimated);
  const Eigen::Index columns = DenseColumns(problem);
  Eigen::VectorXd sizes = Eigen::VectorXd::Constant(columns, 1e-6);
  // Focal lengths and principal points are hundreds of pixels, all the rest is about one.
  for (const Layout::Block& block : layout.cameras) {
    if (block.count > 0) sizes.segment(block.intrinsics, 4).setConstant(1e-3);
  }
  Eigen::MatrixXd jacobian(DenseResiduals(problem).size(), columns);
  for (Eigen::Index i = 0; i < columns; ++i) {
    const Eigen::VectorXd step = Eigen::VectorXd::Unit(columns, i) * sizes(i);
    jacobian.col(i) =
        (DenseResiduals(DenseStepped(problem, step)) - DenseResiduals(DenseStepped(problem, -step))) *
        (0.5 / sizes(i));
  }
  return jacobian;
}

/// The inverse of a positive definite matrix of parameters of very different sizes.
inline Eigen::MatrixXd DenseInverse(const Eigen::MatrixXd& matrix) {
  const Eigen::VectorXd scale = matrix.diagonal().array().rsqrt();
  const Eigen::MatrixXd scaled = scale.asDiagonal() * matrix * scale.asDiagonal();
  const Eigen::MatrixXd inverse =
      scaled.ldlt().solve(Eigen::MatrixXd::Identity(scaled.rows(), scaled.cols()));
  return scale.asDiagonal() * inverse * scale.asDiagonal();
}

/// The minimum near the start, by Gauss-Newton steps on all parameters at once, halved where they overshoot.
inline CalibrationProblem DenseMinimum(CalibrationProblem problem) {
  for (int i = 0; i < 200; ++i) {
    const Eigen::MatrixXd jacobian = DenseJacobian(problem);
    const Eigen::VectorXd gradient = jacobian.transpose() * DenseResiduals(problem);
    Eigen::VectorXd step = -DenseInverse(jacobian.transpose() * jacobian) * gradient;
    if (-step.dot(gradient) < 1e-10) break;
    const double before = DenseResiduals(problem).squaredNorm();
    for (int half = 0; half < 20; ++half, step *= 0.5) {
      const CalibrationProblem trial = DenseStepped(problem, step);
      if (!(DenseResiduals(trial).squaredNorm() <= before)) continue;
      problem = trial;
      break;
    }
  }
  return problem;
}

}  // namespace unit
