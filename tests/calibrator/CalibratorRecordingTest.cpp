/// Recording of poses as a model of the assistant.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "Calibrator.h"
#include "TemporaryFolder.h"
#include "assistant/AssistantModel.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

class Recording : public ::testing::Test {
 protected:
  /// Detects a view and takes its snapshot; remembers the centres.
  void TakeSnapshot(size_t view) {
    cv::Mat frame = unit::Rendered().images[view].clone();
    std::vector<cv::Point2d> points;
    ASSERT_TRUE(calibrator_->DetectPoints(frame, points, false));
    unit::PrintedBy([&] { ASSERT_TRUE(calibrator_->AddPoints()); });
    taken_.push_back(points);
  }

  std::string Path() const { return folder_.File("model_tmp.json"); }
  nlohmann::json Written() const { return nlohmann::json::parse(support::ReadText(Path())); }
  bool IsWritten() const { return std::filesystem::exists(Path()); }

  void ExpectPose(const nlohmann::json& pose, const std::vector<cv::Point2d>& points) {
    EXPECT_EQ(pose.at("rows"), 44);
    EXPECT_EQ(pose.at("cols"), 1);
    EXPECT_EQ(pose.at("type"), 13);
    EXPECT_EQ(pose.at("depth"), 5);
    std::vector<float> expected;
    for (const cv::Point2d& point : points) {
      expected.push_back(static_cast<float>(point.x));
      expected.push_back(static_cast<float>(point.y));
    }
    EXPECT_EQ(pose.at("data").get<std::vector<float>>(), expected);
  }

  support::TemporaryFolder folder_;
  unit::ScopedCurrentFolder current_{folder_.Path()};
  std::unique_ptr<Calibrator> calibrator_ = unit::MakeCalibrator();
  unit::PointLists taken_;
};

TEST_F(Recording, HoldsThePosesOfTheSnapshotsTaken) {
  unit::PrintedBy([&] { calibrator_->StartModelRecording(); });
  for (size_t view = 0; view < 3; ++view) TakeSnapshot(view);
  EXPECT_FALSE(IsWritten());
  unit::PrintedBy([&] { calibrator_->StopModelRecording(); });

  const nlohmann::json model = Written();
  EXPECT_EQ(model.size(), 6U);
  EXPECT_EQ(model.at("imgWidth"), 640);
  EXPECT_EQ(model.at("imgHeight"), 480);
  EXPECT_EQ(model.at("count"), 3);
  for (size_t pose = 0; pose < 3; ++pose) ExpectPose(model.at("points" + std::to_string(pose)), taken_[pose]);
}

TEST_F(Recording, IsAModelThatTheAssistantReads) {
  unit::PrintedBy([&] { calibrator_->StartModelRecording(); });
  for (size_t view = 0; view < 2; ++view) TakeSnapshot(view);
  unit::PrintedBy([&] { calibrator_->StopModelRecording(); });
  const AssistantModel model = ReadAssistantModel(Path(), unit::FRAME, unit::GRID);
  ASSERT_EQ(model.poses.size(), 2U);
  for (size_t pose = 0; pose < 2; ++pose) {
    for (int i = 0; i < 44; ++i) {
      const cv::Point2f read = model.poses[pose].at<cv::Point2f>(i);
      const cv::Point2d point = taken_[pose][static_cast<size_t>(i)];
      EXPECT_LT(cv::norm(cv::Point2d(read) - point), 1e-3);
    }
  }
}

TEST_F(Recording, AnnouncesItsStartItsPosesAndItsEnd) {
  std::vector<cv::Point2d> points;
  cv::Mat frame = unit::ImageWithGrid();
  EXPECT_EQ(unit::PrintedBy([&] {
              calibrator_->StartModelRecording();
              calibrator_->StartModelRecording();
              calibrator_->DetectPoints(frame, points, false);
              calibrator_->AddPoints();
              calibrator_->StopModelRecording();
              calibrator_->StopModelRecording();
            }),
            "INFO  : Start model recording\n"
            "ERROR : ERROR: Only one channel matrices are supported so far.\n"
            "DEBUG : New points added. Snapshot count: 1\n"
            "INFO  : Stop model recording\n");
  EXPECT_EQ(Written().at("count"), 1);
}

TEST_F(Recording, IsNotEndedTwice) {
  unit::PrintedBy([&] {
    calibrator_->StartModelRecording();
    calibrator_->StopModelRecording();
  });
  ASSERT_TRUE(IsWritten());
  std::filesystem::remove(Path());
  EXPECT_EQ(unit::PrintedBy([&] { calibrator_->StopModelRecording(); }), "");
  EXPECT_FALSE(IsWritten());
}

