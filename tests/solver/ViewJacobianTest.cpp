/// Derivatives beside differences, for targets of any shape.
#include "solver/ViewJacobian.h"

#include <gtest/gtest.h>

#include <cmath>

#include "solver/ShapedRigProblem.h"

using namespace velmora;

namespace {

using Index = Eigen::Index;

TEST(ViewJacobian, HasTheDerivativesByAllThatIsEstimated) {
  const unit::ShapedRigProblem of;
  const solver::ViewJacobian jacobian(of.problem.rig, of.layout, of.problem.sheet);
  for (size_t i = 0; i < of.problem.views.size(); ++i) {
    const auto products = jacobian.ProductsOf(of.problem.views[i]);
    ASSERT_TRUE(products.usable);
    Eigen::MatrixXd differences(unit::ShapedResidualsOf(of.problem, i).size(),
                                of.layout.shared + POSE_PARAMETERS + 4);
    differences << unit::ShapedDifferences(of, i), unit::ShapedResidualsOf(of.problem, i);
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

TEST(ViewJacobian, WeighsPointsByTheirDeviations) {
  unit::ShapedRigProblem of;
  for (TargetView& view : of.problem.views) {
    for (Observation& observation : view.observations) {
      for (size_t k = 0; k < observation.object.size(); ++k) {
        observation.deviations.push_back(0.6 + 0.05 * static_cast<double>(k));
      }
    }
  }
  const solver::ViewJacobian jacobian(of.problem.rig, of.layout, of.problem.sheet);
  const auto products = jacobian.ProductsOf(of.problem.views[0]);
  Eigen::VectorXd residuals = unit::ShapedResidualsOf(of.problem, 0);
  Eigen::MatrixXd differences = unit::ShapedDifferences(of, 0);
  std::vector<double> pixelCosts;
  Index row = 0;
  for (const Observation& observation : of.problem.views[0].observations) {
    pixelCosts.push_back(
        residuals.segment(row, 2 * static_cast<Index>(observation.object.size())).squaredNorm());
    for (const double deviation : observation.deviations) {
      residuals.segment(row, 2) /= deviation;
      differences.middleRows(row, 2) /= deviation;
      row += 2;
    }
  }
  const Eigen::MatrixXd expected = differences.transpose() * differences;
  for (Index c = 0; c < expected.cols(); ++c) {
    for (Index r = c; r < expected.rows(); ++r) {
      EXPECT_NEAR(products.matrix(r, c), expected(r, c), 1e-6 * std::sqrt(expected(r, r) * expected(c, c)));
    }
  }
  EXPECT_NEAR(products.cost, residuals.head(row).squaredNorm(), 1e-9 * products.cost);
  ASSERT_EQ(products.pixelCosts.size(), 2U);
  for (size_t i = 0; i < 2; ++i) EXPECT_NEAR(products.pixelCosts[i], pixelCosts[i], 1e-9 * pixelCosts[i]);
}

}  // namespace
