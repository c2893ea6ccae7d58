/// How the right camera stands to the left one: the same numbers as the solver's own, and what they must
/// satisfy.
#include "solver/OpenCvExtrinsics.h"

#include <gtest/gtest.h>

#include <opencv2/calib3d.hpp>

#include "Calibrator.h"
#include "Matchers.h"
#include "model/TargetGeometry.h"
#include "unit/Scopes.h"
#include "unit/StereoCollection.h"

using namespace velmora;

namespace {

const char* const LEFT_WARNING =
    "WARN  : The classic model ignores the distortion coefficients of the left camera beyond the fifth.\n";
const char* const RIGHT_WARNING =
    "WARN  : The classic model ignores the distortion coefficients of the right camera beyond the fifth.\n";

class Extrinsics : public ::testing::Test {
 protected:
  static std::vector<std::vector<cv::Point3d>> Targets(size_t count) {
    return std::vector<std::vector<cv::Point3d>>(count, MakeObjectTemplate(unit::GRID, unit::UNIT));
  }

  ExtrinsicsResult Solve(int model) {
    return SolveExtrinsics(Targets(pairs_.left.size()), pairs_.left, pairs_.right, intrinsics_, unit::FRAME,
                           model);
  }

  /// What the engine prints while it solves.
  std::string PrintedAt(int model) {
    return unit::PrintedBy([&] { Solve(model); });
  }

  void KeepOnlyFive(cv::Mat& D) {
    D = D.clone();
    D.colRange(5, D.cols).setTo(0.0);
  }

  static StereoIntrinsics TrueIntrinsics() {
    const auto left = unit::IntrinsicsOf(unit::PairOfCameras().left);
    const auto right = unit::IntrinsicsOf(unit::PairOfCameras().right);
    return {left.K, left.D, right.K, right.D};
  }

