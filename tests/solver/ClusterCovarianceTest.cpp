/// How far estimates are said to scatter, beside how far they do.
#include "solver/ClusterCovariance.h"

#include <gtest/gtest.h>

#include <Eigen/Cholesky>
#include <opencv2/core.hpp>

using namespace velmora;
using solver::ReducedSystem;

namespace {

using Index = Eigen::Index;

constexpr Index PARAMETERS = 3;

/// A straight-line problem whose truth is zero: residuals are noise, the noise of a part partly its own.
struct Linear {
  ReducedSystem all{Eigen::MatrixXd::Zero(PARAMETERS, PARAMETERS), Eigen::VectorXd::Zero(PARAMETERS), true};
  std::vector<ReducedSystem> parts;
};

Linear Drawn(int count, double common, std::uint64_t seed) {
  Linear linear;
  cv::RNG random(seed);
  for (int i = 0; i < count; ++i) {
    Eigen::MatrixXd jacobian(6, PARAMETERS);
    Eigen::VectorXd residuals(6);
    cv::RNG layout(static_cast<std::uint64_t>(i + 7));  // the same for every seed
    const Eigen::Vector3d shared(random.gaussian(common), random.gaussian(common), random.gaussian(common));
    for (Index row = 0; row < 6; ++row) {
      for (Index k = 0; k < PARAMETERS; ++k) jacobian(row, k) = layout.gaussian(1.0 + static_cast<double>(k));
      residuals(row) = jacobian.row(row).dot(shared) + random.gaussian(1.0);
    }
    linear.parts.push_back({jacobian.transpose() * jacobian, jacobian.transpose() * residuals, true});
    linear.all.matrix += linear.parts.back().matrix;
    linear.all.gradient += linear.parts.back().gradient;
  }
  return linear;
}

/// The mean of what is told over the mean square of what is, of each parameter.
Eigen::VectorXd ToldOverTrue(int count, double common) {
  constexpr int RUNS = 3000;
  Eigen::VectorXd told = Eigen::VectorXd::Zero(PARAMETERS);
  Eigen::VectorXd real = Eigen::VectorXd::Zero(PARAMETERS);
  for (int run = 1; run <= RUNS; ++run) {
    const Linear linear = Drawn(count, common, static_cast<std::uint64_t>(run));
    told += solver::ClusterCovariance(linear.all, linear.parts).diagonal();
    real += linear.all.matrix.llt().solve(linear.all.gradient).array().square().matrix();
  }
  return told.array() / real.array();
}

TEST(ClusterCovariance, IsRightOnAverageForFewParts) {
  for (const int count : {3, 5, 20}) {
    const Eigen::VectorXd ratio = ToldOverTrue(count, 0.0);
    EXPECT_GT(ratio.minCoeff(), 0.9) << count;
    EXPECT_LT(ratio.maxCoeff(), 1.1) << count;
  }
}

TEST(ClusterCovariance, KnowsOfWhatThePointsOfAPartHaveInCommon) {
  const Eigen::VectorXd ratio = ToldOverTrue(20, 2.0);
  EXPECT_GT(ratio.minCoeff(), 0.75);
  EXPECT_LT(ratio.maxCoeff(), 1.25);
}

TEST(ClusterCovariance, IsEmptyWhereAPartAloneDeterminesSomething) {
  Linear linear = Drawn(4, 0.0, 1);
  for (size_t i = 1; i < 4; ++i) {
    linear.parts[i].matrix.row(0).setZero();
    linear.parts[i].matrix.col(0).setZero();
    linear.parts[i].gradient(0) = 0.0;
  }
  linear.all = {linear.parts[0].matrix, linear.parts[0].gradient, true};
  for (size_t i = 1; i < 4; ++i) {
    linear.all.matrix += linear.parts[i].matrix;
    linear.all.gradient += linear.parts[i].gradient;
  }
  EXPECT_EQ(solver::ClusterCovariance(linear.all, linear.parts).size(), 0);
  const Eigen::MatrixXd rest = solver::ClusterCovarianceOfRest(linear.all, linear.parts);
  ASSERT_EQ(rest.size(), PARAMETERS * PARAMETERS);
  EXPECT_TRUE(rest.allFinite());
}

TEST(ClusterCovariance, IsEmptyOfASingularSystem) {
  Linear linear = Drawn(2, 0.0, 1);
  linear.all.matrix.row(1).setZero();
  linear.all.matrix.col(1).setZero();
  EXPECT_EQ(solver::ClusterCovariance(linear.all, linear.parts).size(), 0);
}

}  // namespace
