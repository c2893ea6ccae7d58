/// The pose assistant's life cycle and its score.
#include "CalibAssistant.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <opencv2/imgproc.hpp>

#include "Matchers.h"
#include "TemporaryFolder.h"
#include "assistant/SheetPainting.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"
#include "unit/ThreadGroup.h"

namespace {

class Assistant : public ::testing::Test {
 protected:
  Assistant() { unit::WriteAssistantModel(path_, poses_); }

  /// A pose with all points moved along x.
  std::vector<cv::Point2d> Moved(size_t pose, double distance) const {
    std::vector<cv::Point2d> points = poses_[pose];
    for (cv::Point2d& point : points) point.x += distance;
    return points;
  }

  support::TemporaryFolder folder_;
  const std::string path_ = folder_.File("model.json");
  const unit::PointLists poses_ = unit::NoisyViews(3);
  CalibAssistant assistant_{640, 480, 4, 11};
};

TEST_F(Assistant, HasNoPoseBeforeItsStart) {
  EXPECT_EQ(assistant_.GetGoal(), -2);
  EXPECT_EQ(assistant_.GetRemainingPoseCount(), -1);
  EXPECT_EQ(assistant_.GetScore(), 10000.0F);
  EXPECT_FALSE(assistant_.CheckValidity(poses_[0]));
}

TEST_F(Assistant, ShowsTheFirstPoseAfterItsStart) {
  assistant_.Start(path_);
  EXPECT_EQ(assistant_.GetGoal(), 3);
  EXPECT_EQ(assistant_.GetRemainingPoseCount(), 3);
  EXPECT_TRUE(assistant_.CheckValidity(poses_[0]));
  EXPECT_FALSE(assistant_.CheckValidity(poses_[1]));
}

TEST_F(Assistant, ScoresADetectionAtTheTargetWithZero) {
  assistant_.Start(path_);
  EXPECT_TRUE(assistant_.CheckValidity(poses_[0]));
  EXPECT_LT(assistant_.GetScore(), 0.01F);
}

TEST_F(Assistant, MovesOnToTheEndAndStaysThere) {
  assistant_.Start(path_);
  EXPECT_FALSE(assistant_.Next());
  EXPECT_TRUE(assistant_.CheckValidity(poses_[1]));
  EXPECT_FALSE(assistant_.Next());
  EXPECT_TRUE(assistant_.CheckValidity(poses_[2]));
  EXPECT_EQ(assistant_.GetRemainingPoseCount(), 1);
  EXPECT_TRUE(assistant_.Next());
  EXPECT_EQ(assistant_.GetRemainingPoseCount(), 0);
  EXPECT_TRUE(assistant_.Next());
  EXPECT_EQ(assistant_.GetRemainingPoseCount(), 0);
  // The last target stays.
  EXPECT_TRUE(assistant_.CheckValidity(poses_[2]));
}

TEST_F(Assistant, GoesBackToTheFirstPoseOnReset) {
  assistant_.Start(path_);
  while (!assistant_.Next()) {
  }
  assistant_.Reset();
  EXPECT_EQ(assistant_.GetRemainingPoseCount(), 3);
  EXPECT_TRUE(assistant_.CheckValidity(poses_[0]));
}

TEST_F(Assistant, HasNoPoseOnceStopped) {
  assistant_.Start(path_);
  assistant_.Stop();
  EXPECT_EQ(assistant_.GetGoal(), -1);
  EXPECT_FALSE(assistant_.CheckValidity(poses_[0]));
  EXPECT_EQ(assistant_.GetScore(), 10000.0F);
  assistant_.Reset();
  EXPECT_EQ(assistant_.GetGoal(), -1);
  EXPECT_FALSE(assistant_.CheckValidity(poses_[0]));
}

TEST_F(Assistant, ScoresNothingForAnotherNumberOfPoints) {
  assistant_.Start(path_);
  std::vector<cv::Point2d> points = poses_[0];
  points.pop_back();
  EXPECT_FALSE(assistant_.CheckValidity(points));
  EXPECT_EQ(assistant_.GetScore(), 10000.0F);
  EXPECT_TRUE(assistant_.CheckValidity(poses_[0]));
  EXPECT_FALSE(assistant_.CheckValidity({}));
  EXPECT_EQ(assistant_.GetScore(), 10000.0F);
}

TEST_F(Assistant, WeighsTheDistanceByTheShareOfTheFrame) {
  assistant_.Start(path_);
  const std::vector<cv::Point2f> target(poses_[0].begin(), poses_[0].end());
  const cv::Size2f extent = cv::minAreaRect(target).size;
  const double weight = std::sqrt((640.0 / extent.width + 480.0 / extent.height) * 0.5);
  assistant_.CheckValidity(Moved(0, 10.0));
  const double expected = 10.0 * std::sqrt(44.0) * weight;
  EXPECT_NEAR(assistant_.GetScore(), expected, 1e-3 * expected);

  const double atThreshold = CalibAssistant::SCORE_TH / (std::sqrt(44.0) * weight);
  EXPECT_TRUE(assistant_.CheckValidity(Moved(0, 0.999 * atThreshold)));
  EXPECT_FALSE(assistant_.CheckValidity(Moved(0, 1.001 * atThreshold)));
}

TEST_F(Assistant, KeepsItsPosesWhenAnotherModelCannotBeLoaded) {
  assistant_.Start(path_);
  assistant_.Next();
  const std::string missing = folder_.File("missing.json");
  support::WriteText(folder_.File("none.json"), "{}");
  for (const std::string& model : {missing, folder_.Path(), folder_.File("none.json")}) {
    bool loaded = true;
    unit::PrintedBy([&] { loaded = assistant_.LoadModel(model); });
    EXPECT_FALSE(loaded);
    EXPECT_EQ(assistant_.GetGoal(), 3);
    EXPECT_TRUE(assistant_.CheckValidity(poses_[1]));
  }
}

TEST_F(Assistant, TellsOfAFileThatCannotBeReadWhenItIsStartedWithIt) {
  const std::string missing = folder_.File("missing.json");
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_FALSE(assistant_.LoadModel(missing)); }), "");
  EXPECT_EQ(unit::PrintedBy([&] { assistant_.Start(missing); }),
            "ERROR : Cannot use assistant model '" + missing + "': it cannot be read\n");
}

