/// Symmetric positive definite systems.
#include "solver/ScaledSystem.h"

#include <gtest/gtest.h>

#include <Eigen/LU>
#include <limits>

using namespace velmora;

namespace {

Eigen::Matrix3d SomeMatrix() {
  Eigen::Matrix3d matrix;
  matrix << 4.0, 1.0, 0.5, 1.0, 3.0, -0.2, 0.5, -0.2, 2.0;
  return matrix;
}

/// Neither positive definite nor a number.
std::vector<Eigen::Matrix2d> Singular() {
  std::vector<Eigen::Matrix2d> matrices(5);
  matrices[0] << 1, 2, 2, 1;
  matrices[1] << 1, 1, 1, 1;
  matrices[2] << 0, 0, 0, 1;
  matrices[3] << -1, 0, 0, 1;
  matrices[4] << std::numeric_limits<double>::quiet_NaN(), 0, 0, 1;
  return matrices;
}

TEST(Decompose, SolvesWhatItIsGiven) {
  const Eigen::Vector3d expected(1.0, -2.0, 0.25);
  Eigen::LLT<Eigen::Matrix3d> cholesky;
  ASSERT_TRUE(solver::Decompose(SomeMatrix(), cholesky));
  EXPECT_LT((cholesky.solve(SomeMatrix() * expected) - expected).norm(), 1e-15);
}

TEST(Decompose, RefusesMatricesThatAreNotPositiveDefinite) {
  for (const Eigen::Matrix2d& matrix : Singular()) {
    Eigen::LLT<Eigen::Matrix2d> cholesky;
    EXPECT_FALSE(solver::Decompose(matrix, cholesky)) << matrix;
  }
}

TEST(Decompose, RefusesAPivotOfWhichOnlyRoundingIsLeft) {
  Eigen::Matrix2d matrix;
  Eigen::LLT<Eigen::Matrix2d> cholesky;
  matrix << 1.0, 1.0, 1.0, 1.0 + 4e-16;
  EXPECT_FALSE(solver::Decompose(matrix, cholesky));
  matrix << 1.0, 1.0, 1.0, 1.0 + 1e-13;
  EXPECT_TRUE(solver::Decompose(matrix, cholesky));
}

TEST(ScaledSystem, RefusesMatricesThatAreNotPositiveDefinite) {
  for (const Eigen::Matrix2d& matrix : Singular()) {
    solver::ScaledSystem system;
    EXPECT_FALSE(system.Decompose(matrix)) << matrix;
  }
}

TEST(ScaledSystem, SolvesForParametersOfVeryDifferentSizes) {
  const Eigen::Vector3d sizes(1e-9, 1.0, 1e10);
  const Eigen::MatrixXd matrix = sizes.asDiagonal() * SomeMatrix() * sizes.asDiagonal();
  solver::ScaledSystem system;
  ASSERT_TRUE(system.Decompose(matrix));
  const Eigen::MatrixXd inverse = system.Solve(Eigen::Matrix3d::Identity());
  const Eigen::Matrix3d scaled = sizes.asDiagonal() * inverse * sizes.asDiagonal();
  EXPECT_LT((scaled - SomeMatrix().inverse()).norm(), 1e-14);
}

TEST(ScaledSystem, SaysThatAParameterDependsOnAnotherWhateverItsSize) {
  const Eigen::Vector2d sizes(1e-9, 1e10);
  Eigen::Matrix2d matrix;
  matrix << 1.0, 1.0, 1.0, 1.0;
  solver::ScaledSystem system;
  EXPECT_FALSE(system.Decompose(sizes.asDiagonal() * matrix * sizes.asDiagonal()));
  matrix(1, 1) = 1.0 + 1e-9;
  EXPECT_TRUE(system.Decompose(sizes.asDiagonal() * matrix * sizes.asDiagonal()));
}

}  // namespace
