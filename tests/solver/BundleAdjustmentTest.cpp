/// Rigs adjusted to what they saw, beside the truth and their own standard deviations.
#include "solver/BundleAdjustment.h"

#include <gtest/gtest.h>

#include "solver/Covariance.h"
#include "solver/Eccentricity.h"
#include "solver/RigProblems.h"
#include "solver/RigStart.h"
#include "solver/WeakPrior.h"

using namespace velmora;

namespace {

using Index = Eigen::Index;

void ExpectCamerasNear(const Rig& rig, const Rig& truth, double degrees, double metres) {
  ASSERT_EQ(rig.cameras.size(), truth.cameras.size());
  for (size_t i = 0; i < truth.cameras.size(); ++i) {
    const RigidTransform& own = rig.cameras[i].cameraFromRig;
    const RigidTransform& other = truth.cameras[i].cameraFromRig;
    EXPECT_LT(unit::AngleBetween(own.R, other.R), degrees) << "camera " << i;
    EXPECT_LT(cv::norm(own.t - other.t), metres) << "camera " << i;
  }
}

/// Intrinsics that another computation may have found, a little off.
void Detune(Rig& rig) {
  for (size_t i = 0; i < rig.cameras.size(); ++i) {
    auto& values = rig.cameras[i].intrinsics.values;
    values[FX] *= i % 2 == 0 ? 1.02 : 0.98;
    values[CX] += 4.0;
    values[K1] += 0.02;
  }
}

struct Arranged {
  const char* name;
  world::Rig rig;
  int shots;
};

std::vector<Arranged> Rigs() {
  return {{"row", unit::RowOf(3), 40}, {"ring", unit::RingOf(5), 80}};
}

TEST(BundleAdjustment, OfKnownIntrinsicsFindsWhereAllCamerasStand) {
  for (const Arranged& arranged : Rigs()) {
    SCOPED_TRACE(arranged.name);
    const CalibrationProblem truth = unit::TrueProblem(arranged.rig, arranged.shots, 0.1, 7);
    CalibrationProblem start = solver::StartOf(truth.rig, truth.views);
    start.estimated.intrinsics = false;
    const Solution solution = solver::Adjust(start, {});
    ASSERT_TRUE(solution.usable);
    EXPECT_TRUE(solution.converged);
    ExpectCamerasNear(solution.rig, truth.rig, 0.05, 0.0005);
    EXPECT_NEAR(std::sqrt(NoiseVariance(solution)), 0.1, 0.003);
  }
}

TEST(BundleAdjustment, OfAllParametersFindsTheIntrinsicsTooAndWhereAllCamerasStand) {
  for (const Arranged& arranged : Rigs()) {
    SCOPED_TRACE(arranged.name);
    const CalibrationProblem truth = unit::TrueProblem(arranged.rig, arranged.shots, 0.1, 7);
    Rig detuned = truth.rig;
    Detune(detuned);
    const Solution solution = solver::Adjust(solver::StartOf(detuned, truth.views), {});
    ASSERT_TRUE(solution.usable);
    EXPECT_TRUE(solution.converged);
    ExpectCamerasNear(solution.rig, truth.rig, 0.05, 0.0005);
    EXPECT_NEAR(std::sqrt(NoiseVariance(solution)), 0.1, 0.003);
    for (size_t i = 0; i < truth.rig.cameras.size(); ++i) {
      const auto& own = solution.rig.cameras[i].intrinsics.values;
      const auto& other = truth.rig.cameras[i].intrinsics.values;
      EXPECT_NEAR(own[FX], other[FX], 1.0) << i;
      EXPECT_NEAR(own[CX], other[CX], 1.0) << i;
      EXPECT_NEAR(own[K1], other[K1], 0.01) << i;
    }
  }
}

TEST(BundleAdjustment, FindsACameraThatIsLinkedThroughOthersAlone) {
  CalibrationProblem truth = unit::TrueProblem(unit::RowOf(3), 40, 0.1, 8);
  for (TargetView& view : truth.views) {
    if (!view.observations[0].IsEmpty()) view.observations[2] = {};
  }
  CalibrationProblem start = solver::StartOf(truth.rig, truth.views);
  start.estimated.intrinsics = false;
  ExpectCamerasNear(solver::Adjust(start, {}).rig, truth.rig, 0.05, 0.0005);
}

TEST(BundleAdjustment, OfTheLargerModelsKeepsRigsWithoutPolesAndNearTheTruth) {
  const CalibrationProblem truth = unit::TrueProblem(unit::RowOf(3), 40, 0.1, 9);
  solver::BundleOptions options;
  options.parameters = RATIONAL_PARAMETERS;
  const Solution solution = solver::Adjust(solver::StartOf(truth.rig, truth.views), options);
  ASSERT_TRUE(solution.usable);
  ASSERT_EQ(solution.priors.size(), 3U);
  ExpectCamerasNear(solution.rig, truth.rig, 0.05, 0.0005);
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_GT(solution.priors[i].pulls[K4], 0.0);
    EXPECT_EQ(solution.rig.cameras[i].intrinsics.estimated, RATIONAL_PARAMETERS);
    EXPECT_TRUE(solver::IsFreeOfPoles(solution.rig.cameras[i].intrinsics, unit::FRAME));
  }
}