TEST_F(Assistant, TellsOfAModelThatLacksAMemberOnceInWords) {
  const std::string none = folder_.File("none.json");
  support::WriteText(none, "{}");
  const std::string line = "ERROR : Cannot use assistant model '" + none + "': it has no number 'count'\n";
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_FALSE(assistant_.LoadModel(none)); }), line);
  EXPECT_EQ(unit::PrintedBy([&] { assistant_.Start(none); }), line);
}

TEST_F(Assistant, IsStoppedByAStartThatFails) {
  assistant_.Start(path_);
  unit::PrintedBy([&] { assistant_.Start(folder_.File("missing.json")); });
  EXPECT_EQ(assistant_.GetGoal(), -1);
  EXPECT_FALSE(assistant_.CheckValidity(poses_[0]));
}

TEST_F(Assistant, GuidesOnlyTheGridOfItsSheet) {
  CalibAssistant other(640, 480, 4, 9);
  EXPECT_EQ(unit::PrintedBy([&] { other.Start(path_); }),
            "ERROR : Cannot use assistant model '" + path_ +
                "': the assistant guides a grid of 4 x 11 circles only\n");
  EXPECT_EQ(other.GetGoal(), -1);
}

TEST_F(Assistant, DrawsOnlyWhileItHasAPose) {
  const cv::Mat image(480, 640, CV_8UC3, cv::Scalar(90, 90, 90));
  cv::Mat frame = image.clone();
  assistant_.DrawPose(frame);
  EXPECT_SAME_MAT(frame, image);
  assistant_.Start(path_);
  assistant_.DrawPose(frame);
  EXPECT_FALSE(support::SameMat(frame, image));
  assistant_.Stop();
  frame = image.clone();
  assistant_.DrawPose(frame);
  EXPECT_SAME_MAT(frame, image);
}

TEST_F(Assistant, DrawsTheLastTargetOnceFinished) {
  assistant_.Start(path_);
  while (!assistant_.Next()) {
  }
  const cv::Mat image(480, 640, CV_8UC3, cv::Scalar(90, 90, 90));
  cv::Mat frame = image.clone();
  assistant_.DrawPose(frame);
  EXPECT_FALSE(support::SameMat(frame, image));
}

