/// What a calibrator's verdict on a pair says of each camera.
#include <gtest/gtest.h>

#include <cmath>

#include "Calibrator.h"
#include "unit/StereoCollection.h"

namespace {

constexpr int SNAPSHOTS = 8;

struct Setting {
  int solver;
  bool refined;
};

class PairVerdictOfCalibrator : public ::testing::TestWithParam<Setting> {
 protected:
  PairVerdictOfCalibrator() {
    calibrator_->SetSolver(GetParam().solver);
    calibrator_->SetRefineLenses(GetParam().refined);
  }

  PairVerdict Computed() {
    calibrator_->ComputeCalibrationStereo(unit::LeftResult(), unit::RightResult(), Calibrator::MODEL_FULL,
                                          false);
    return calibrator_->GetPairVerdict();
  }

  const std::unique_ptr<Calibrator> calibrator_ = unit::StereoCalibratorWith(unit::NoisyPairs(SNAPSHOTS));
};

TEST_P(PairVerdictOfCalibrator, HasTheErrorsOfEachSnapshotThatMakeUpItsRms) {
  const PairVerdict verdict = Computed();
  ASSERT_EQ(verdict.lensesRefined, GetParam().refined);
  double all = 0.0;
  for (const PairVerdict::Camera& camera : {verdict.left, verdict.right}) {
    ASSERT_EQ(camera.viewRms.size(), static_cast<size_t>(SNAPSHOTS));
    double squares = 0.0;
    for (const double rms : camera.viewRms) {
      EXPECT_GT(rms, 0.0);
      squares += rms * rms / SNAPSHOTS;
    }
    EXPECT_NEAR(camera.rms, std::sqrt(squares), 1e-9);
    all += squares / 2.0;
  }
  EXPECT_NEAR(std::sqrt(all), static_cast<double>(calibrator_->GetRMS()), 1e-5);
}

TEST_P(PairVerdictOfCalibrator, HasAMapOfEachCamerasImage) {
  const PairVerdict verdict = Computed();
  const cv::Rect2d image(0.0, 0.0, unit::FRAME.width, unit::FRAME.height);
  for (const PairVerdict::Camera& camera : {verdict.left, verdict.right}) {
    ASSERT_EQ(camera.deviationMap.size(), cv::Size(40, 30));
    const double middle = camera.deviationMap.at<double>(15, 20);
    EXPECT_GT(middle, 0.0);
    EXPECT_LT(middle, 1.0);
    EXPECT_GT(camera.deviationMap.at<double>(0, 0), middle);
    EXPECT_GT(camera.deviationInImage, camera.deviationInData);
    EXPECT_GT(camera.coverage, 0.3);
    EXPECT_GT(camera.dataArea.size(), 3U);
    for (const cv::Point2f& corner : camera.dataArea) EXPECT_TRUE(image.contains(corner)) << corner;
  }
}

TEST_P(PairVerdictOfCalibrator, SaysNothingOfCamerasAfterAnotherSnapshot) {
  ASSERT_NE(Computed().grade, PairVerdict::Grade::None);
  const unit::PointPairs pairs = unit::NoisyPairs(1);
  calibrator_->AddStereoPoints(pairs.left.front(), pairs.right.front());
  const PairVerdict none = calibrator_->GetPairVerdict();
  EXPECT_TRUE(none.left.viewRms.empty());
  EXPECT_TRUE(none.right.deviationMap.empty());
}

INSTANTIATE_TEST_SUITE_P(Solvers, PairVerdictOfCalibrator,
                         ::testing::Values(Setting{Calibrator::SOLVER_OPENCV, false},
                                           Setting{Calibrator::SOLVER_SPARSE, false},
                                           Setting{Calibrator::SOLVER_SPARSE, true}));

TEST(PairVerdictOfRobustCalibrator, MarksTheSnapshotOfWhichAnImageWasLeftOut) {
  unit::PointPairs pairs = unit::NoisyPairs(SNAPSHOTS);
  std::swap(pairs.right[2].front(), pairs.right[2].back());
  for (cv::Point2d& point : pairs.left[5]) point = {unit::FRAME.width - point.x, point.y};
  const auto calibrator = unit::StereoCalibratorWith(pairs);
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->SetRobust(true);
  calibrator->ComputeCalibrationStereo(unit::LeftResult(), unit::RightResult(), Calibrator::MODEL_FULL,
                                       false);
  const PairVerdict verdict = calibrator->GetPairVerdict();
  EXPECT_EQ(verdict.left.viewRms[5], -1.0) << verdict.ToJson();
  EXPECT_GT(verdict.right.viewRms[5], 0.0);
  // Two points of this one were left out, and do not count.
  EXPECT_GT(verdict.right.viewRms[2], 0.0);
  EXPECT_LT(verdict.right.viewRms[2], 1.0);
}

}  // namespace
