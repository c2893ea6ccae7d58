/// Covariances beside the inverse of the whole normal matrix, and beside computations without each view.
#include "solver/Covariance.h"

#include <gtest/gtest.h>

#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>

#include "solver/BundleAdjustment.h"
#include "solver/DenseProblem.h"
#include "solver/RigProblems.h"

using namespace velmora;

namespace {

using Index = Eigen::Index;

CalibrationProblem ProblemOf(const Solution& solution) {
  return {solution.rig, solution.views, solution.estimated, solution.priors};
}

/// The covariance of the parameters from `first` on, the earlier ones known.
Eigen::MatrixXd DenseCovariance(const Solution& solution, int first = 0) {
  const Eigen::MatrixXd jacobian = unit::DenseJacobian(ProblemOf(solution));
  const Eigen::MatrixXd own = jacobian.rightCols(jacobian.cols() - first);
  const double freedom = 2.0 * CountOf(solution.views) - static_cast<double>(own.cols());
  return unit::DenseInverse(own.transpose() * own) * (solution.cost / freedom);
}

/// The largest difference, as a share of the standard deviations of the two parameters.
double Distance(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b) {
  const Eigen::VectorXd scale = b.diagonal().array().rsqrt();
  return (scale.asDiagonal() * (a - b) * scale.asDiagonal()).cwiseAbs().maxCoeff();
}

Solution SolutionOf(int cameras, int estimated) {
  CalibrationProblem problem =
      cameras == 1 ? unit::TrueProblem(unit::DistortedCamera(), 6, 0.1, 2, estimated)
                   : unit::TrueProblem(unit::RowOf(cameras), 4 * (cameras - 1), 0.1, 2, estimated);
  problem.priors = solver::WeakPriors(problem.rig, problem.views, 0.01);
  return solver::Minimise(problem, {});
}

class Covariance : public ::testing::TestWithParam<int> {};

TEST_P(Covariance, IsTheInverseOfTheWholeNormalMatrix) {
  for (const int estimated : {CLASSIC_PARAMETERS, RATIONAL_PARAMETERS}) {
    const Solution solution = SolutionOf(GetParam(), estimated);
    ASSERT_TRUE(solution.converged);
    const Eigen::MatrixXd expected = DenseCovariance(solution);
    const Eigen::MatrixXd covariance = solver::SharedCovariance(solution);
    const Index shared = LayoutOf(solution.rig, solution.estimated).shared;
    ASSERT_EQ(covariance.rows(), shared);
    EXPECT_LT(Distance(covariance, expected.topLeftCorner(shared, shared)), 1e-5);
  }
}

TEST_P(Covariance, HasAPartOfEachCamerasIntrinsics) {
  const Solution solution = SolutionOf(GetParam(), CLASSIC_PARAMETERS);
  const Eigen::MatrixXd shared = solver::SharedCovariance(solution);
  const Layout layout = LayoutOf(solution.rig, solution.estimated);
  for (size_t i = 0; i < layout.cameras.size(); ++i) {
    const Eigen::MatrixXd own = solver::IntrinsicsCovariance(shared, layout.cameras[i]);
    ASSERT_EQ(own.rows(), CLASSIC_PARAMETERS);
    const Index first = static_cast<Index>(i) * CLASSIC_PARAMETERS;
    for (Index row = 0; row < own.rows(); ++row) {
      for (Index column = 0; column < own.cols(); ++column) {
        EXPECT_EQ(own(row, column), shared(first + row, first + column));
      }
    }
    EXPECT_EQ(solver::IntrinsicsCovariance({}, layout.cameras[i]).size(), 0);
  }
}

TEST_P(Covariance, OfPosesIsTheirsInTheInverseOfTheWholeNormalMatrix) {
  const Solution solution = SolutionOf(GetParam(), CLASSIC_PARAMETERS);
  const Eigen::MatrixXd expected = DenseCovariance(solution);
  const Eigen::MatrixXd shared = solver::SharedCovariance(solution);
  for (size_t i = 0; i < solution.views.size(); ++i) {
    const solver::PoseMatrix pose =
        solver::PoseCovariance(solution.equations[i], NoiseVariance(solution), shared);
    const Index at = shared.rows() + POSE_PARAMETERS * static_cast<Index>(i);
    EXPECT_LT(Distance(pose, expected.block<POSE_PARAMETERS, POSE_PARAMETERS>(at, at)), 1e-5) << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Cameras, Covariance, ::testing::Values(1, 2, 4));

TEST(CovarianceOfKnownIntrinsics, HasNoRowsOfWhatIsBeforeTheFirstEstimatedParameter) {
  for (const int cameras : {2, 4}) {
    const Solution solution = SolutionOf(cameras, CLASSIC_PARAMETERS);
    const int first = CLASSIC_PARAMETERS * cameras;
    const Eigen::MatrixXd covariance = solver::SharedCovariance(solution, first);
    const Index rest = POSE_PARAMETERS * (cameras - 1);
    ASSERT_EQ(covariance.rows(), rest);
    EXPECT_LT(Distance(covariance, DenseCovariance(solution, first).topLeftCorner(rest, rest)), 1e-5);
  }
}

/// What all views share, as steps from the reference.
Eigen::VectorXd SharedStep(const Rig& from, const Rig& to) {
  const Layout layout = LayoutOf(from, {});
  Eigen::VectorXd step(layout.shared);
  for (size_t i = 0; i < from.cameras.size(); ++i) {
    for (int k = 0; k < layout.cameras[i].count; ++k) {
      const auto at = static_cast<size_t>(k);
      step(layout.cameras[i].intrinsics + k) =
          to.cameras[i].intrinsics.values[at] - from.cameras[i].intrinsics.values[at];
    }
    if (layout.cameras[i].pose == Layout::FIXED) continue;
    const cv::Matx33d R = to.cameras[i].cameraFromRig.R * from.cameras[i].cameraFromRig.R.t();
    const cv::Vec3d t = to.cameras[i].cameraFromRig.t - from.cameras[i].cameraFromRig.t;
    step.segment<POSE_PARAMETERS>(layout.cameras[i].pose) << 0.5 * (R(2, 1) - R(1, 2)),
        0.5 * (R(0, 2) - R(2, 0)), 0.5 * (R(1, 0) - R(0, 1)), t[0], t[1], t[2];
  }
  return step;
}

/// What leaving a view out changes, less what its own pull had to do with it: with H the share of the view in
/// all information, times the root of 1 - H.
Eigen::VectorXd Unbiased(const Solution& solution, const Solution& without, const Eigen::VectorXd& change) {
  const Eigen::MatrixXd all = solver::SystemOf(solution).matrix;
  const Eigen::MatrixXd rest = solver::SystemOf(without).matrix;
  const Eigen::LLT<Eigen::MatrixXd> cholesky(all);
  const Eigen::MatrixXd half = cholesky.matrixL().solve(rest);
  const Eigen::MatrixXd left = cholesky.matrixL().solve(half.transpose());
  const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> eigen(left);
  const Eigen::VectorXd whitened = cholesky.matrixU() * change;
  return cholesky.matrixU().solve(eigen.operatorSqrt() * whitened);
}

TEST(Jackknife, IsThatOfComputationsWithoutEachView) {
  for (const int cameras : {1, 2}) {
    const CalibrationProblem problem = cameras == 1 ? unit::TrueProblem(unit::DistortedCamera(), 12, 0.01, 5)
                                                    : unit::TrueProblem(unit::RowOf(2), 12, 0.01, 5);
    const Solution solution = solver::Minimise(problem, {});
    const Index shared = LayoutOf(solution.rig, solution.estimated).shared;
    Eigen::MatrixXd expected = Eigen::MatrixXd::Zero(shared, shared);
    for (Index i = 0; i < 12; ++i) {
      CalibrationProblem without = ProblemOf(solution);
      without.views.erase(without.views.begin() + i);
      const Solution rest = solver::Minimise(without, {});
      const Eigen::VectorXd change = Unbiased(solution, rest, SharedStep(solution.rig, rest.rig));
      expected += change * change.transpose();
    }
    EXPECT_LT(Distance(solver::JackknifeCovariance(solution), expected), 0.006) << cameras;
  }
}

TEST(Jackknife, OfRepeatedViewsIsThatOfTheirPoses) {
  for (const int cameras : {1, 2}) {
    CalibrationProblem problem = cameras == 1 ? unit::TrueProblem(unit::DistortedCamera(), 8, 0.1, 5)
                                              : unit::TrueProblem(unit::RowOf(2), 8, 0.1, 5);
    const Eigen::MatrixXd expected = solver::JackknifeCovariance(solver::Minimise(problem, {}));
    const std::vector<TargetView> once = problem.views;
    for (int i = 0; i < 3; ++i) problem.views.insert(problem.views.end(), once.begin(), once.end());
    const Solution repeated = solver::Minimise(problem, {});
    EXPECT_LT(Distance(solver::JackknifeCovariance(repeated), expected), 0.001) << cameras;
  }
}

TEST(Jackknife, IsThatOfTheNoiseOfFewViewsOnAverage) {
  constexpr int RUNS = 200;
  Eigen::VectorXd ratio = Eigen::VectorXd::Zero(CLASSIC_PARAMETERS);
  const CalibrationProblem truth = unit::TrueProblem(unit::DistortedCamera(), 5, 0.0, 6);
  for (int run = 1; run <= RUNS; ++run) {
    CalibrationProblem noisy = truth;
    cv::RNG random(static_cast<std::uint64_t>(run));
    for (TargetView& view : noisy.views) {
      for (cv::Point2d& point : view.observations.front().image)
        point += cv::Point2d(random.gaussian(0.1), random.gaussian(0.1));
    }
    const Solution solution = solver::Minimise(noisy, {});
    ratio.array() += solver::JackknifeCovariance(solution).diagonal().array() /
                     solver::SharedCovariance(solution).diagonal().array() / RUNS;
  }
  EXPECT_GT(ratio.head(4).minCoeff(), 0.7) << ratio.transpose();
  EXPECT_LT(ratio.head(4).maxCoeff(), 1.3) << ratio.transpose();
}

TEST(Jackknife, TakesParametersBeforeTheFirstEstimatedOneForKnown) {
  const CalibrationProblem problem = unit::TrueProblem(unit::RowOf(2), 12, 0.1, 5);
  const Solution solution = solver::Minimise(problem, {});
  CalibrationProblem known = ProblemOf(solution);
  known.estimated.intrinsics = false;
  const Eigen::MatrixXd expected = solver::JackknifeCovariance(solver::EvaluatedAt(known));
  ASSERT_EQ(expected.rows(), POSE_PARAMETERS);
  const Eigen::MatrixXd jackknife = solver::JackknifeCovariance(solution, 2 * CLASSIC_PARAMETERS);
  ASSERT_EQ(jackknife.rows(), POSE_PARAMETERS);
  EXPECT_LT(Distance(jackknife, expected), 1e-9);
}

TEST(Jackknife, IsTheSameWhereTheSearchHasNotQuiteEnded) {
  const CalibrationProblem problem = unit::TrueProblem(unit::RowOf(2), 12, 0.01, 5);
  const Solution solution = solver::Minimise(problem, {});
  CalibrationProblem beside = ProblemOf(solution);
  for (Camera& camera : beside.rig.cameras) camera.intrinsics.values[FX] += 0.05;
  EXPECT_LT(Distance(solver::JackknifeCovariance(solver::EvaluatedAt(beside)),
                     solver::JackknifeCovariance(solution)),
            0.02);
}

TEST(CovarianceOfTooFewViews, IsEmptyWhereTheViewsDoNotDetermineTheParameters) {
  CalibrationProblem problem = unit::TrueProblem(unit::RowOf(2), 8, 0.1, 1);
  for (size_t i = 0; i < 8; ++i) problem.views[i].observations[i % 2] = {};
  EXPECT_EQ(solver::SharedCovariance(solver::EvaluatedAt(problem)).size(), 0);
  EXPECT_EQ(solver::JackknifeCovariance(solver::EvaluatedAt(problem)).size(), 0);
  // One view links the cameras: with it they are determined, without it they are not.
  problem = unit::TrueProblem(unit::RowOf(2), 8, 0.1, 1);
  for (size_t i = 1; i < 8; ++i) problem.views[i].observations[i % 2] = {};
  const Solution solution = solver::Minimise(problem, {});
  EXPECT_EQ(solver::SharedCovariance(solution).rows(), 24);
  EXPECT_EQ(solver::JackknifeCovariance(solution).size(), 0);
}

}  // namespace