TEST_F(Assistant, ReportsATargetInWhichItsSheetCannotBeDrawn) {
  unit::PointLists flat = poses_;
  for (size_t i = 0; i < flat[1].size(); ++i) {
    // Two rows of the grid only, each circle many times: an area, but no image of the sheet.
    flat[1][i] = {100.0 + 50.0 * static_cast<double>(i % 2), 100.0 + 50.0 * static_cast<double>(i % 3)};
  }
  unit::WriteAssistantModel(path_, flat);
  EXPECT_EQ(unit::PrintedBy([&] { assistant_.Start(path_); }),
            "ERROR : Cannot use assistant model '" + path_ +
                "': the points of 'points1' are no picture of the sheet\n");
  EXPECT_EQ(assistant_.GetGoal(), -1);
  const cv::Mat image(480, 640, CV_8UC3, cv::Scalar(90, 90, 90));
  cv::Mat frame = image.clone();
  assistant_.DrawPose(frame);
  EXPECT_SAME_MAT(frame, image);
}

TEST_F(Assistant, DrawsItsSheetWhereTheTargetIs) {
  const cv::Size frameSize(1800, 1280);
  nlohmann::json model = nlohmann::json::parse(support::ReadText(path_));
  model["imgWidth"] = frameSize.width;
  model["imgHeight"] = frameSize.height;
  model["count"] = 1;
  std::vector<float> numbers;
  for (const cv::Point2f& circle : unit::SheetCircles()) {
    numbers.push_back(circle.x);
    numbers.push_back(circle.y);
  }
  model["points0"]["data"] = numbers;
  support::WriteText(path_, model.dump());
  CalibAssistant assistant(frameSize.width, frameSize.height, 4, 11);
  assistant.Start(path_);
  cv::Mat frame(frameSize, CV_8UC3, cv::Scalar::all(100));
  assistant.DrawPose(frame);
  // Whatever the pulse is just now: red has less green than orange, and both less blue than the paper.
  for (int circle = 0; circle < 8; ++circle) {
    const cv::Point2f centre = unit::SheetCircles()[static_cast<size_t>(circle)];
    const auto rim = frame.at<cv::Vec3b>(cv::Point(centre) + cv::Point(9, 0));
    EXPECT_LT(rim[0], 100) << circle;
    EXPECT_GT(rim[2], 150) << circle;
    if (circle < 4) {
      EXPECT_LT(rim[1], 100) << circle;
    } else {
      EXPECT_GT(rim[1], 100) << circle;
    }
  }
  // The paper ends at its right edge, where the outline is darker than the frame beside it.
  EXPECT_LT(frame.at<cv::Vec3b>(600, 1753)[0], 90);
  EXPECT_EQ(frame.at<cv::Vec3b>(600, 1770), cv::Vec3b(100, 100, 100));
  EXPECT_LT(frame.at<cv::Vec3b>(0, 1753)[0], 90);
}

TEST_F(Assistant, DrawsChecksAndChangesPosesFromSeveralThreads) {
  const unit::ScopedLogLevel silent(0);
  constexpr int ROUNDS = 40;
  unit::ThreadGroup threadGroup;
  for (int thread = 0; thread < 2; ++thread) {
    threadGroup.Add([&] {
      cv::Mat frame(480, 640, CV_8UC3, cv::Scalar(90, 90, 90));
      for (int i = 0; i < ROUNDS; ++i) assistant_.DrawPose(frame);
    });
  }
  threadGroup.Add([&] {
    for (int i = 0; i < 20 * ROUNDS; ++i) {
      assistant_.CheckValidity(poses_[static_cast<size_t>(i) % 3]);
      EXPECT_GE(assistant_.GetScore(), 0.0F);
      const int goal = assistant_.GetGoal();
      EXPECT_TRUE(goal == -2 || goal == -1 || goal == 3) << goal;
    }
  });
  threadGroup.Add([&] {
    for (int i = 0; i < ROUNDS; ++i) assistant_.Start(i % 4 == 3 ? folder_.File("missing.json") : path_);
  });
  threadGroup.Add([&] {
    for (int i = 0; i < 20 * ROUNDS; ++i) {
      assistant_.Next();
      if (i % 3 == 0) assistant_.Reset();
      if (i % 50 == 0) assistant_.Stop();
      std::this_thread::yield();
    }
  });
  threadGroup.RunToTheEnd();
  assistant_.Start(path_);
  EXPECT_TRUE(assistant_.CheckValidity(poses_[0]));
}

}  // namespace
