/// The sparse solver's pairs of cameras beside OpenCV's and the truth.
#include "solver/SparsePair.h"

#include <gtest/gtest.h>

#include "Calibrator.h"
#include "Matchers.h"
#include "model/TargetGeometry.h"
#include "unit/Scopes.h"
#include "unit/StereoCollection.h"

using namespace velmora;

namespace {

class SparsePair : public ::testing::Test {
 protected:
  static StereoIntrinsics TrueIntrinsics() {
    const auto left = unit::IntrinsicsOf(unit::PairOfCameras().left);
    const auto right = unit::IntrinsicsOf(unit::PairOfCameras().right);
    return {left.K, left.D, right.K, right.D};
  }

  std::vector<std::vector<cv::Point3d>> Targets() const {
    return std::vector<std::vector<cv::Point3d>>(pairs_.left.size(),
                                                 MakeObjectTemplate(unit::GRID, unit::UNIT));
  }

  ExtrinsicsResult Sparse(int model, int threads = 1) const {
    return SolveExtrinsicsSparsely(Targets(), pairs_.left, pairs_.right, intrinsics_, model,
                                   {0.0, threads, {}});
  }

  ExtrinsicsResult Dense(int model) const {
    return SolveExtrinsics(Targets(), pairs_.left, pairs_.right, intrinsics_, unit::FRAME, model);
  }

  unit::PointPairs pairs_ = unit::NoisyPairs(6);
  StereoIntrinsics intrinsics_ = TrueIntrinsics();
};

TEST_F(SparsePair, AreTheSameMinimumWithEachModel) {
  const unit::ScopedLogLevel quiet(1);
  for (const int model : {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL}) {
    const ExtrinsicsResult sparse = Sparse(model);
    const ExtrinsicsResult dense = Dense(model);
    EXPECT_NEAR(sparse.rms, dense.rms, 1e-9) << model;
    EXPECT_MAT_NEAR(sparse.R, dense.R, 1e-7);
    EXPECT_MAT_NEAR(sparse.T, dense.T, 1e-7);
    EXPECT_MAT_NEAR(sparse.E, dense.E, 1e-7);
    EXPECT_MAT_NEAR(sparse.F, dense.F, 1e-6 * cv::norm(dense.F));
  }
}

TEST_F(SparsePair, AreNearTheTruth) {
  const ExtrinsicsResult result = Sparse(Calibrator::MODEL_FULL);
  EXPECT_LT(result.rms, 0.1);
  EXPECT_MAT_NEAR(result.R, cv::Mat(unit::PairOfCameras().R), 1e-3);
  EXPECT_MAT_NEAR(result.T, cv::Mat(unit::PairOfCameras().T), 2e-4);
}

TEST_F(SparsePair, AreTheSameForAnyNumberOfThreads) {
  const ExtrinsicsResult single = Sparse(Calibrator::MODEL_RATIONAL);
  for (const int threads : {2, 5}) {
    const ExtrinsicsResult several = Sparse(Calibrator::MODEL_RATIONAL, threads);
    EXPECT_EQ(several.rms, single.rms);
    EXPECT_SAME_MAT(several.R, single.R);
    EXPECT_SAME_MAT(several.T, single.T);
  }
}

TEST_F(SparsePair, WarnOfCoefficientsThatTheClassicModelIgnores) {
  EXPECT_EQ(unit::PrintedBy([&] { Sparse(Calibrator::MODEL_CLASSIC); }),
            unit::PrintedBy([&] { Dense(Calibrator::MODEL_CLASSIC); }));
  EXPECT_EQ(unit::PrintedBy([&] { Sparse(Calibrator::MODEL_RATIONAL); }), "");
}

TEST_F(SparsePair, LeaveTheIntrinsicsAlone) {
  const StereoIntrinsics before = {intrinsics_.K.clone(), intrinsics_.D.clone(), intrinsics_.KRight.clone(),
                                   intrinsics_.DRight.clone()};
  Sparse(Calibrator::MODEL_RATIONAL);
  EXPECT_SAME_MAT(intrinsics_.D, before.D);
  EXPECT_SAME_MAT(intrinsics_.DRight, before.DRight);
  EXPECT_SAME_MAT(intrinsics_.K, before.K);
  EXPECT_SAME_MAT(intrinsics_.KRight, before.KRight);
}

TEST_F(SparsePair, RaiseForTooFewImagePoints) {
  pairs_.right.back().pop_back();
  EXPECT_THROW(Sparse(Calibrator::MODEL_RATIONAL), cv::Exception);
  pairs_.right.pop_back();
  EXPECT_THROW(Sparse(Calibrator::MODEL_RATIONAL), cv::Exception);
}

TEST_F(SparsePair, RaiseWhenTheCallerGivesUp) {
  int calls = 0;
  EXPECT_THROW(
      SolveExtrinsicsSparsely(Targets(), pairs_.left, pairs_.right, intrinsics_, Calibrator::MODEL_RATIONAL,
                              {0.0, 1, [&](int, double) { return ++calls < 2; }}),
      cv::Exception);
  EXPECT_EQ(calls, 2);
}

TEST_F(SparsePair, StayAsTheyWereWhenACalibratorIsCancelled) {
  const auto calibrator = unit::StereoCalibratorWith(pairs_);
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->SetProgressListener([&](int, double) { calibrator->CancelComputation(); });
  EXPECT_EQ(calibrator->ComputeCalibrationStereo(unit::LeftResult(), unit::RightResult(),
                                                 Calibrator::MODEL_RATIONAL, false),
            -1.0F);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
  EXPECT_TRUE(calibrator->GetR().empty());
}

TEST_F(SparsePair, AreThoseOfACalibratorThatIsAskedForThem) {
  const auto calibrator = unit::StereoCalibratorWith(pairs_);
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  const float rms = calibrator->ComputeCalibrationStereo(unit::LeftResult(), unit::RightResult(),
                                                         Calibrator::MODEL_RATIONAL, false);
  const ExtrinsicsResult expected = Sparse(Calibrator::MODEL_RATIONAL);
  EXPECT_EQ(rms, static_cast<float>(expected.rms));
  EXPECT_MAT_NEAR(calibrator->GetR(), expected.R, 1e-12);
  EXPECT_MAT_NEAR(calibrator->GetStereoTranslation(), expected.T, 1e-12);
}

}  // namespace
