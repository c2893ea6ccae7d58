/// How far apart the images of a view put the sheet, beside what a pose of its own for each camera saves.
#include "quality/Disagreement.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "quality/RigSolutions.h"

using namespace velmora;

namespace {

constexpr double NOISE = 0.1;

/// A rig of known intrinsics, of which one camera saw the sheet this far aside in some of the views.
Solution WithMovedViews(const world::Rig& rig, size_t camera, const std::vector<size_t>& moved, double aside,
                        std::uint64_t seed, double noise = NOISE) {
  auto poses = world::SampleRigViews(rig, 12, seed, unit::Paper());
  auto problem = unit::ObservedByRig(rig, CLASSIC_PARAMETERS, unit::FlatShape(), poses, seed, noise);
  for (const size_t view : moved) poses[view].tvec[0] += aside;
  const auto later = unit::ObservedByRig(rig, CLASSIC_PARAMETERS, unit::FlatShape(), poses, seed, noise);
  for (const size_t view : moved) {
    problem.views[view].observations[camera] = later.views[view].observations[camera];
  }
  problem.estimated.intrinsics = false;
  return unit::Solved(problem);
}

/// What the solution's cameras leave when each has poses of its own: the costs by views.
std::vector<double> CostsOfOwnPoses(const Solution& solution) {
  std::vector<double> costs(solution.views.size(), 0.0);
  for (size_t camera = 0; camera < solution.rig.cameras.size(); ++camera) {
    Rig alone;
    alone.cameras = {solution.rig.cameras[camera]};
    alone.cameras.front().cameraFromRig = {};
    for (size_t i = 0; i < costs.size(); ++i) {
      const Observation& observed = solution.views[i].observations[camera];
      if (observed.IsEmpty()) continue;
      const RigidTransform pose =
          solution.rig.cameras[camera].cameraFromRig * solution.views[i].rigFromTarget;
      costs[i] += solver::SolvePoses(alone, {{pose, {observed}}}).cost;
    }
  }
  return costs;
}

/// By definition, from computations with poses of their own.
std::vector<double> ExpectedOf(const Solution& solution) {
  const std::vector<double> own = CostsOfOwnPoses(solution);
  double cost = 0.0;
  double freedom = 0.0;
  std::vector<double> images;
  for (size_t i = 0; i < own.size(); ++i) {
    const auto& observed = solution.views[i].observations;
    images.push_back(static_cast<double>(
        std::count_if(observed.begin(), observed.end(), [](const Observation& o) { return !o.IsEmpty(); })));
    cost += own[i];
    freedom += 2.0 * CountOf(observed) - 6.0 * images.back();
  }
  std::vector<double> expected;
  for (size_t i = 0; i < own.size(); ++i) {
    const double degrees = 6.0 * (images[i] - 1.0);
    const double saved = solution.equations[i].cost - own[i];
    expected.push_back(images[i] < 2.0 ? 0.0 : std::sqrt(saved / degrees / (cost / freedom)));
  }
  return expected;
}

double MeanSquare(const std::vector<double>& values) {
  double sum = 0.0;
  for (const double value : values) sum += value * value;
  return sum / static_cast<double>(values.size());
}

TEST(Disagreement, IsWhatPosesOfTheirOwnSave) {
  const std::vector<size_t> moved = {2, 7};
  for (const world::Rig& rig : {unit::ClassicPair(), unit::ClassicTriple()}) {
    for (size_t camera = 0; camera < rig.cameras.size(); ++camera) {
      const Solution solution = WithMovedViews(rig, camera, moved, 0.002, 3);
      const std::vector<double> apart = DisagreementsOf(solution);
      const std::vector<double> expected = ExpectedOf(solution);
      ASSERT_EQ(apart.size(), expected.size());
      for (size_t i = 0; i < apart.size(); ++i) {
        EXPECT_NEAR(apart[i], expected[i], 0.01 * expected[i]) << i << " of camera " << camera;
      }
    }
  }
}

TEST(Disagreement, IsLargestInTheViewsOfWhichTheSheetMoved) {
  for (const std::uint64_t seed : {1U, 2U, 3U}) {
    const std::vector<double> apart =
        DisagreementsOf(WithMovedViews(unit::ClassicPair(), 1, {4}, 0.002, seed));
    for (size_t i = 0; i < apart.size(); ++i) {
      if (i == 4) continue;
      EXPECT_LT(apart[i], 0.5 * apart[4]) << i;
    }
    EXPECT_GT(apart[4], 5.0);
  }
}

TEST(Disagreement, GrowsAsTheSheetMovesAndAsTheNoiseFalls) {
  const auto apart = [](double aside, double noise) {
    return DisagreementsOf(WithMovedViews(unit::ClassicPair(), 1, {4}, aside, 5, noise))[4];
  };
  const double once = apart(0.005, NOISE);
  EXPECT_NEAR(apart(0.01, NOISE), 2.0 * once, 0.1 * once);
  EXPECT_NEAR(apart(0.005, 0.5 * NOISE), 2.0 * once, 0.1 * once);
}

TEST(Disagreement, OfNoiseAloneIsOneButForWhatTheCamerasPosesTakeUp) {
  constexpr int RUNS = 40;
  struct Case {
    world::Rig rig;
    double expected;
  };
  // The degrees of freedom of 12 views: six for each image but the first, less six for each camera but the
  // first.
  for (const Case& item :
       {Case{unit::ClassicPair(), 11.0 / 12.0}, Case{unit::ClassicTriple(), 11.0 / 12.0}}) {
    double mean = 0.0;
    for (std::uint64_t seed = 1; seed <= RUNS; ++seed) {
      mean += MeanSquare(DisagreementsOf(WithMovedViews(item.rig, 1, {}, 0.0, seed))) / RUNS;
    }
    // Its own standard deviation is 0.026 of the pair.
    EXPECT_NEAR(mean, item.expected, 0.08) << item.rig.cameras.size();
  }
}

TEST(Disagreement, IsNoneOfAViewThatOneCameraSaw) {
  auto problem =
      unit::ObservedByRig(unit::ClassicTriple(), CLASSIC_PARAMETERS, unit::FlatShape(), 10, 2, NOISE);
  problem.estimated.intrinsics = false;
  problem.views[1].observations[0] = problem.views[1].observations[2] = {};
  problem.views[3].observations[1] = {};
  problem.views[5].observations[0] = {};
  const Solution solution = unit::Solved(problem);
  const std::vector<double> apart = DisagreementsOf(solution);
  const std::vector<double> expected = ExpectedOf(solution);
  EXPECT_EQ(apart[1], 0.0);
  for (size_t i = 0; i < apart.size(); ++i) EXPECT_NEAR(apart[i], expected[i], 0.01 * expected[i]) << i;
}

TEST(Disagreement, OfASingleCameraIsNone) {
  world::Rig alone;
  alone.cameras = {unit::ClassicPair().cameras.front()};
  const auto problem = unit::ObservedByRig(alone, CLASSIC_PARAMETERS, unit::FlatShape(), 8, 1, NOISE);
  EXPECT_EQ(DisagreementsOf(unit::Solved(problem)), std::vector<double>(8, 0.0));
}

TEST(Disagreement, DoesNotCountPointsThatWereRejected) {
  auto problem =
      unit::ObservedByRig(unit::ClassicPair(), CLASSIC_PARAMETERS, unit::FlatShape(), 10, 4, NOISE);
  problem.estimated.intrinsics = false;
  auto weightless = problem;
  for (size_t i = 0; i < problem.views.size(); ++i) {
    Observation& observed = weightless.views[i].observations[i % 2];
    observed.weights.assign(observed.object.size(), 1.0);
    observed.weights[i] = 0.0;
    observed.image[i] += cv::Point2d(50.0, -30.0);
    Observation& shorter = problem.views[i].observations[i % 2];
    shorter.object.erase(shorter.object.begin() + static_cast<std::ptrdiff_t>(i));
    shorter.image.erase(shorter.image.begin() + static_cast<std::ptrdiff_t>(i));
  }
  const std::vector<double> apart = DisagreementsOf(unit::Solved(weightless));
  const std::vector<double> expected = DisagreementsOf(unit::Solved(problem));
  for (size_t i = 0; i < apart.size(); ++i) EXPECT_NEAR(apart[i], expected[i], 1e-5) << i;
}

}  // namespace