  unit::PointPairs pairs_ = unit::NoisyPairs(6);
  StereoIntrinsics intrinsics_ = TrueIntrinsics();
};

void ExpectSameSolution(const ExtrinsicsResult& result, const unit::DirectStereoSolution& direct) {
  EXPECT_EQ(result.rms, direct.rms);
  EXPECT_SAME_MAT(result.R, direct.R);
  EXPECT_SAME_MAT(result.T, direct.T);
  EXPECT_SAME_MAT(result.E, direct.E);
  EXPECT_SAME_MAT(result.F, direct.F);
}

TEST_F(Extrinsics, AreTheSolversBitForBitWithEachModel) {
  const unit::ScopedLogLevel quiet(1);
  ExpectSameSolution(Solve(Calibrator::MODEL_CLASSIC), unit::SolveDirectly(pairs_, unit::CLASSIC_FLAGS));
  ExpectSameSolution(Solve(Calibrator::MODEL_RATIONAL), unit::SolveDirectly(pairs_, unit::RATIONAL_FLAGS));
  ExpectSameSolution(Solve(Calibrator::MODEL_FULL), unit::SolveDirectly(pairs_, unit::FULL_FLAGS));
}

TEST_F(Extrinsics, AreOtherOnesWithTheClassicModel) {
  const unit::ScopedLogLevel quiet(1);
  const ExtrinsicsResult classic = Solve(Calibrator::MODEL_CLASSIC);
  const ExtrinsicsResult rational = Solve(Calibrator::MODEL_RATIONAL);
  // The cameras have coefficients that the classic model does not know.
  EXPECT_GT(classic.rms, 1.1 * rational.rms);
  EXPECT_FALSE(support::SameMat(classic.T, rational.T));
}

TEST_F(Extrinsics, AreThoseOfTheClassicModelForUnknownOnes) {
  const unit::ScopedLogLevel quiet(1);
  const auto direct = unit::SolveDirectly(pairs_, unit::CLASSIC_FLAGS);
  for (const int model : {0, 15, -1, 40}) ExpectSameSolution(Solve(model), direct);
}

TEST_F(Extrinsics, AreNearTheTruth) {
  const ExtrinsicsResult result = Solve(Calibrator::MODEL_FULL);
  const world::Pair& rig = unit::PairOfCameras();
  EXPECT_MAT_NEAR(result.R, cv::Mat(rig.R), 2e-3);
  EXPECT_MAT_NEAR(result.T, cv::Mat(rig.T), 5e-4);
  EXPECT_GT(result.rms, 0.02);
  EXPECT_LT(result.rms, 0.15);
}

TEST_F(Extrinsics, ConsistOfMatricesThatAgree) {
  const ExtrinsicsResult result = Solve(Calibrator::MODEL_RATIONAL);
  ASSERT_EQ(result.R.size(), cv::Size(3, 3));
  ASSERT_EQ(result.T.size(), cv::Size(1, 3));
  ASSERT_EQ(result.E.size(), cv::Size(3, 3));
  ASSERT_EQ(result.F.size(), cv::Size(3, 3));
  for (const cv::Mat& matrix : {result.R, result.T, result.E, result.F}) EXPECT_EQ(matrix.type(), CV_64F);

  const cv::Matx33d R = result.R;
  EXPECT_MAT_NEAR(cv::Mat(R * R.t()), cv::Mat(cv::Matx33d::eye()), 1e-12);
  EXPECT_NEAR(cv::determinant(R), 1.0, 1e-12);

  const cv::Vec3d T = result.T;
  const cv::Matx33d cross(0, -T[2], T[1], T[2], 0, -T[0], -T[1], T[0], 0);
  EXPECT_MAT_NEAR(result.E, cv::Mat(cross * R), 1e-12);

  const cv::Matx33d K = intrinsics_.K;
  const cv::Matx33d KRight = intrinsics_.KRight;
  cv::Mat F(KRight.inv().t() * cv::Matx33d(result.E) * K.inv());
  F *= 1.0 / cv::norm(F);
  cv::Mat actual = result.F / cv::norm(result.F);
  if (actual.dot(F) < 0) actual = -actual;
  EXPECT_MAT_NEAR(actual, F, 1e-9);
}

TEST_F(Extrinsics, LeaveTheIntrinsicsAsTheyAre) {
  const unit::ScopedLogLevel quiet(1);
  const StereoIntrinsics before = TrueIntrinsics();
  for (const int model : {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL}) {
    SCOPED_TRACE(model);
    Solve(model);
    EXPECT_SAME_MAT(intrinsics_.K, before.K);
    EXPECT_SAME_MAT(intrinsics_.D, before.D);
    EXPECT_SAME_MAT(intrinsics_.KRight, before.KRight);
    EXPECT_SAME_MAT(intrinsics_.DRight, before.DRight);
  }
}

TEST_F(Extrinsics, WarnOfEachCameraWhoseCoefficientsTheClassicModelIgnores) {
  EXPECT_EQ(PrintedAt(Calibrator::MODEL_CLASSIC), std::string(LEFT_WARNING) + RIGHT_WARNING);
  EXPECT_EQ(PrintedAt(0), std::string(LEFT_WARNING) + RIGHT_WARNING);
  KeepOnlyFive(intrinsics_.D);
  EXPECT_EQ(PrintedAt(Calibrator::MODEL_CLASSIC), RIGHT_WARNING);
  KeepOnlyFive(intrinsics_.DRight);
  EXPECT_EQ(PrintedAt(Calibrator::MODEL_CLASSIC), "");
  intrinsics_.D = TrueIntrinsics().D;
  EXPECT_EQ(PrintedAt(Calibrator::MODEL_CLASSIC), LEFT_WARNING);
}

TEST_F(Extrinsics, WarnOfALastCoefficientAlone) {
  KeepOnlyFive(intrinsics_.D);
  KeepOnlyFive(intrinsics_.DRight);
  intrinsics_.D.at<double>(13) = 1e-9;
  EXPECT_EQ(PrintedAt(Calibrator::MODEL_CLASSIC), LEFT_WARNING);
}

TEST_F(Extrinsics, AreSolvedQuietlyWithTheRicherModels) {
  const unit::ScopedLogLevel everything(5);
  EXPECT_EQ(PrintedAt(Calibrator::MODEL_RATIONAL), "");
  EXPECT_EQ(PrintedAt(Calibrator::MODEL_FULL), "");
}

TEST_F(Extrinsics, IgnoreImagePointsBeyondTheNumberOfObjectPoints) {
  const auto direct = unit::SolveDirectly(pairs_, unit::RATIONAL_FLAGS);
  pairs_.left[1].emplace_back(1.0, 2.0);
  pairs_.right[4].insert(pairs_.right[4].end(), 50, {3.0, 4.0});
  ExpectSameSolution(Solve(Calibrator::MODEL_RATIONAL), direct);
}

TEST_F(Extrinsics, RaiseForTooFewImagePointsInAView) {
  pairs_.left[2].pop_back();
  EXPECT_THROW(Solve(Calibrator::MODEL_RATIONAL), cv::Exception);
  pairs_ = unit::NoisyPairs(6);
  pairs_.right[2].pop_back();
  EXPECT_THROW(Solve(Calibrator::MODEL_RATIONAL), cv::Exception);
  pairs_ = unit::NoisyPairs(6);
  pairs_.right[0].clear();
  EXPECT_THROW(Solve(Calibrator::MODEL_RATIONAL), cv::Exception);
}

TEST_F(Extrinsics, RaiseForListsOfDifferentLengths) {
  for (const size_t targets : {0U, 5U, 7U}) {
    EXPECT_THROW(SolveExtrinsics(Targets(targets), pairs_.left, pairs_.right, intrinsics_, unit::FRAME,
                                 Calibrator::MODEL_RATIONAL),
                 cv::Exception)
        << targets;
  }
  pairs_.right.pop_back();
  EXPECT_THROW(Solve(Calibrator::MODEL_RATIONAL), cv::Exception);
  EXPECT_THROW(SolveExtrinsics({}, {}, {}, intrinsics_, unit::FRAME, Calibrator::MODEL_RATIONAL),
               cv::Exception);
}

}  // namespace
