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

}  // namespace
