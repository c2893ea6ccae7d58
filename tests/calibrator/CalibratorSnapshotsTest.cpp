/// A calibrator's collection of monocular snapshots.
#include <gtest/gtest.h>

#include "Calibrator.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

namespace {

const char* const NOT_DETECTED = "DEBUG : Pattern not detected. No points added.\n";

class Snapshots : public ::testing::Test {
 protected:
  void DetectOnce(Calibrator& calibrator) {
    cv::Mat frame = unit::ImageWithGrid();
    std::vector<cv::Point2d> points;
    ASSERT_TRUE(calibrator.DetectPoints(frame, points, false));
  }
  void DetectOnce() { DetectOnce(*calibrator_); }

  std::unique_ptr<Calibrator> calibrator_ = unit::MakeCalibrator();
  const std::vector<cv::Point2d> centres_ = unit::NoisyViews(1).front();
};

TEST_F(Snapshots, AreTakenOncePerDetection) {
  DetectOnce();
  bool first = false;
  bool second = true;
  EXPECT_EQ(unit::PrintedBy([&] {
              first = calibrator_->AddPoints();
              second = calibrator_->AddPoints();
            }),
            std::string("DEBUG : New points added. Snapshot count: 1\n") + NOT_DETECTED);
  EXPECT_TRUE(first);
  EXPECT_FALSE(second);
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 1);
  EXPECT_FALSE(calibrator_->IsDetected());
}

TEST_F(Snapshots, AreRefusedWithoutADetection) {
  bool added = true;
  EXPECT_EQ(unit::PrintedBy([&] { added = calibrator_->AddPoints(); }), NOT_DETECTED);
  EXPECT_FALSE(added);
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 0);
}

TEST_F(Snapshots, AreRefusedAfterAFrameWithoutAGrid) {
  DetectOnce();
  cv::Mat frame = unit::ImageWithoutGrid();
  std::vector<cv::Point2d> points;
  ASSERT_FALSE(calibrator_->DetectPoints(frame, points, false));
  EXPECT_EQ(unit::PrintedBy([&] { calibrator_->AddPoints(); }), NOT_DETECTED);
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 0);
}

TEST_F(Snapshots, MakeTheCalibratorReadyFromTheFifthOn) {
  for (int count = 1; count <= 7; ++count) {
    DetectOnce();
    EXPECT_EQ(unit::PrintedBy([&] { calibrator_->AddPoints(); }),
              "DEBUG : New points added. Snapshot count: " + std::to_string(count) + "\n");
    EXPECT_EQ(calibrator_->GetStatus(), count < 5 ? 100 : 200);
    EXPECT_EQ(calibrator_->GetNumberOfRecords(), count);
  }
}

TEST_F(Snapshots, OfSuppliedCentresAreAddedQuietly) {
  EXPECT_EQ(unit::PrintedBy([&] {
              for (int count = 1; count <= 6; ++count) {
                calibrator_->AddPoints(centres_);
                ASSERT_EQ(calibrator_->GetStatus(), count < 5 ? 100 : 200);
                ASSERT_EQ(calibrator_->GetNumberOfRecords(), count);
              }
            }),
            "");
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 6);
}

TEST_F(Snapshots, OfSuppliedCentresUseUpTheDetection) {
  DetectOnce();
  calibrator_->AddPoints(centres_);
  EXPECT_FALSE(calibrator_->IsDetected());
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 1);
}

TEST_F(Snapshots, OfNoCentresAreNotAdded) {
  DetectOnce();
  calibrator_->AddPoints(std::vector<cv::Point2d>());
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 0);
  EXPECT_TRUE(calibrator_->IsDetected());
}

TEST_F(Snapshots, OfSuppliedCentresAreNotCounted) {
  calibrator_->AddPoints({{1.0, 2.0}});
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 1);
}

TEST_F(Snapshots, AreDetectedAndAddedInOneCall) {
  cv::Mat frame = unit::ImageWithGrid();
  bool result = false;
  EXPECT_EQ(unit::PrintedBy([&] { result = calibrator_->AddPoints(frame, false); }),
            "DEBUG : New points added. Snapshot count: 1\n");
  EXPECT_TRUE(result);
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 1);
}

