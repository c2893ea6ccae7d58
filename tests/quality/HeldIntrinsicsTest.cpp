/// What a pair's deviations hold of intrinsics that were known only roughly.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/calib3d.hpp>

#include "Views.h"
#include "quality/Assessment.h"
#include "quality/PairAssessment.h"
#include "solver/PairViews.h"

using namespace velmora;

namespace {

constexpr int CLASSIC = Calibrator::MODEL_CLASSIC;
constexpr double NOISE = 0.1;

struct Alone {
  SparseResult result;
  CalibrationVerdict verdict;
};

Alone CalibratedAlone(const world::Camera& camera, int views, std::uint64_t seed) {
  cv::RNG random(seed + 1);
  std::vector<std::vector<cv::Point2d>> images;
  for (const world::Pose& pose : world::SampleViews(camera, views, seed, unit::Paper())) {
    images.push_back(world::TrueCentres(camera.lens, unit::Paper(), pose));
    for (cv::Point2d& point : images.back())
      point += cv::Point2d(random.gaussian(NOISE), random.gaussian(NOISE));
  }
  const auto targets = unit::Targets(images.size());
  Alone alone;
  alone.result = SolveIntrinsicsSparsely(targets, images, unit::FRAME, CLASSIC);
  alone.verdict = AssessIntrinsics(targets, images, unit::FRAME, alone.result);
  return alone;
}

struct Sums {
  double told = 0.0;
  double toldBeside = 0.0;
  double truth = 0.0;
};

double SquareOf(double value) {
  return value * value;
}

/// Of the rotation's and the direction's squares, with intrinsics from other views of each camera alone.
Sums SumsOver(int sets, int views) {
  const world::Pair rig = unit::RigFor(CLASSIC);
  Sums sums;
  for (int set = 1; set <= sets; ++set) {
    const auto seed = static_cast<std::uint64_t>(set);
    const Alone left = CalibratedAlone(rig.left, views, seed);
    const Alone right = CalibratedAlone(rig.right, views, seed + 1000);
    const auto pairs = unit::Observed(rig, 12, seed + 2000, NOISE);
    const StereoIntrinsics held{left.result.K, unit::Padded(left.result.D), right.result.K,
                                unit::Padded(right.result.D)};
    const ExtrinsicsResult result = unit::WithFixedIntrinsics(pairs, held, CLASSIC);
    PairRecords records{unit::Targets(pairs.left.size()), pairs.left, pairs.right, CLASSIC, false};
    const PairVerdict beside = AssessPair(records, held, result.R, result.T);
    records.left = {left.verdict.covariance, left.verdict.jackknifeCovariance};
    records.right = {right.verdict.covariance, right.verdict.jackknifeCovariance};
    const PairVerdict with = AssessPair(records, held, result.R, result.T);
    EXPECT_FALSE(beside.lensesKnown);
    EXPECT_TRUE(with.lensesKnown);
    const cv::Matx33d turn = cv::Matx33d(result.R) * cv::Matx33d(rig.R).t();
    cv::Vec3d axis;
    cv::Rodrigues(turn, axis);
    sums.truth += SquareOf(cv::norm(axis) * 180.0 / CV_PI);
    sums.told += SquareOf(with.formal.rotation);
    sums.toldBeside += SquareOf(beside.formal.rotation);
    EXPECT_GT(with.jackknife.rotation, beside.jackknife.rotation);
    EXPECT_GE(with.formal.direction, beside.formal.direction);
  }
  return sums;
}

TEST(HeldIntrinsics, AreInTheDeviationsByHowWellTheyAreKnown) {
  const Sums sums = SumsOver(24, 20);
  EXPECT_NEAR(std::sqrt(sums.told / sums.truth), 1.0, 0.3);
  // Without them the deviations are far too small.
  EXPECT_LT(std::sqrt(sums.toldBeside / sums.truth), 0.4);
}

TEST(HeldIntrinsics, ThatAreLittleKnownMakeAPairLittleKnown) {
  const Sums few = SumsOver(4, 6);
  const Sums many = SumsOver(4, 40);
  EXPECT_GT(few.told, 2.0 * many.told);
}

TEST(HeldIntrinsics, OfASmallerModelAreInTheDeviations) {
  const world::Pair rig = unit::RigFor(CLASSIC);
  const Alone left = CalibratedAlone(rig.left, 20, 1);
  const auto pairs = unit::Observed(rig, 12, 5, NOISE);
  const StereoIntrinsics held = unit::TruePairIntrinsics(rig);
  const int rational = Calibrator::MODEL_RATIONAL;
  const ExtrinsicsResult result = unit::WithFixedIntrinsics(pairs, held, rational);
  PairRecords records{unit::Targets(pairs.left.size()), pairs.left, pairs.right, rational, false};
  const PairVerdict beside = AssessPair(records, held, result.R, result.T);
  records.left = records.right = {left.verdict.covariance, left.verdict.jackknifeCovariance};
  const PairVerdict with = AssessPair(records, held, result.R, result.T);
  EXPECT_GT(with.formal.rotation, 1.5 * beside.formal.rotation);
}

TEST(HeldIntrinsics, AreNoneWhereTheyWereRefined) {
  const world::Pair rig = unit::RigFor(CLASSIC);
  const Alone left = CalibratedAlone(rig.left, 20, 1);
  const auto pairs = unit::Observed(rig, 12, 5, NOISE);
  const ExtrinsicsResult result = unit::Refined(pairs, unit::EachAlone(pairs, CLASSIC), CLASSIC);
  PairRecords records{unit::Targets(pairs.left.size()), pairs.left, pairs.right, CLASSIC, true};
  const PairVerdict own = AssessPair(records, result.refined, result.R, result.T);
  records.left = records.right = {left.verdict.covariance, left.verdict.jackknifeCovariance};
  const PairVerdict same = AssessPair(records, result.refined, result.R, result.T);
  EXPECT_FALSE(same.lensesKnown);
  EXPECT_EQ(same.ToJson(), own.ToJson());
  // What is told of refined intrinsics is the whole of it.
  EXPECT_EQ(own.formal.rotation, own.withLenses.rotation);
  EXPECT_EQ(own.formal.direction, own.withLenses.direction);
}

TEST(HeldIntrinsics, OfOneCameraAloneAreNotCalledKnown) {
  const world::Pair rig = unit::RigFor(CLASSIC);
  const Alone left = CalibratedAlone(rig.left, 20, 1);
  const auto pairs = unit::Observed(rig, 12, 5, NOISE);
  const StereoIntrinsics held = unit::TruePairIntrinsics(rig);
  const ExtrinsicsResult result = unit::WithFixedIntrinsics(pairs, held, CLASSIC);
  PairRecords records{unit::Targets(pairs.left.size()), pairs.left, pairs.right, CLASSIC, false};
  records.left.formal = left.verdict.covariance;
  EXPECT_FALSE(AssessPair(records, held, result.R, result.T).lensesKnown);
}

}  // namespace
