/// Small systems of equations.
#include "solver/Cholesky.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

using namespace velmora;

namespace {

TEST(Cholesky, SolvesWhatItIsGiven) {
  const cv::Matx33d matrix(4.0, 1.0, 0.5, 1.0, 3.0, -0.2, 0.5, -0.2, 2.0);
  const cv::Vec3d expected(1.0, -2.0, 0.25);
  cv::Vec3d x = matrix * expected;
  solver::Cholesky<6> cholesky;
  ASSERT_TRUE(cholesky.Decompose(matrix.val, 3, 3));
  cholesky.Solve(x.val);
  EXPECT_LT(cv::norm(x - expected), 1e-15);
}

TEST(Cholesky, RefusesMatricesThatAreNotPositiveDefinite) {
  solver::Cholesky<3> cholesky;
  for (const cv::Matx22d& matrix : {cv::Matx22d(1, 2, 2, 1), cv::Matx22d(1, 1, 1, 1), cv::Matx22d(0, 0, 0, 1),
                                    cv::Matx22d(-1, 0, 0, 1), cv::Matx22d(std::nan(""), 0, 0, 1)}) {
    EXPECT_FALSE(cholesky.Decompose(matrix.val, 2, 2)) << matrix;
  }
}

}  // namespace