TEST_F(Snapshots, AnswerTrueInOneCallEvenWithoutAGrid) {
  cv::Mat frame = unit::ImageWithoutGrid();
  bool result = false;
  EXPECT_EQ(unit::PrintedBy([&] { result = calibrator_->AddPoints(frame, true); }), NOT_DETECTED);
  EXPECT_TRUE(result);
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 0);
  cv::Mat nothing;
  unit::PrintedBy([&] { result = calibrator_->AddPoints(nothing, true); });
  EXPECT_TRUE(result);
}

TEST_F(Snapshots, AreRefusedDuringProgressWithoutAMessage) {
  DetectOnce();
  calibrator_->SetStatus(Calibrator::STATUS_PROGRESS);
  cv::Mat frame = unit::ImageWithGrid();
  bool added = true;
  bool detectedAndAdded = false;
  EXPECT_EQ(unit::PrintedBy([&] {
              added = calibrator_->AddPoints();
              calibrator_->AddPoints(centres_);
              detectedAndAdded = calibrator_->AddPoints(frame, false);
            }),
            "");
  EXPECT_FALSE(added);
  EXPECT_TRUE(detectedAndAdded);
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 0);
  EXPECT_EQ(calibrator_->GetStatus(), Calibrator::STATUS_PROGRESS);
  EXPECT_TRUE(calibrator_->IsDetected());
}

TEST_F(Snapshots, LeadACompletedCalibratorBackToReadyAndKeepItsResults) {
  const auto supplied = unit::CompletedCalibrator();
  ASSERT_GT(supplied->GetRMS(), 0.0F);
  supplied->AddPoints(centres_);
  EXPECT_EQ(supplied->GetStatus(), Calibrator::STATUS_READY);
  EXPECT_EQ(supplied->GetRMS(), -1.0F);
  EXPECT_FALSE(supplied->GetK().empty());

  const unit::ScopedLogLevel quiet(1);
  const auto detected = unit::CompletedCalibrator();
  DetectOnce(*detected);
  EXPECT_TRUE(detected->AddPoints());
  EXPECT_EQ(detected->GetStatus(), Calibrator::STATUS_READY);
  EXPECT_EQ(detected->GetRMS(), -1.0F);
  EXPECT_FALSE(detected->GetK().empty());
}

TEST_F(Snapshots, AreNeverAddedToAStereoCalibrator) {
  const auto stereo = unit::MakeCalibrator(Calibrator::STEREO);
  cv::Mat frame = unit::ImageWithGrid();
  bool added = true;
  bool detectedAndAdded = false;
  EXPECT_EQ(unit::PrintedBy([&] {
              added = stereo->AddPoints();
              stereo->AddPoints(centres_);
              detectedAndAdded = stereo->AddPoints(frame, true);
            }),
            "");
  EXPECT_FALSE(added);
  EXPECT_TRUE(detectedAndAdded);
  EXPECT_EQ(stereo->GetNumberOfRecords(), 0);
  EXPECT_EQ(stereo->GetStatus(), Calibrator::STATUS_NOT_READY);
}

TEST_F(Snapshots, HoldTheDetectedCentresForTheComputation) {
  // The computation from detections equals the one from the centres that they reported.
  const unit::ScopedLogLevel quiet(1);
  const auto supplied = unit::MakeCalibrator();
  for (size_t view = 0; view < 5; ++view) {
    cv::Mat frame = unit::Rendered().images[view].clone();
    std::vector<cv::Point2d> points;
    ASSERT_TRUE(calibrator_->DetectPoints(frame, points, true));
    ASSERT_TRUE(calibrator_->AddPoints());
    supplied->AddPoints(points);
  }
  const float rms = calibrator_->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  EXPECT_GT(rms, 0.0F);
  EXPECT_EQ(rms, supplied->ComputeCalibration(Calibrator::MODEL_CLASSIC));
  EXPECT_EQ(cv::norm(calibrator_->GetK(), supplied->GetK(), cv::NORM_INF), 0.0);
}

}  // namespace
