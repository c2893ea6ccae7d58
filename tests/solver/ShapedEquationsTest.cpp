/// Equations from which a view's own bend was eliminated, beside those that have it.
#include "solver/ShapedEquations.h"

#include <gtest/gtest.h>

#include <Eigen/Cholesky>
#include <Eigen/LU>
#include <cmath>

#include "solver/ShapedRigProblem.h"

using namespace velmora;

namespace {

using Index = Eigen::Index;

TEST(ShapedEquations, AreThoseOfAllParametersWithoutTheBend) {
  const unit::ShapedRigProblem of;
  const solver::ViewJacobian jacobian(of.problem.rig, of.layout, of.problem.sheet);
  ViewEquations equations;
  solver::TakeShapedEquations(jacobian, of.problem.sheet, of.problem.views[0], equations);
  ASSERT_TRUE(equations.usable);
  const Eigen::MatrixXd J = unit::ShapedDifferences(of, 0);
  const Eigen::VectorXd r = unit::ShapedResidualsOf(of.problem, 0);
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
