/// What residuals tell of the sheet and of the lens, beside what was done to them.
#include "quality/OmittedEffects.h"

#include <gtest/gtest.h>

#include "Calibrator.h"
#include "Views.h"
#include "model/TargetGeometry.h"
#include "solver/OpenCvMatrices.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

using Target = std::vector<cv::Point3d>;

Target Flat() {
  return MakeObjectTemplate(unit::GRID, unit::UNIT);
}

/// Depths a x^2 + b x y + c y^2 about the middle.
Target Bent(double a, double b, double c) {
  Target target = Flat();
  cv::Point3d middle;
  for (const cv::Point3d& point : target) middle += point * (1.0 / static_cast<double>(target.size()));
  for (cv::Point3d& point : target) {
    const cv::Point3d p = point - middle;
    point.z = a * p.x * p.x + b * p.x * p.y + c * p.y * p.y;
  }
  return target;
}

/// Images of what the sheet really is like.
unit::PointLists Observed(const world::Lens& lens, const Target& target, int count, std::uint64_t seed,
                          double noise) {
  const world::Camera camera = {unit::FRAME, lens};
  const world::Sheet sheet(unit::GRID, static_cast<double>(unit::UNIT));
  cv::RNG random(seed + 1);
  unit::PointLists views;
  for (const world::Pose& pose : world::SampleViews(camera, count, seed, sheet)) {
    views.push_back(world::ProjectPoints(lens, target, pose));
    for (cv::Point2d& point : views.back())
      point += cv::Point2d(random.gaussian(noise), random.gaussian(noise));
  }
  return views;
}

unit::PointLists Observed(const Target& target, int count, std::uint64_t seed, double noise = 0.1) {
  return Observed(unit::DistortedCamera().lens, target, count, seed, noise);
}

struct Computed {
  SparseResult result;
  Solution solution;
};

/// As if the sheet were flat and in proportion.
Computed Compute(const unit::PointLists& views, int model = Calibrator::MODEL_CLASSIC) {
  const std::vector<Target> targets(views.size(), Flat());
  Computed computed;
  computed.result = SolveIntrinsicsSparsely(targets, views, unit::FRAME, model);
  computed.solution =
      solver::SolutionFrom(solver::TargetOf(targets, views), computed.result, unit::FRAME, 0.0);
  return computed;
}

TEST(OmittedBend, IsMeasured) {
  const Computed computed = Compute(Observed(Bent(0.05, -0.03, -0.08), 12, 1, 0.01));
  const OmittedEffect bend = OmittedBend(computed.solution);
  ASSERT_TRUE(bend.significant);
  EXPECT_NEAR(bend.values(0), 0.05, 0.005);
  EXPECT_NEAR(bend.values(1), -0.03, 0.005);
  EXPECT_NEAR(bend.values(2), -0.08, 0.005);
}

TEST(OmittedBend, HasTheDepthOfTheSheet) {
  const Target bent = Bent(0.0, 0.0, 0.08);
  const double half = 5.0 * static_cast<double>(unit::UNIT);
  const Computed computed = Compute(Observed(bent, 12, 2, 0.01));
  const OmittedEffect bend = OmittedBend(computed.solution);
  EXPECT_NEAR(DepthOfBend(bend, computed.solution.views.front().observations.front().object),
              0.08 * half * half, 0.00005);
}

TEST(OmittedBend, TellsHowFarTheLensIsOff) {
  const auto views = Observed(Bent(0.0, 0.0, 0.05), 12, 3, 0.01);
  const Computed computed = Compute(views);
  const Computed flat = Compute(Observed(Flat(), 12, 3, 0.01));
  const OmittedEffect bend = OmittedBend(computed.solution);
  for (int i = 0; i < 2; ++i) {
    const double off = flat.result.K.at<double>(i, i) - computed.result.K.at<double>(i, i);
    EXPECT_GT(std::abs(off), 0.5);
    EXPECT_NEAR(bend.shift(i), off, 0.1 * std::abs(off)) << i;
  }
}

