/// That what changes between the views is found, and nothing where all stays as it was.
#include "quality/Changes.h"

#include <gtest/gtest.h>

#include "Views.h"
#include "quality/RigEffect.h"
#include "quality/RigSolutions.h"
#include "quality/SystematicErrors.h"

using namespace velmora;

namespace {

using Kind = Change::Kind;

const std::vector<Kind> ALL = {Kind::Step, Kind::Drift, Kind::Distance, Kind::Mixture};

/// Views of a camera whose focal length grows by a share, and whose principal point moves, by as much of both
/// as each view has.
Solution Observed(const std::vector<double>& shares, double focal, double cx, std::uint64_t seed) {
  const world::Rig rig = {{world::RigCamera{unit::DistortedCamera()}}};
  const auto poses = world::SampleViews(rig.cameras[0], static_cast<int>(shares.size()), seed,
                                        world::Sheet(unit::GRID, static_cast<double>(unit::UNIT)));
  CalibrationProblem problem;
  for (size_t i = 0; i < shares.size(); ++i) {
    world::Rig own = rig;
    cv::Matx33d K = rig.cameras[0].lens.K();
    K(0, 0) *= 1.0 + shares[i] * focal;
    K(1, 1) *= 1.0 + shares[i] * focal;
    K(0, 2) += shares[i] * cx;
    own.cameras[0].lens = world::Lens(K, rig.cameras[0].lens.D());
    CalibrationProblem observed =
        unit::ObservedByRig(own, CLASSIC_PARAMETERS, unit::FlatShape(), {poses[i]}, 100 * seed + i, 0.1);
    if (i == 0) problem = observed;
    if (i > 0) problem.views.push_back(observed.views.front());
  }
  problem.rig = unit::TrueRig(rig, CLASSIC_PARAMETERS);
  return unit::Solved(problem);
}

Change Largest(const Solution& solution) {
  return LargestChangeOf(solution, ChangingLens(solution, 0), 0, ALL);
}

std::vector<double> StepAfter(size_t last, size_t views) {
  std::vector<double> shares(views, 0.0);
  std::fill(shares.begin() + static_cast<std::ptrdiff_t>(last) + 1, shares.end(), 1.0);
  return shares;
}

TEST(ChangedZoom, IsFoundWhereItWasAndAsLargeAsItIs) {
  for (std::uint64_t seed = 1; seed <= 4; ++seed) {
    const Change change = Largest(Observed(StepAfter(9, 20), 0.02, 0.0, seed));
    ASSERT_TRUE(change.effect.significant) << seed;
    EXPECT_EQ(change.kind, Kind::Step) << seed;
    EXPECT_NEAR(static_cast<double>(change.last), 9.0, 1.0) << seed;
    EXPECT_NEAR(change.effect.values(0), 0.02, 0.003) << seed;
  }
}

TEST(ChangedZoom, MovesTheLensFromBothOfItsStates) {
  const Solution solution = Observed(StepAfter(9, 20), 0.02, 0.0, 2);
  const Change change = Largest(solution);
  ASSERT_TRUE(change.effect.significant);
  const double found = solution.rig.cameras[0].intrinsics.values[FX];
  const double first = unit::DistortedCamera().lens.K()(0, 0);
  EXPECT_NEAR(found + change.before(FX), first, 0.2 * std::abs(found - first));
  EXPECT_NEAR(found + change.after(FX), 1.02 * first, 0.2 * std::abs(found - 1.02 * first));
}

TEST(ChangedZoom, IsToldFromADrift) {
  std::vector<double> shares;
  for (int i = 0; i < 20; ++i) shares.push_back(i / 19.0);
  int drifts = 0;
  for (std::uint64_t seed = 1; seed <= 4; ++seed) {
    const Change change = Largest(Observed(shares, 0.03, 0.0, seed));
    ASSERT_TRUE(change.effect.significant) << seed;
    drifts += change.kind == Kind::Drift ? 1 : 0;
    if (change.kind == Kind::Drift) {
      EXPECT_NEAR(change.effect.values(0), 0.03, 0.006) << seed;
    }
  }
  EXPECT_GE(drifts, 3);
}

TEST(ChangedPrincipalPoint, IsFound) {
  for (std::uint64_t seed = 1; seed <= 3; ++seed) {
    const Change change = Largest(Observed(StepAfter(7, 20), 0.0, 8.0, seed));
    ASSERT_TRUE(change.effect.significant) << seed;
    EXPECT_EQ(change.kind, Kind::Step) << seed;
    EXPECT_NEAR(change.effect.values(1), 8.0, 2.0) << seed;
    EXPECT_NEAR(change.effect.values(0), 0.0, 0.005) << seed;
  }
}

TEST(OtherSettings, AreFoundAmongTheViews) {
  std::vector<double> shares(20, 0.0);
  shares[3] = shares[8] = shares[9] = shares[15] = 1.0;
  for (std::uint64_t seed = 1; seed <= 3; ++seed) {
    const Change change = Largest(Observed(shares, 0.09, 0.0, seed));
    ASSERT_TRUE(change.effect.significant) << seed;
    EXPECT_EQ(change.kind, Kind::Mixture) << seed;
    EXPECT_GE(change.apart.size(), 2U);
    for (const size_t view : change.apart) EXPECT_EQ(shares[view], 1.0) << seed << " " << view;
  }
}

#if defined(__SANITIZE_THREAD__)
constexpr std::uint64_t CLEAN_SETS = 2;
#else
constexpr std::uint64_t CLEAN_SETS = 120;
#endif

TEST(ConstantCameras, AreNeverSaidToHaveChanged) {
  for (std::uint64_t seed = 1; seed <= CLEAN_SETS; ++seed) {
    const Solution solution = Observed(std::vector<double>(seed % 2 == 0 ? 20 : 9, 0.0), 0.0, 0.0, seed);
    EXPECT_TRUE(ChangesOf(solution, ChangingLens(solution, 0), 0, ALL).empty()) << seed;
  }
}

TEST(Changes, OfTooFewViewsAreNone) {
  const Solution solution = Observed(std::vector<double>(4, 0.0), 0.0, 0.0, 1);
  EXPECT_EQ(Largest(solution).effect.values.size(), 0);
  EXPECT_EQ(ChangingMount(solution, 0).size(), 0);
}

/// A pair of which the right camera is turned and moved after some of the views.
Solution Knocked(double degrees, std::uint64_t seed) {
  const world::Rig rig = unit::ClassicPair();
  world::Rig knocked = rig;
  const double angle = degrees * CV_PI / 180.0;
  knocked.cameras[1].R = RotationOf({0.0, angle, 0.0}) * rig.cameras[1].R;
  const auto poses =
      world::SampleRigViews(rig, 14, seed, world::Sheet(unit::GRID, static_cast<double>(unit::UNIT)));
  CalibrationProblem problem =
      unit::ObservedByRig(rig, CLASSIC_PARAMETERS, unit::FlatShape(), poses, seed, 0.1);
  const CalibrationProblem later =
      unit::ObservedByRig(knocked, CLASSIC_PARAMETERS, unit::FlatShape(), poses, seed + 50, 0.1);
  for (size_t i = 6; i < 14; ++i) problem.views[i] = later.views[i];
  return unit::Solved(problem);
}

TEST(ChangedMount, IsFoundWhereItWas) {
  for (std::uint64_t seed = 1; seed <= 3; ++seed) {
    const Solution solution = Knocked(0.6, seed);
    const Change change = LargestChangeOf(solution, ChangingMount(solution, 1), 1, {Kind::Step});
    ASSERT_TRUE(change.effect.significant) << seed;
    EXPECT_EQ(change.last, 5U) << seed;
    EXPECT_NEAR(change.effect.values.head<3>().norm() * 180.0 / CV_PI, 0.6, 0.15) << seed;
    const SheetEffect effect = EffectOnRig(solution, {"the left camera", "the right camera"});
    EXPECT_EQ(effect.reason.find("The right camera moved in the rig by 0."), 0U) << effect.reason;
    EXPECT_NE(effect.reason.find("between view 5 and 6"), std::string::npos) << effect.reason;
  }
}

TEST(ChangedMount, IsNotSeenInRigsThatStayAsTheyAre) {
  for (std::uint64_t seed = 1; seed <= 10; ++seed) {
    const Solution solution = Knocked(0.0, seed);
    EXPECT_TRUE(ChangesOf(solution, ChangingMount(solution, 1), 1, {Kind::Step, Kind::Drift}).empty())
        << seed;
    EXPECT_EQ(EffectOnRig(solution, {"the left camera", "the right camera"}).reason, "") << seed;
  }
}

}  // namespace
