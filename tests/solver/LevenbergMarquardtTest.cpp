/// Minima beside those that undamped steps on all parameters at once find from the truth.
#include "solver/LevenbergMarquardt.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <opencv2/calib3d.hpp>

#include "solver/BundleAdjustment.h"
#include "solver/DenseProblem.h"
#include "solver/OpenCvIntrinsics.h"
#include "solver/RigProblems.h"

using namespace velmora;

namespace {

using Index = Eigen::Index;

bool SameBits(const RigidTransform& a, const RigidTransform& b) {
  return std::memcmp(a.R.val, b.R.val, sizeof a.R.val) == 0 &&
         std::memcmp(a.t.val, b.t.val, sizeof a.t.val) == 0;
}

bool SameBits(const Solution& a, const Solution& b) {
  bool same = a.cost == b.cost && a.priorCost == b.priorCost && a.iterations == b.iterations;
  for (size_t i = 0; i < a.rig.cameras.size(); ++i) {
    same = same && a.rig.cameras[i].intrinsics.values == b.rig.cameras[i].intrinsics.values &&
           SameBits(a.rig.cameras[i].cameraFromRig, b.rig.cameras[i].cameraFromRig);
  }
  for (size_t i = 0; i < a.views.size(); ++i) {
    same = same && SameBits(a.views[i].rigFromTarget, b.views[i].rigFromTarget) &&
           a.equations[i].products == b.equations[i].products;
  }
  return same;
}

CalibrationProblem ProblemOf(const Solution& solution) {
  return {solution.rig, solution.views, solution.estimated, solution.priors};
}

double CostOf(const CalibrationProblem& problem) {
  return unit::DenseResiduals(problem).squaredNorm();
}

/// Poses that are off by `angle` about a random axis, and by that share of their distance.
void Disturb(CalibrationProblem& problem, double angle, cv::RNG& random) {
  for (TargetView& view : problem.views) {
    RigidTransform& pose = view.rigFromTarget;
    double step[POSE_PARAMETERS];
    for (double& value : step) value = random.gaussian(1.0);
    const double scale = angle / cv::norm(cv::Vec3d(step[0], step[1], step[2]));
    for (int i = 0; i < 3; ++i) {
      step[i] *= scale;
      step[3 + i] *= angle * pose.t[2] / 3.0;
    }
    pose = Retract(pose, step);
  }
}

/// How far the intrinsics are from those of the minimum, in standard deviations of a noise of 0.1 px.
double Deviations(const CalibrationProblem& minimum, const Rig& rig) {
  const Eigen::MatrixXd jacobian = unit::DenseJacobian(minimum);
  const Eigen::MatrixXd inverse = unit::DenseInverse(jacobian.transpose() * jacobian);
  const Layout layout = LayoutOf(minimum.rig, minimum.estimated);
  double most = 0.0;
  for (size_t i = 0; i < rig.cameras.size(); ++i) {
    const Layout::Block& block = layout.cameras[i];
    for (int k = 0; k < block.count; ++k) {
      const auto at = static_cast<size_t>(k);
      const double away = rig.cameras[i].intrinsics.values[at] - minimum.rig.cameras[i].intrinsics.values[at];
      most = std::max(
          most, std::abs(away) / (0.1 * std::sqrt(inverse(block.intrinsics + k, block.intrinsics + k))));
    }
  }
  return most;
}

class FarStart : public ::testing::TestWithParam<std::uint64_t> {};

TEST_P(FarStart, OfOneCameraLeadsToTheMinimum) {
  const CalibrationProblem truth = unit::TrueProblem(unit::DistortedCamera(), 6, 0.1, GetParam());
  const CalibrationProblem expected = unit::DenseMinimum(truth);
  CalibrationProblem start = truth;
  cv::RNG random(GetParam());
  auto& values = start.rig.cameras[0].intrinsics.values;
  values = {values[FX] * random.uniform(0.6, 1.7), values[FY] * random.uniform(0.6, 1.7),
            values[CX] + random.uniform(-80.0, 80.0), values[CY] + random.uniform(-80.0, 80.0)};
  Disturb(start, 0.25, random);
  const Solution solution = solver::Minimise(start, {});
  ASSERT_TRUE(solution.usable);
  EXPECT_TRUE(solution.converged);
  EXPECT_GT(CostOf(start), 1e4 * CostOf(expected));
  EXPECT_NEAR(solution.cost, CostOf(expected), 1e-9 * CostOf(expected));
  EXPECT_NEAR(solution.cost, CostOf(ProblemOf(solution)), 1e-10 * solution.cost);
  EXPECT_LT(Deviations(expected, solution.rig), 1e-3);
}

TEST_P(FarStart, OfARigLeadsToTheMinimum) {
  const CalibrationProblem truth = unit::TrueProblem(unit::RowOf(3), 6, 0.1, GetParam());
  const CalibrationProblem expected = unit::DenseMinimum(truth);
  CalibrationProblem start = truth;
  cv::RNG random(GetParam());
  for (size_t i = 0; i < 3; ++i) {
    auto& values = start.rig.cameras[i].intrinsics.values;
    values = {values[FX] * random.uniform(0.8, 1.25), values[FY] * random.uniform(0.8, 1.25),
              values[CX] + random.uniform(-40.0, 40.0), values[CY] + random.uniform(-40.0, 40.0)};
    const double step[] = {0.1, -0.1, 0.1, 0.02, -0.03, 0.05};
    if (i > 0) start.rig.cameras[i].cameraFromRig = Retract(start.rig.cameras[i].cameraFromRig, step);
  }
  Disturb(start, 0.15, random);
  const Solution solution = solver::Minimise(start, {});
  ASSERT_TRUE(solution.usable);
  EXPECT_TRUE(solution.converged);
  EXPECT_NEAR(solution.cost, CostOf(expected), 1e-9 * CostOf(expected));
  EXPECT_LT(Deviations(expected, solution.rig), 1e-3);
  for (size_t i = 1; i < 3; ++i) {
    const RigidTransform& own = solution.rig.cameras[i].cameraFromRig;
    const RigidTransform& other = expected.rig.cameras[i].cameraFromRig;
    EXPECT_LT(unit::AngleBetween(own.R, other.R), 1e-4);
    EXPECT_LT(cv::norm(own.t - other.t), 1e-6);
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, FarStart, ::testing::Range<std::uint64_t>(1, 6));

TEST(LevenbergMarquardt, FindsTheMinimumOfAFlatValleyThatAPriorBends) {
  for (const std::uint64_t seed : {1U, 3U}) {
    CalibrationProblem truth = unit::TrueProblem(unit::DistortedCamera(), 8, 0.1, seed, FULL_PARAMETERS);
    truth.priors = solver::WeakPriors(truth.rig, truth.views, 0.01);
    const CalibrationProblem expected = unit::DenseMinimum(truth);
    CalibrationProblem start = truth;
    auto& values = start.rig.cameras[0].intrinsics.values;
    values[FX] *= 1.05;
    values[K1] = 0.0;
    values[K5] = 0.3;
    values[K6] = -0.3;
    values[TAU_X] = 0.05;
    const Solution solution = solver::Minimise(start, {});
    EXPECT_TRUE(solution.converged);
    const double total = CostOf(expected);
    EXPECT_NEAR(solution.cost + solution.priorCost, total, 1e-8 * total) << seed;
    EXPECT_GT(solution.priorCost, 0.0);
    EXPECT_LT(Deviations(expected, solution.rig), 1e-2) << seed;
  }
}

TEST(LevenbergMarquardt, LeavesTheLeastCostForAPriorThatIsWorthMore) {
  CalibrationProblem problem = unit::TrueProblem(unit::DistortedCamera(), 8, 0.1, 5, RATIONAL_PARAMETERS);
  problem = ProblemOf(solver::Minimise(problem, {}));
  problem.priors = solver::WeakPriors(problem.rig, problem.views, 1.0);
  const Solution solution = solver::Minimise(problem, {});
  const double total = CostOf(unit::DenseMinimum(problem));
  EXPECT_NEAR(solution.cost + solution.priorCost, total, 1e-8 * total);
  EXPECT_LT(total, 0.999 * CostOf(problem));
}

TEST(LevenbergMarquardt, FindsTheMinimumOfWeightedPoints) {
  CalibrationProblem truth = unit::TrueProblem(unit::DistortedCamera(), 5, 0.1, 3);
  cv::RNG random(4);
  for (TargetView& view : truth.views) {
    Observation& observation = view.observations[0];
    for (size_t k = 0; k < observation.object.size(); ++k)
      observation.weights.push_back(random.uniform(0.0, 1.0));
    observation.weights[7] = 0.0;
    observation.image[7] += cv::Point2d(80.0, -60.0);
  }
  const CalibrationProblem expected = unit::DenseMinimum(truth);
  const Solution solution = solver::Minimise(truth, {});
  EXPECT_NEAR(solution.cost, CostOf(expected), 1e-9 * solution.cost);
  EXPECT_LT(Deviations(expected, solution.rig), 1e-3);
}

TEST(LevenbergMarquardt, FindsTheMinimumThatOpenCVFinds) {
  CalibrationProblem problem = unit::TrueProblem(unit::DistortedCamera(), 8, 0.1, 6);
  std::vector<std::vector<cv::Point3f>> object;
  std::vector<std::vector<cv::Point2f>> image;
  for (TargetView& view : problem.views) {
    Observation& observed = view.observations[0];
    object.emplace_back(observed.object.begin(), observed.object.end());
    image.emplace_back(observed.image.begin(), observed.image.end());
    observed.object.assign(object.back().begin(), object.back().end());
    observed.image.assign(image.back().begin(), image.back().end());
  }
  cv::Mat K;
  cv::Mat D;
  std::vector<cv::Mat> rvecs;
  std::vector<cv::Mat> tvecs;
  const double rms = cv::calibrateCamera(object, image, unit::FRAME, K, D, rvecs, tvecs, 0, OpenCvCriteria());
  problem.rig.cameras[0].intrinsics.values = {600.0, 600.0, 300.0, 250.0};
  const Solution solution = solver::Minimise(problem, {});
  EXPECT_NEAR(RmsOf(solution), rms, 1e-9);
  EXPECT_NEAR(solution.rig.cameras[0].intrinsics.values[FX], K.at<double>(0, 0), 1e-3);
  EXPECT_NEAR(solution.rig.cameras[0].intrinsics.values[CY], K.at<double>(1, 2), 1e-3);
  EXPECT_NEAR(solution.rig.cameras[0].intrinsics.values[K1], D.at<double>(0), 1e-5);
}

/// Forty views of two cameras: more than are summed at a time.
CalibrationProblem OfManyViews() {
  CalibrationProblem problem = unit::TrueProblem(unit::RowOf(2), 40, 0.1, 1);
  problem.rig.cameras[0].intrinsics.values[FX] *= 1.1;
  cv::RNG random(2);
  Disturb(problem, 0.1, random);
  return problem;
}

TEST(LevenbergMarquardt, IsTheSameToTheLastBitForAnyNumberOfThreads) {
  solver::SolveOptions options;
  const Solution one = solver::Minimise(OfManyViews(), options);
  EXPECT_TRUE(one.converged);
  for (const int threads : {2, 3, 7}) {
    options.threads = threads;
    EXPECT_TRUE(SameBits(solver::Minimise(OfManyViews(), options), one)) << threads;
  }
}

TEST(LevenbergMarquardt, TellsEachIterationWithACostThatNeverRises) {
  std::vector<int> numbers;
  std::vector<double> costs;
  solver::SolveOptions options;
  options.progress = [&](int iteration, double cost) {
    numbers.push_back(iteration);
    costs.push_back(cost);
    return true;
  };
  const Solution solution = solver::Minimise(OfManyViews(), options);
  ASSERT_GE(numbers.size(), 3U);
  for (size_t i = 0; i < numbers.size(); ++i) EXPECT_EQ(numbers[i], static_cast<int>(i) + 1);
  EXPECT_EQ(solution.iterations, numbers.back());
  EXPECT_EQ(solution.cost, costs.back());
  EXPECT_TRUE(std::is_sorted(costs.rbegin(), costs.rend()));
}

TEST(LevenbergMarquardt, EndsWhereTheCallerGivesUp) {
  double last = 0.0;
  solver::SolveOptions options;
  options.progress = [&](int iteration, double cost) {
    last = cost;
    return iteration < 2;
  };
  const Solution solution = solver::Minimise(OfManyViews(), options);
  EXPECT_TRUE(solution.usable);
  EXPECT_FALSE(solution.converged);
  EXPECT_EQ(solution.iterations, 2);
  EXPECT_EQ(solution.cost, last);
  EXPECT_NEAR(CostOf(ProblemOf(solution)), last, 1e-10 * last);
}

TEST(LevenbergMarquardt, LeavesTheStartAloneWhereTheCallerGaveUpBefore) {
  int calls = 0;
  solver::SolveOptions options;
  options.progress = [&](int, double) { return ++calls != 1; };
  solver::Minimise(OfManyViews(), options);
  const Solution solution = solver::Minimise(OfManyViews(), options);
  EXPECT_EQ(calls, 1);
  EXPECT_TRUE(solution.usable);
  EXPECT_FALSE(solution.converged);
  EXPECT_TRUE(SameBits(solution, solver::EvaluatedAt(OfManyViews())));
}

TEST(LevenbergMarquardt, EndsAfterTheMostIterations) {
  solver::SolveOptions options;
  options.mostIterations = 3;
  const Solution solution = solver::Minimise(OfManyViews(), options);
  EXPECT_EQ(solution.iterations, 3);
  EXPECT_FALSE(solution.converged);
}

TEST(LevenbergMarquardt, LeavesAStartThatIsNotUsableAlone) {
  CalibrationProblem problem = OfManyViews();
  problem.views[17].rigFromTarget.t[2] = -0.3;
  int calls = 0;
  solver::SolveOptions options;
  options.progress = [&](int, double) { return ++calls > 0; };
  const Solution solution = solver::Minimise(problem, options);
  EXPECT_FALSE(solution.usable);
  EXPECT_FALSE(solution.converged);
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(solution.rig.cameras[0].intrinsics.values, problem.rig.cameras[0].intrinsics.values);
  EXPECT_TRUE(SameBits(solution.views[3].rigFromTarget, problem.views[3].rigFromTarget));
}

TEST(LevenbergMarquardt, DoesNotTouchWhatIsKnown) {
  for (const Estimated estimated :
       {Estimated{false, true}, Estimated{true, false}, Estimated{false, false}}) {
    CalibrationProblem problem = OfManyViews();
    problem.estimated = estimated;
    const Solution solution = solver::Minimise(problem, {});
    EXPECT_TRUE(solution.converged);
    EXPECT_TRUE(SameBits(solution.rig.cameras[0].cameraFromRig, RigidTransform()));
    for (size_t i = 0; i < 2; ++i) {
      const Camera& camera = solution.rig.cameras[i];
      EXPECT_EQ(camera.intrinsics.values == problem.rig.cameras[i].intrinsics.values, !estimated.intrinsics);
    }
    EXPECT_EQ(SameBits(solution.rig.cameras[1].cameraFromRig, problem.rig.cameras[1].cameraFromRig),
              !estimated.cameraPoses);
    EXPECT_FALSE(SameBits(solution.views[0].rigFromTarget, problem.views[0].rigFromTarget));
  }
}

TEST(LevenbergMarquardt, DoesNotTouchCoefficientsThatTheModelHasNot) {
  CalibrationProblem problem = OfManyViews();
  for (Camera& camera : problem.rig.cameras) camera.intrinsics.values[K5] = 0.0123;
  const Solution solution = solver::Minimise(problem, {});
  for (const Camera& camera : solution.rig.cameras) EXPECT_EQ(camera.intrinsics.values[K5], 0.0123);
}

TEST(EvaluatedAt, IsTheStartWithItsEquations) {
  const CalibrationProblem problem = OfManyViews();
  const Solution solution = solver::EvaluatedAt(problem);
  EXPECT_TRUE(solution.usable);
  EXPECT_EQ(solution.iterations, 0);
  EXPECT_NEAR(solution.cost, CostOf(problem), 1e-11 * solution.cost);
  EXPECT_EQ(solution.equations.size(), 40U);
  EXPECT_EQ(solution.rig.cameras[0].intrinsics.values, problem.rig.cameras[0].intrinsics.values);
  EXPECT_TRUE(SameBits(solution.views[9].rigFromTarget, problem.views[9].rigFromTarget));
  EXPECT_TRUE(SameBits(solver::EvaluatedAt(problem, 3), solution));
}

}  // namespace