TEST(OmittedProportions, AreMeasured) {
  Target target = Flat();
  for (cv::Point3d& point : target) {
    point.x += 0.002 * point.y;
    point.y *= 1.005;
  }
  const Computed computed = Compute(Observed(target, 12, 4, 0.01));
  const OmittedEffect proportions = OmittedProportions(computed.solution);
  ASSERT_TRUE(proportions.significant);
  EXPECT_NEAR(proportions.values(0), 0.005, 0.0005);
  EXPECT_NEAR(proportions.values(1), 0.002, 0.0005);
  EXPECT_GT(proportions.costReduction, OmittedBend(computed.solution).costReduction);
}

TEST(OmittedLensTerms, AreSeenInALensThatTheModelDoesNotHold) {
  const world::Camera wide = world::CameraFromFieldOfView(
      unit::FRAME, 90.0, {4.0 / 15.0, 0.0, 0.0008, -0.0006, 0.0, 3.0 / 5.0, 0.0, 0.0});
  const auto views = Observed(wide.lens, Flat(), 20, 5, 0.05);
  const OmittedEffect classic = OmittedLensTerms(Compute(views).solution, 0);
  EXPECT_TRUE(classic.significant);
  EXPECT_EQ(classic.shift.size(), FULL_PARAMETERS);
  EXPECT_FALSE(OmittedLensTerms(Compute(views, Calibrator::MODEL_RATIONAL).solution, 0).significant);
  EXPECT_EQ(OmittedLensTerms(Compute(views, Calibrator::MODEL_FULL).solution, 0).values.size(), 0);
}

TEST(OmittedEffects, AreNotSeenInNoise) {
  for (const int model : {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL}) {
    for (std::uint64_t seed = 1; seed <= 30; ++seed) {
      const Solution solution =
          Compute(Observed(Flat(), 6 + static_cast<int>(seed) % 10, seed), model).solution;
      EXPECT_FALSE(OmittedBend(solution).significant) << seed;
      EXPECT_FALSE(OmittedProportions(solution).significant) << seed;
      EXPECT_FALSE(OmittedLensTerms(solution, 0).significant) << seed;
    }
  }
}

TEST(OmittedEffects, AreNotSeenInTheDefaultSolversResultsOfNoise) {
  for (const int model : {Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL}) {
    for (const std::uint64_t seed : {1U, 2U, 3U}) {
      const auto views = Observed(Flat(), 10, seed);
      const std::vector<Target> targets(views.size(), Flat());
      SparseResult result;
      static_cast<IntrinsicsResult&>(result) = SolveIntrinsics(targets, views, unit::FRAME, model);
      const Solution solution =
          solver::SolutionFrom(solver::TargetOf(targets, views), result, unit::FRAME, 0.0);
      EXPECT_FALSE(OmittedBend(solution).significant) << model << " " << seed;
      EXPECT_FALSE(OmittedProportions(solution).significant) << model << " " << seed;
      EXPECT_FALSE(OmittedLensTerms(solution, 0).significant) << model << " " << seed;
    }
  }
}

TEST(OmittedEffects, CountAsMuchAsTheyAreMoreThanNoise) {
  OmittedEffect effect;
  effect.values = Eigen::VectorXd::Zero(9);
  effect.costReduction = 40.0;
  EXPECT_EQ(effect.Excess(), 0.0);
  effect.significant = true;
  EXPECT_EQ(effect.Excess(), 31.0);
}

TEST(OmittedEffects, TakeOffAsMuchOfNoiseAsTheirNumberOfParameters) {
  double bend = 0.0;
  double proportions = 0.0;
  constexpr int RUNS = 60;
  for (std::uint64_t seed = 1; seed <= RUNS; ++seed) {
    const Solution solution = Compute(Observed(Flat(), 12, seed)).solution;
    bend += OmittedBend(solution).costReduction / RUNS;
    proportions += OmittedProportions(solution).costReduction / RUNS;
  }
  // Means of chi-squared numbers, their own standard deviations 0.32 and 0.26.
  EXPECT_NEAR(bend, 3.0, 1.0);
  EXPECT_NEAR(proportions, 2.0, 0.8);
}

TEST(OmittedEffects, ArePassedOverWhereNothingCanBeSolved) {
  EXPECT_FALSE(OmittedBend(Solution()).significant);
  EXPECT_EQ(OmittedBend(Solution()).shift.size(), 0);
}

}  // namespace
