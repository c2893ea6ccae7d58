/// A calibrator's construction, status, switches, reset and end.
#include "Calibrator.h"

#include <gtest/gtest.h>

#include "Matchers.h"
#include "TemporaryFolder.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

namespace {

TEST(Calibrator, HasTheConstantsThatCrossTheBinding) {
  EXPECT_EQ(Calibrator::MONOCULAR, 0);
  EXPECT_EQ(Calibrator::STEREO, 1);
  EXPECT_EQ(Calibrator::MODEL_CLASSIC, 10);
  EXPECT_EQ(Calibrator::MODEL_RATIONAL, 20);
  EXPECT_EQ(Calibrator::MODEL_FULL, 30);
  EXPECT_EQ(Calibrator::STATUS_NOT_READY, 100);
  EXPECT_EQ(Calibrator::STATUS_READY, 200);
  EXPECT_EQ(Calibrator::STATUS_COMPLETED, 300);
  EXPECT_EQ(Calibrator::STATUS_PROGRESS, 400);
}

TEST(Calibrator, StartsEmptyAndNotReady) {
  for (const int kind : {Calibrator::MONOCULAR, Calibrator::STEREO}) {
    const auto calibrator = unit::MakeCalibrator(kind);
    EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_NOT_READY);
    EXPECT_EQ(calibrator->GetNumberOfRecords(), 0);
    EXPECT_EQ(calibrator->GetRMS(), -1.0F);
    EXPECT_FALSE(calibrator->IsDetected());
    EXPECT_FALSE(calibrator->isCalibrating());
    EXPECT_FALSE(calibrator->GetFlipImage());
    EXPECT_EQ(calibrator->GetAssistantGoal(), -1);
  }
}

TEST(Calibrator, StartsWithoutResults) {
  const auto mono = unit::MakeCalibrator();
  EXPECT_TRUE(mono->GetK().empty());
  EXPECT_TRUE(mono->GetDistCoefs().empty());
  EXPECT_TRUE(mono->GetStdDevIntrinsics().empty());
  EXPECT_TRUE(mono->GetPerViewErrors().empty());
  EXPECT_TRUE(mono->GetRotationVectors().empty());
  EXPECT_TRUE(mono->GetTranslationVectors().empty());
  const auto stereo = unit::MakeCalibrator(Calibrator::STEREO);
  EXPECT_TRUE(stereo->GetKLeft().empty());
  EXPECT_TRUE(stereo->GetKRight().empty());
  EXPECT_TRUE(stereo->GetR().empty());
}

TEST(Calibrator, IsMadeAndEndedWithoutAMessage) {
  EXPECT_EQ(unit::PrintedBy([] { unit::MakeCalibrator(); }), "");
}

TEST(Calibrator, ReportsTheStatusThatWasSet) {
  const auto calibrator = unit::MakeCalibrator();
  for (const int status : {200, 300, 400, 500, 1, 0, 100}) {
    calibrator->SetStatus(status);
    EXPECT_EQ(calibrator->GetStatus(), status);
    EXPECT_EQ(calibrator->ReadStatus(), status);
    EXPECT_EQ(calibrator->isCalibrating(), status == 400);
  }
}

TEST(Calibrator, RemembersTheFlipSwitch) {
  const auto calibrator = unit::MakeCalibrator();
  calibrator->SetFlipImage(true);
  EXPECT_TRUE(calibrator->GetFlipImage());
  calibrator->SetFlipImage(false);
  EXPECT_FALSE(calibrator->GetFlipImage());
}

TEST(Calibrator, DropsSnapshotsAndResultsOnReset) {
  const auto calibrator = unit::CompletedCalibrator();
  ASSERT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
  ASSERT_FALSE(calibrator->GetK().empty());
  EXPECT_EQ(unit::PrintedBy([&] { calibrator->Reset(); }), "");
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_NOT_READY);
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 0);
  EXPECT_EQ(calibrator->GetRMS(), -1.0F);
  EXPECT_TRUE(calibrator->GetK().empty());
  EXPECT_TRUE(calibrator->GetDistCoefs().empty());
  EXPECT_TRUE(calibrator->GetStdDevIntrinsics().empty());
  EXPECT_TRUE(calibrator->GetPerViewErrors().empty());
  EXPECT_TRUE(calibrator->GetRotationVectors().empty());
  EXPECT_TRUE(calibrator->GetTranslationVectors().empty());
}

TEST(Calibrator, LeavesMatricesAloneThatCallersHoldAcrossAReset) {
  const auto calibrator = unit::CompletedCalibrator();
  const cv::Mat held = calibrator->GetK();
  const cv::Mat copy = held.clone();
  calibrator->Reset();
  EXPECT_SAME_MAT(held, copy);
}

TEST(Calibrator, ChangesAndPrintsNothingOnResetDuringProgress) {
  const auto calibrator = unit::CompletedCalibrator();
  const float rms = calibrator->GetRMS();
  calibrator->SetStatus(Calibrator::STATUS_PROGRESS);
  EXPECT_EQ(unit::PrintedBy([&] { calibrator->Reset(); }), "");
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_PROGRESS);
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 6);
  calibrator->SetStatus(Calibrator::STATUS_COMPLETED);
  EXPECT_EQ(calibrator->GetRMS(), rms);
  EXPECT_FALSE(calibrator->GetK().empty());
}

TEST(Calibrator, KeepsDetectionFlipAndAssistantOnReset) {
  const unit::ScopedLogLevel quiet(1);
  const support::TemporaryFolder folder;
  unit::WriteAssistantModel(folder.File("model.json"), unit::NoisyViews(7));
  const auto calibrator = unit::MakeCalibrator();
  cv::Mat frame = unit::ImageWithGrid();
  std::vector<cv::Point2d> points;
  ASSERT_TRUE(calibrator->DetectPoints(frame, points, false));
  calibrator->EnableAssistant(folder.File("model.json"));
  calibrator->SetFlipImage(true);
  calibrator->Reset();
  EXPECT_TRUE(calibrator->GetFlipImage());
  EXPECT_EQ(calibrator->GetAssistantGoal(), 7);
  EXPECT_TRUE(calibrator->IsDetected());
  EXPECT_TRUE(calibrator->AddPoints());
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 1);
}

TEST(Calibrator, CollectsAgainAfterAReset) {
  const auto views = unit::NoisyViews(5);
  const auto calibrator = unit::CompletedCalibrator();
  calibrator->Reset();
  for (size_t i = 0; i < views.size(); ++i) {
    EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_NOT_READY);
    calibrator->AddPoints(views[i]);
  }
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
  EXPECT_GT(calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC), 0.0F);
}

}  // namespace