TEST(BundleAdjustment, TakesPosesToTheMinimumBeforeARigThatStaysAsItIs) {
  const CalibrationProblem truth = unit::TrueProblem(unit::RowOf(2), 6, 0.1, 3);
  const Solution best = solver::SolvePoses(truth.rig, truth.views);
  ASSERT_TRUE(best.converged);
  EXPECT_LT(best.cost, solver::EvaluatedAt(truth).cost);
  CalibrationProblem moved = truth;
  for (size_t i = 0; i < moved.views.size(); ++i) {
    const double step[] = {0.05, -0.04, 0.03, 0.01, 0.02, -0.03};
    moved.views[i].rigFromTarget = Retract(moved.views[i].rigFromTarget, step);
  }
  const Solution again = solver::SolvePoses(moved.rig, moved.views);
  EXPECT_NEAR(again.cost, best.cost, 1e-8 * best.cost);
  for (size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(again.rig.cameras[i].intrinsics.values, truth.rig.cameras[i].intrinsics.values);
    EXPECT_EQ(again.rig.cameras[i].cameraFromRig.t, truth.rig.cameras[i].cameraFromRig.t);
  }
  for (const ViewEquations& view : again.equations) {
    // No slope is left along any pose.
    const auto pose = view.products.diagonal().tail<POSE_PARAMETERS>().array().sqrt();
    EXPECT_LT((view.gradient.tail<POSE_PARAMETERS>().array() / pose).abs().maxCoeff(), 1e-4);
  }
}

TEST(BundleAdjustment, AgainIsThatOfTheNewPixelsWithWhatIsKnownKept) {
  const CalibrationProblem first = unit::TrueProblem(unit::RowOf(2), 10, 0.1, 3);
  std::vector<TargetView> pixels = first.views;
  pixels[2].observations[1].image[5] += cv::Point2d(3.0, 0.0);
  for (const bool intrinsics : {true, false}) {
    CalibrationProblem start = first;
    start.estimated.intrinsics = intrinsics;
    const Solution earlier = solver::Adjust(start, {});
    const Solution again = solver::SolveAgain(earlier, pixels, {});
    CalibrationProblem anew = start;
    anew.views = pixels;
    EXPECT_NEAR(again.cost, solver::Adjust(anew, {}).cost, 1e-8 * again.cost);
    EXPECT_GT(again.cost, earlier.cost + 1.0);
    EXPECT_EQ(again.rig.cameras[1].intrinsics.values == first.rig.cameras[1].intrinsics.values, !intrinsics);
  }
}

