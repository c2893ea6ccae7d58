/// Cameras and rigs calibrated from spoilt views: what is rejected is what was spoilt, and the truth is
/// reached.
#include "solver/CameraCalibration.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "solver/RigProblems.h"
#include "solver/SpoiltViews.h"

using namespace velmora;

namespace {

class SpoiltShare : public ::testing::TestWithParam<double> {
 protected:
  /// All that was spoilt is rejected, and of a thousand other points one at the most.
  static void ExpectWhatWasSpoiltRejected(const Solution& solution, const unit::Spoilt& spoilt) {
    EXPECT_EQ(unit::ImagesOf(solution.rejected), spoilt.images);
    const unit::PointNumbers points = unit::PointsOf(solution.rejected);
    EXPECT_TRUE(std::includes(points.begin(), points.end(), spoilt.points.begin(), spoilt.points.end()));
    EXPECT_LE(static_cast<double>(points.size()),
              static_cast<double>(spoilt.points.size()) + std::max(1.0, 0.001 * CountOf(spoilt.views)));
    EXPECT_FALSE(solution.tooFewAgree);
    EXPECT_TRUE(solution.robust);
  }

  static void ExpectIntrinsicsNear(const Intrinsics& own, const Intrinsics& truth) {
    EXPECT_NEAR(own.values[FX], truth.values[FX], 2.0);
    EXPECT_NEAR(own.values[FY], truth.values[FY], 2.0);
    EXPECT_NEAR(own.values[CX], truth.values[CX], 2.0);
    EXPECT_NEAR(own.values[CY], truth.values[CY], 2.0);
    EXPECT_NEAR(own.values[K1], truth.values[K1], 0.02);
  }
};

TEST_P(SpoiltShare, OfOneCameraIsRejected) {
  for (const std::uint64_t seed : {1U, 2U, 3U}) {
    SCOPED_TRACE(seed);
    const CalibrationProblem truth = unit::TrueProblem(unit::DistortedCamera(), 20, 0.1, seed);
    const unit::Spoilt spoilt = unit::Spoil(truth.views, GetParam(), {{3, 0}, {8, 0}, {15, 0}}, seed);
    const Solution solution = solver::CalibrateCamera(spoilt.views, unit::FRAME, true, {});
    ExpectWhatWasSpoiltRejected(solution, spoilt);
    EXPECT_EQ(solution.kept.size(), 17U);
    ExpectIntrinsicsNear(solution.rig.cameras[0].intrinsics, truth.rig.cameras[0].intrinsics);
    EXPECT_NEAR(std::sqrt(NoiseVariance(solution)), 0.1, 0.01);
  }
}

TEST_P(SpoiltShare, OfAPairIsRejected) {
  for (const std::uint64_t seed : {1U, 2U}) {
    for (const bool intrinsics : {false, true}) {
      SCOPED_TRACE(std::to_string(seed) + (intrinsics ? " refined" : " known"));
      const CalibrationProblem truth = unit::TrueProblem(unit::RowOf(2), 20, 0.1, seed);
      // Both images of one view are wrong, and one image of two others.
      const unit::Spoilt spoilt =
          unit::Spoil(truth.views, GetParam(), {{3, 0}, {8, 1}, {15, 0}, {15, 1}}, seed);
      CalibrationProblem start = truth;
      start.views = spoilt.views;
      start.estimated.intrinsics = intrinsics;
      const double step[] = {0.01, -0.02, 0.01, 0.003, 0.002, -0.004};
      start.rig.cameras[1].cameraFromRig = Retract(start.rig.cameras[1].cameraFromRig, step);
      const Solution solution = solver::CalibrateRig(start, true, {});
      ExpectWhatWasSpoiltRejected(solution, spoilt);
      EXPECT_EQ(solution.kept.size(), 19U);  // the view of which no image is left
      const RigidTransform& right = solution.rig.cameras[1].cameraFromRig;
      EXPECT_LT(unit::AngleBetween(right.R, truth.rig.cameras[1].cameraFromRig.R), intrinsics ? 0.2 : 0.02);
      EXPECT_LT(cv::norm(right.t - truth.rig.cameras[1].cameraFromRig.t), intrinsics ? 0.001 : 0.0002);
      for (size_t i = 0; i < 2; ++i) {
        ExpectIntrinsicsNear(solution.rig.cameras[i].intrinsics, truth.rig.cameras[i].intrinsics);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Shares, SpoiltShare, ::testing::Values(0.0, 0.1, 0.2, 0.3, 0.4));

TEST(CameraCalibration, TakesAllPointsUnlessItIsToBeRobust) {
  const CalibrationProblem truth = unit::TrueProblem(unit::RowOf(2), 10, 0.1, 4);
  const unit::Spoilt spoilt = unit::Spoil(truth.views, 0.1, {}, 4);
  CalibrationProblem start = truth;
  start.views = spoilt.views;
  start.estimated.intrinsics = false;
  const Solution solution = solver::CalibrateRig(start, false, {});
  EXPECT_TRUE(solution.rejected.empty());
  EXPECT_FALSE(solution.robust);
  EXPECT_EQ(solution.kept.size(), 10U);
  EXPECT_GT(RmsOf(solution), 3.0);
  EXPECT_TRUE(solver::SelectedFrom(spoilt.views, unit::FRAME, false, {}).rejected.empty());
}

TEST(CameraCalibration, OfCleanViewsIsTheSameWhetherRobustOrNot) {
  const CalibrationProblem truth = unit::TrueProblem(unit::DistortedCamera(), 12, 0.1, 6);
  const Solution robust = solver::CalibrateCamera(truth.views, unit::FRAME, true, {});
  ASSERT_TRUE(robust.rejected.empty());
  const Solution plain = solver::CalibrateCamera(truth.views, unit::FRAME, false, {});
  EXPECT_EQ(robust.rig.cameras[0].intrinsics.values, plain.rig.cameras[0].intrinsics.values);
  EXPECT_EQ(robust.cost, plain.cost);
}

/// Expects a robust computation to make no call after the one at which its listener gives up.
template <typename Compute>
void ExpectNoCallAfterTheLast(int last, const Compute& compute) {
  SCOPED_TRACE(last);
  int calls = 0;
  solver::BundleOptions options;
  options.parameters = FULL_PARAMETERS;
  options.progress = [&](int, double) { return ++calls != last; };
  const Solution solution = compute(options);
  EXPECT_EQ(calls, last);
  EXPECT_EQ(solution.iterations, 0);  // nothing follows the round that was given up
}

TEST(CameraCalibration, DoesNotAskAListenerAgainThatGaveUp) {
  const CalibrationProblem one = unit::TrueProblem(unit::DistortedCamera(), 8, 0.1, 6);
  const unit::Spoilt oneSpoilt = unit::Spoil(one.views, 0.1, {{3, 0}}, 6);
  CalibrationProblem pair = unit::TrueProblem(unit::RowOf(2), 8, 0.1, 6);
  pair.views = unit::Spoil(pair.views, 0.1, {{3, 0}}, 6).views;
  for (const int last : {1, 5, 12, 20}) {
    ExpectNoCallAfterTheLast(last, [&](const solver::BundleOptions& options) {
      return solver::CalibrateCamera(oneSpoilt.views, unit::FRAME, true, options);
    });
    ExpectNoCallAfterTheLast(last, [&](const solver::BundleOptions& options) {
      return solver::CalibrateRig(pair, true, options);
    });
  }
}

TEST(CameraCalibration, NotesTheDiscsThatItCorrectedFor) {
  const CalibrationProblem truth = unit::TrueProblem(unit::DistortedCamera(), 6, 0.1, 6);
  solver::BundleOptions options;
  options.discRadius = 0.008;
  const Solution solution = solver::CalibrateCamera(truth.views, unit::FRAME, false, options);
  EXPECT_EQ(solution.discRadius, 0.008);
  EXPECT_NE(solution.views[0].observations[0].image, truth.views[0].observations[0].image);
}

}  // namespace
