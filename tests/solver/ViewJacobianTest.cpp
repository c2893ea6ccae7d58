/// Derivatives beside differences, for targets of any shape.
#include "solver/ViewJacobian.h"

#include <gtest/gtest.h>

#include <Eigen/Cholesky>
#include <Eigen/LU>
#include <algorithm>
#include <cmath>

#include "Arrangement.h"
#include "solver/ShapedEquations.h"
#include "solver/ShapedViews.h"
#include "solver/SheetLadder.h"

using namespace velmora;

namespace {

using Index = Eigen::Index;

/// Two cameras before a sheet with every freedom, somewhere beside its minimum.
struct Problem {
  CalibrationProblem problem;
  Layout layout;

  Problem() {
    problem = unit::TrueProblem(unit::RowOf(2), 3, 0.1, 5);
    Solution flat;
    flat.rig = problem.rig;
    flat.views = problem.views;
    flat.cost = 1.0;
    problem = solver::ShapedProblem(flat, SheetLevel::FreePointsProportions, true);
    cv::RNG random(9);
    for (Index i = 0; i < problem.sheet.values.size(); ++i) {
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
Eigen::VectorXd ResidualsOf(const CalibrationProblem& problem, size_t number) {
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
  return Eigen::Map<Eigen::VectorXd>(residuals.data(), static_cast<Index>(residuals.size()));
}

/// The problem after a step of what all views share, of one view's pose and of its own bend.
CalibrationProblem Stepped(const Problem& of, size_t number, const Eigen::VectorXd& step) {
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

Eigen::MatrixXd Differences(const Problem& of, size_t number) {
  const Index columns = of.layout.shared + POSE_PARAMETERS + 3;
  Eigen::MatrixXd jacobian(ResidualsOf(of.problem, number).size(), columns);
  for (Index i = 0; i < columns; ++i) {
    Eigen::VectorXd step = Eigen::VectorXd::Zero(columns);
    step(i) = 1e-6;
    jacobian.col(i) =
        (ResidualsOf(Stepped(of, number, step), number) - ResidualsOf(Stepped(of, number, -step), number)) /
        2e-6;
  }
  return jacobian;
}

TEST(ViewJacobian, HasTheDerivativesByAllThatIsEstimated) {
  const Problem of;
  const solver::ViewJacobian jacobian(of.problem.rig, of.layout, of.problem.sheet);
  for (size_t i = 0; i < of.problem.views.size(); ++i) {
    const auto products = jacobian.ProductsOf(of.problem.views[i]);
    ASSERT_TRUE(products.usable);
    Eigen::MatrixXd differences(ResidualsOf(of.problem, i).size(), of.layout.shared + POSE_PARAMETERS + 4);
    differences << Differences(of, i), ResidualsOf(of.problem, i);
    const Eigen::MatrixXd expected = differences.transpose() * differences;
    // All but the square of the residuals, which has what is known of the bend in it here.
    for (Index c = 0; c + 1 < expected.cols(); ++c) {
      for (Index r = c; r < expected.rows(); ++r) {
        const double scale = std::sqrt(expected(r, r) * expected(c, c));
        EXPECT_NEAR(products.matrix(r, c), expected(r, c), 1e-6 * scale) << r << " " << c;
      }
    }
  }
}

TEST(ShapedEquations, AreThoseOfAllParametersWithoutTheBend) {
  const Problem of;
  const solver::ViewJacobian jacobian(of.problem.rig, of.layout, of.problem.sheet);
  ViewEquations equations;
  solver::TakeShapedEquations(jacobian, of.problem.sheet, of.problem.views[0], equations);
  ASSERT_TRUE(equations.usable);
  const Eigen::MatrixXd J = Differences(of, 0);
  const Eigen::VectorXd r = ResidualsOf(of.problem, 0);
  const Index kept = of.layout.shared + POSE_PARAMETERS;
  // A step of all but the bend, and the bend that is best after it.
  const Eigen::VectorXd step = 1e-3 * J.leftCols(kept).colwise().norm().cwiseInverse().transpose();
  const auto bend = J.rightCols(3);
  const Eigen::VectorXd left = r + J.leftCols(kept) * step;
  const Eigen::Vector3d best = -(bend.transpose() * bend).ldlt().solve(bend.transpose() * left);
  const Eigen::Matrix<double, POSE_PARAMETERS, 1> pose = step.tail(POSE_PARAMETERS);
  const Eigen::Vector3d found = solver::BendStepFor(equations, step.head(of.layout.shared), pose);
  EXPECT_LT((found - best).norm(), 1e-4 * best.norm());
  const double gain = r.squaredNorm() - (left + bend * best).squaredNorm();
  const Eigen::MatrixXd products = equations.products.selfadjointView<Eigen::Lower>();
  const double told = equations.bend.gain - 2.0 * equations.gradient.dot(step) - step.dot(products * step);
  EXPECT_NEAR(told, gain, 1e-5 * std::abs(gain));
  const Eigen::Matrix3d whole =
      (J.rightCols(9).transpose() * J.rightCols(9)).inverse().bottomRightCorner(3, 3);
  EXPECT_LT((solver::BendCovarianceOf(equations) - whole).norm(), 1e-3 * whole.norm());
}

}  // namespace
