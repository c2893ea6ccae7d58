/// A rig before a sheet with every freedom, with differences in the place of derivatives.
#pragma once

#include <gtest/gtest.h>

#include <Eigen/Core>
#include <algorithm>
#include <cmath>
#include <vector>

#include "Arrangement.h"
#include "solver/Projection.h"
#include "solver/RigProblems.h"
#include "solver/SheetLadder.h"
#include "solver/SheetShape.h"

namespace unit {

/// Two cameras before a sheet with every freedom, somewhere beside its minimum.
struct ShapedRigProblem {
  CalibrationProblem problem;
  Layout layout;

  ShapedRigProblem() {
    problem = TrueProblem(RowOf(2), 3, 0.1, 5);
    Solution flat;
    flat.rig = problem.rig;
    flat.views = problem.views;
    flat.cost = 1.0;
    problem = solver::ShapedProblem(flat, SheetLevel::FreePointsProportions, true);
    cv::RNG random(9);
    for (Eigen::Index i = 0; i < problem.sheet.values.size(); ++i) {
      problem.sheet.values(i) = random.gaussian(std::min(problem.sheet.terms.deviations(i), 1e-4));
    }
    for (TargetView& view : problem.views) {
      view.bend = {random.gaussian(3e-4), random.gaussian(3e-4), random.gaussian(3e-4)};
    }
    solver::PutToShape(problem.sheet, problem.views);
    layout = LayoutOf(problem.rig, problem.estimated, problem.sheet);
  }
};

/// The residuals of a view, in the order of its cameras and points, and those of what is known of its bend.
inline Eigen::VectorXd ShapedResidualsOf(const CalibrationProblem& problem, size_t number) {
  std::vector<double> residuals;
  const TargetView& view = problem.views[number];
  for (size_t i = 0; i < problem.rig.cameras.size(); ++i) {
    const Camera& camera = problem.rig.cameras[i];
    const solver::Projection projection(camera.intrinsics);
    const Observation& observation = view.observations[i];
    for (size_t k = 0; k < observation.object.size(); ++k) {
      cv::Point2d pixel;
      const cv::Vec3d inRig = view.rigFromTarget * observation.object[k];
      EXPECT_TRUE(projection.Project(camera.cameraFromRig * cv::Point3d(inRig), pixel));
      residuals.push_back(pixel.x - observation.image[k].x);
      residuals.push_back(pixel.y - observation.image[k].y);
    }
  }
  const Eigen::VectorXd pulls = PullsOf(problem.sheet.ownBend, problem.sheet.variance);
  for (int i = 0; i < 3; ++i) residuals.push_back(std::sqrt(pulls(i)) * view.bend[i]);
  return Eigen::Map<Eigen::VectorXd>(residuals.data(), static_cast<Eigen::Index>(residuals.size()));
}

/// The problem after a step of what all views share, of one view's pose and of its own bend.
inline CalibrationProblem ShapedStepped(const ShapedRigProblem& of, size_t number,
                                        const Eigen::VectorXd& step) {
  CalibrationProblem problem = of.problem;
  for (size_t i = 0; i < problem.rig.cameras.size(); ++i) {
    const Layout::Block& block = of.layout.cameras[i];
    auto& values = problem.rig.cameras[i].intrinsics.values;
    for (int k = 0; k < block.count; ++k) values[static_cast<size_t>(k)] += step(block.intrinsics + k);
    if (block.pose == Layout::FIXED) continue;
    problem.rig.cameras[i].cameraFromRig =
        Retract(problem.rig.cameras[i].cameraFromRig, step.data() + block.pose);
  }
  problem.sheet.values += step.segment(of.layout.sheet, problem.sheet.values.size());
  TargetView& view = problem.views[number];
  view.rigFromTarget = Retract(view.rigFromTarget, step.data() + of.layout.shared);
  for (int i = 0; i < 3; ++i) view.bend[i] += step(of.layout.shared + POSE_PARAMETERS + i);
  solver::PutToShape(problem.sheet, problem.views);
  return problem;
}

inline Eigen::MatrixXd ShapedDifferences(const ShapedRigProblem& of, size_t number) {
  const Eigen::Index columns = of.layout.shared + POSE_PARAMETERS + 3;
  Eigen::MatrixXd jacobian(ShapedResidualsOf(of.problem, number).size(), columns);
  for (Eigen::Index i = 0; i < columns; ++i) {
    Eigen::VectorXd step = Eigen::VectorXd::Zero(columns);
    step(i) = 1e-6;
    jacobian.col(i) = (ShapedResidualsOf(ShapedStepped(of, number, step), number) -
                       ShapedResidualsOf(ShapedStepped(of, number, -step), number)) /
                      2e-6;
  }
  return jacobian;
}

}  // namespace unit
