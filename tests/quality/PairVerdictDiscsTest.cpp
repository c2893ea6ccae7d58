/// Verdicts on pairs whose image points are centroids of discs, which are not the images of their centres.
#include <gtest/gtest.h>

#include "quality/PairAssessment.h"
#include "solver/PairViews.h"
#include "solver/WideViews.h"

using namespace velmora;

namespace {

constexpr double NOISE = 0.005;  // so sharp that the discs matter

world::Pair WidePair() {
  const std::vector<double> D = {-0.1, 0.01, 0.0, 0.0};
  return world::SideBySidePair(unit::FRAME, 85.0, 0.08, 6.0, D, D);
}

/// Images of centres, or centroids of discs, with the same noise.
unit::PointPairs ObservedBy(const world::Pair& rig, const std::vector<world::Pose>& poses, bool discs) {
  if (!discs) return unit::ObservedByBoth(rig, poses, 1, NOISE);
  const unit::PointPairs without = unit::ObservedByBoth(rig, poses, 1, 0.0);
  unit::PointPairs pairs = unit::ObservedByBoth(rig, poses, 1, NOISE);
  const auto grid = MakeObjectTemplate(unit::GRID, unit::UNIT);
  for (size_t i = 0; i < poses.size(); ++i) {
    const world::Pose right = world::RightPose(rig, poses[i]);
    for (size_t k = 0; k < grid.size(); ++k) {
      pairs.left[i][k] += unit::CentroidOf(rig.left, poses[i], grid[k]) - without.left[i][k];
      pairs.right[i][k] += unit::CentroidOf(rig.right, right, grid[k]) - without.right[i][k];
    }
  }
  return pairs;
}

PairVerdict Assessed(const world::Pair& rig, const unit::PointPairs& pairs, double discRadius) {
  const auto targets = unit::Targets(pairs.left.size());
  const StereoIntrinsics pairIntrinsics = unit::TruePairIntrinsics(rig);
  SparsePairOptions options;
  options.discRadius = discRadius;
  const ExtrinsicsResult result = SolveExtrinsicsSparsely(targets, pairs.left, pairs.right, pairIntrinsics,
                                                          Calibrator::MODEL_CLASSIC, options);
  return AssessPair({targets, pairs.left, pairs.right, Calibrator::MODEL_CLASSIC, false, discRadius},
                    pairIntrinsics, result.R, result.T);
}

TEST(PairVerdictWithDiscs, IsThatOfTheImagesOfTheirCentres) {
  const world::Pair rig = WidePair();
  const auto poses = world::SampleRigViews(rig, 12, 3, unit::Paper());
  const PairVerdict centres = Assessed(rig, ObservedBy(rig, poses, false), 0.0);
  const PairVerdict discs = Assessed(rig, ObservedBy(rig, poses, true), unit::DISC);
  const auto expectNear = [](const PairVerdict::Deviations& own, const PairVerdict::Deviations& expected) {
    EXPECT_NEAR(own.rotation, expected.rotation, 0.05 * expected.rotation);
    EXPECT_NEAR(own.baseline, expected.baseline, 0.05 * expected.baseline);
    EXPECT_NEAR(own.direction, expected.direction, 0.05 * expected.direction);
  };
  expectNear(discs.formal, centres.formal);
  expectNear(discs.jackknife, centres.jackknife);
  expectNear(discs.withLenses, centres.withLenses);
  EXPECT_NEAR(discs.disagreement, centres.disagreement, 0.05 * centres.disagreement);
  EXPECT_EQ(discs.ToString(), centres.ToString());
}

TEST(PairVerdictWithDiscs, TakesWhatIsNotCorrectedForMoreNoise) {
  const world::Pair rig = WidePair();
  const auto poses = world::SampleRigViews(rig, 12, 3, unit::Paper());
  const unit::PointPairs pairs = ObservedBy(rig, poses, true);
  const PairVerdict corrected = Assessed(rig, pairs, unit::DISC);
  const PairVerdict raw = Assessed(rig, pairs, 0.0);
  EXPECT_GT(raw.formal.rotation, 2.0 * corrected.formal.rotation);
  EXPECT_GT(raw.disagreement, 3.0 * corrected.disagreement);
}

}  // namespace