/// The centroids of discs, as the bias from their centres has them.
std::vector<TargetView> Centroids(const CalibrationProblem& truth, double radius) {
  std::vector<TargetView> views = truth.views;
  for (TargetView& view : views) {
    for (size_t i = 0; i < view.observations.size(); ++i) {
      Observation& observation = view.observations[i];
      const Camera& camera = truth.rig.cameras[i];
      const solver::Projection projection(camera.intrinsics);
      for (size_t k = 0; k < observation.object.size(); ++k) {
        observation.image[k] += solver::EccentricityError(
            projection, camera.cameraFromRig * view.rigFromTarget, observation.object[k], radius);
      }
    }
  }
  return views;
}

TEST(BundleAdjustment, CorrectsTheCentroidsOfDiscsOfEveryCamera) {
  const CalibrationProblem truth = unit::TrueProblem(unit::RingOf(5), 40, 0.0, 4);
  const double radius = 0.4 * static_cast<double>(unit::UNIT);
  solver::BundleOptions options;
  for (const bool intrinsics : {false, true}) {
    CalibrationProblem start = solver::StartOf(truth.rig, Centroids(truth, radius));
    start.estimated.intrinsics = intrinsics;
    options.discRadius = 0.0;
    EXPECT_GT(RmsOf(solver::Adjust(start, options)), 0.003);
    options.discRadius = radius;
    const Solution solution = solver::Adjust(start, options);
    EXPECT_LT(RmsOf(solution), 0.0003);
    ExpectCamerasNear(solution.rig, truth.rig, 1e-3, 1e-5);
  }
}

/// What the errors of many computations are, and what they were said to be.
struct Deviations {
  Eigen::ArrayXd squaredErrors;
  Eigen::ArrayXd predicted;
  int runs = 0;

  /// Adds the errors of the cameras' poses.
  void Add(const Solution& solution, const Rig& truth) {
    const Layout layout = LayoutOf(solution.rig, solution.estimated);
    const int first = layout.cameras[1].pose;
    const Index count = layout.shared - first;
    if (runs == 0) squaredErrors = predicted = Eigen::ArrayXd::Zero(count);
    Eigen::ArrayXd errors(count);
    for (size_t i = 1; i < truth.cameras.size(); ++i) {
      const cv::Matx33d R = solution.rig.cameras[i].cameraFromRig.R * truth.cameras[i].cameraFromRig.R.t();
      const cv::Vec3d t = solution.rig.cameras[i].cameraFromRig.t - truth.cameras[i].cameraFromRig.t;
      errors.segment<POSE_PARAMETERS>(layout.cameras[i].pose - first) << R(2, 1), R(0, 2), R(1, 0), t[0],
          t[1], t[2];
    }
    squaredErrors += errors.square();
    predicted += solver::SharedCovariance(solution).diagonal().tail(count).array();
    ++runs;
  }
};

class PredictedDeviations : public ::testing::TestWithParam<bool> {};

TEST_P(PredictedDeviations, AreThoseOfManyComputations) {
  constexpr int RUNS = 60;
  const world::Rig rig = unit::RowOf(3);
  const auto shots = world::SampleRigShots(rig, 12, 3, unit::PrintedGrid());
  const Rig truth = unit::TrueRig(rig);
  Deviations deviations;
  for (std::uint64_t run = 1; run <= RUNS; ++run) {
    CalibrationProblem problem{truth, unit::TrueViews(rig, shots, 0.1, run), {GetParam(), true}, {}};
    deviations.Add(solver::Adjust(problem, {}), truth);
  }
  // Each of the twelve has an error of a tenth by so few runs; together they have less.
  const Eigen::ArrayXd ratios = (deviations.predicted / deviations.squaredErrors).sqrt();
  EXPECT_GT(ratios.minCoeff(), 0.7) << ratios;
  EXPECT_LT(ratios.maxCoeff(), 1.4) << ratios;
  const double together = std::exp(ratios.log().mean());
  RecordProperty("predicted over empirical", std::to_string(together));
  EXPECT_GT(together, 0.9);
  EXPECT_LT(together, 1.1);
}

INSTANTIATE_TEST_SUITE_P(Refined, PredictedDeviations, ::testing::Bool());

}  // namespace