TEST_F(Recording, IsNotWrittenWhenNoneWasStarted) {
  EXPECT_EQ(unit::PrintedBy([&] { calibrator_->StopModelRecording(); }), "");
  EXPECT_FALSE(IsWritten());
}

TEST_F(Recording, WithoutASnapshotHoldsNoPose) {
  unit::PrintedBy([&] {
    calibrator_->StartModelRecording();
    calibrator_->StopModelRecording();
  });
  EXPECT_EQ(Written().dump(), R"({"count":0,"imgHeight":480,"imgWidth":640})");
}

TEST_F(Recording, NumbersASecondOneAfterTheFirst) {
  unit::PrintedBy([&] { calibrator_->StartModelRecording(); });
  TakeSnapshot(0);
  TakeSnapshot(1);
  unit::PrintedBy([&] { calibrator_->StopModelRecording(); });
  TakeSnapshot(2);  // between the two: recorded nowhere
  calibrator_->Reset();
  unit::PrintedBy([&] { calibrator_->StartModelRecording(); });
  TakeSnapshot(3);
  unit::PrintedBy([&] { calibrator_->StopModelRecording(); });

  const nlohmann::json model = Written();
  EXPECT_EQ(model.at("count"), 3);
  EXPECT_EQ(model.size(), 4U);
  ExpectPose(model.at("points2"), taken_[3]);
  // Its first poses are missing, so the assistant cannot use it.
  EXPECT_THROW(ReadAssistantModel(Path(), unit::FRAME, unit::GRID), std::runtime_error);
}

TEST_F(Recording, SurvivesAReset) {
  unit::PrintedBy([&] { calibrator_->StartModelRecording(); });
  TakeSnapshot(0);
  calibrator_->Reset();
  TakeSnapshot(1);
  unit::PrintedBy([&] { calibrator_->StopModelRecording(); });
  EXPECT_EQ(Written().at("count"), 2);
  ExpectPose(Written().at("points1"), taken_[1]);
}

TEST_F(Recording, LeavesOutRefusedAndSuppliedSnapshots) {
  unit::PrintedBy([&] {
    calibrator_->StartModelRecording();
    calibrator_->AddPoints();
    calibrator_->AddPoints(unit::NoisyViews(1).front());
  });
  ASSERT_EQ(calibrator_->GetNumberOfRecords(), 1);
  unit::PrintedBy([&] { calibrator_->StopModelRecording(); });
  EXPECT_EQ(Written().at("count"), 0);
}

TEST_F(Recording, IsSavedWhenTheCalibratorEnds) {
  unit::PrintedBy([&] { calibrator_->StartModelRecording(); });
  TakeSnapshot(0);
  EXPECT_EQ(unit::PrintedBy([&] { calibrator_.reset(); }), "INFO  : Stop model recording\n");
  EXPECT_EQ(Written().at("count"), 1);
}

TEST_F(Recording, IsWrittenToAnotherFileOnRequest) {
  unit::PrintedBy([&] { EXPECT_FALSE(calibrator_->StopModelRecording(folder_.File("mine.json"))); });
  unit::PrintedBy([&] { calibrator_->StartModelRecording(); });
  TakeSnapshot(0);
  unit::PrintedBy([&] { EXPECT_TRUE(calibrator_->StopModelRecording(folder_.File("mine.json"))); });
  EXPECT_FALSE(IsWritten());
  const auto model = nlohmann::json::parse(support::ReadText(folder_.File("mine.json")));
  EXPECT_EQ(model.at("count"), 1);
  ExpectPose(model.at("points0"), taken_[0]);
}

TEST_F(Recording, GoesOnWhenItsFileCannotBeOpened) {
  unit::PrintedBy([&] { calibrator_->StartModelRecording(); });
  TakeSnapshot(0);
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_FALSE(calibrator_->StopModelRecording("/nowhere/mine.json")); }),
            "");
  TakeSnapshot(1);
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_TRUE(calibrator_->StopModelRecording(folder_.File("mine.json"))); }),
            "INFO  : Stop model recording\n");
  const auto model = nlohmann::json::parse(support::ReadText(folder_.File("mine.json")));
  EXPECT_EQ(model.at("count"), 2);
  ExpectPose(model.at("points0"), taken_[0]);
  ExpectPose(model.at("points1"), taken_[1]);
}

TEST_F(Recording, ReportsNothingWhenItCannotBeSaved) {
  const std::string gone = folder_.File("gone");
  std::filesystem::create_directory(gone);
  const unit::ScopedCurrentFolder there(gone);
  std::filesystem::remove(gone);
  EXPECT_EQ(unit::PrintedBy([&] {
              calibrator_->StartModelRecording();
              calibrator_->StopModelRecording();
              calibrator_->StopModelRecording();
            }),
            "INFO  : Start model recording\nINFO  : Stop model recording\n");
  EXPECT_FALSE(IsWritten());
}

}  // namespace
