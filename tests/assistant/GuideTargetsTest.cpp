/// The order of targets, and what views have to do with them.
#include "assistant/GuideTargets.h"

#include <gtest/gtest.h>

#include "assistant/AssistantModel.h"
#include "assistant/GuideScenes.h"

using namespace velmora;

namespace {

using Centres = std::vector<cv::Point2d>;
using Numbers = std::vector<int>;

class Targets : public ::testing::Test {
 protected:
  Targets() {
    for (const cv::Mat& pose : ReadAssistantModel(VELMORA_POSES_JSON, {640, 480}, {4, 11}).poses)
      poses_.emplace_back(pose.begin<cv::Vec2f>(), pose.end<cv::Vec2f>());
    poses_.resize(4);
    targets_.Set(poses_);
  }

  void TakeCurrent() {
    targets_.Keep(targets_.Current()->Centres());
    targets_.Advance();
  }

  const GuideView view_{{4, 11}, {640, 480}};
  std::vector<Centres> poses_;
  GuideTargets targets_{view_};
};

TEST_F(Targets, ComeOneAfterTheOther) {
  for (int number = 1; number <= 4; ++number) {
    EXPECT_EQ(targets_.Number(), number);
    EXPECT_EQ(targets_.Current()->Centres(), poses_[static_cast<size_t>(number) - 1]);
    targets_.Advance();
  }
  EXPECT_EQ(targets_.Number(), 0);
  EXPECT_EQ(targets_.Current(), nullptr);
  EXPECT_EQ(targets_.Reached(), (Numbers{1, 2, 3, 4}));
  targets_.Advance();
  targets_.Skip();
  EXPECT_EQ(targets_.Number(), 0);
}

TEST_F(Targets, ThatWereSkippedComeOnceMoreAfterAllOthers) {
  targets_.Skip();
  EXPECT_EQ(targets_.Number(), 2);
  targets_.Advance();
  targets_.Skip();
  targets_.Advance();
  EXPECT_EQ(targets_.Number(), 1);
  targets_.Skip();
  EXPECT_EQ(targets_.Number(), 3);
  targets_.Advance();
  EXPECT_EQ(targets_.Number(), 0);
  EXPECT_EQ(targets_.Reached(), (Numbers{2, 3, 4}));
  EXPECT_EQ(targets_.LeftOut(), (Numbers{1}));
}

TEST_F(Targets, ThatAreTheLastAreLeftOutAtOnce) {
  targets_.SetReached({1, 2, 4});
  EXPECT_EQ(targets_.Number(), 3);
  targets_.Skip();
  EXPECT_EQ(targets_.Number(), 0);
  EXPECT_EQ(targets_.LeftOut(), (Numbers{3}));
}

TEST_F(Targets, ComeBackWithTheViewsThatReachedThem) {
  TakeCurrent();
  TakeCurrent();
  targets_.Keep(poses_[3]);  // by hand
  EXPECT_EQ(targets_.Number(), 3);
  EXPECT_TRUE(targets_.TakeBack());
  EXPECT_EQ(targets_.Number(), 3);
  EXPECT_TRUE(targets_.TakeBack());
  EXPECT_EQ(targets_.Number(), 2);
  EXPECT_TRUE(targets_.TakeBack());
  EXPECT_EQ(targets_.Number(), 1);
  EXPECT_FALSE(targets_.TakeBack());
  EXPECT_EQ(targets_.Reached(), Numbers());
}

TEST_F(Targets, GoOnWhereASessionEnded) {
  Centres near = poses_[2];
  for (cv::Point2d& centre : near) centre.x += 5.0;
  Centres far = poses_[0];
  for (cv::Point2d& centre : far) centre.x += 60.0;
  const std::vector<Centres> views = {poses_[1], far, {}, near};
  EXPECT_EQ(targets_.ReachedBy(views), (Numbers{2, 3}));
  EXPECT_EQ(targets_.ReachedBy({poses_[1], poses_[1]}), (Numbers{2}));
  targets_.Keep(poses_[1]);
  targets_.Keep(near);
  targets_.SetReached({2, 3});
  EXPECT_EQ(targets_.Number(), 1);
  EXPECT_TRUE(targets_.TakeBack());
  EXPECT_EQ(targets_.Number(), 3);
}

TEST_F(Targets, BeginAgainWithoutViews) {
  TakeCurrent();
  targets_.Skip();
  targets_.Restart();
  EXPECT_EQ(targets_.Number(), 1);
  EXPECT_EQ(targets_.Views(), 0);
  EXPECT_FALSE(targets_.IsKept(poses_[0]));
}

TEST_F(Targets, LeaveViewsAsTheyAreWhenOthersAreSet) {
  TakeCurrent();
  targets_.Set({poses_[2]});
  EXPECT_EQ(targets_.Count(), 1);
  EXPECT_EQ(targets_.Number(), 1);
  EXPECT_TRUE(targets_.IsKept(poses_[0]));
  EXPECT_TRUE(targets_.TakeBack());
  EXPECT_EQ(targets_.Number(), 1);
}

TEST_F(Targets, DoNotCallShippedPosesTheSame) {
  for (const cv::Mat& pose : ReadAssistantModel(VELMORA_POSES_JSON, {640, 480}, {4, 11}).poses) {
    const Centres centres(pose.begin<cv::Vec2f>(), pose.end<cv::Vec2f>());
    EXPECT_FALSE(targets_.IsKept(centres));
    targets_.Keep(centres);
    EXPECT_TRUE(targets_.IsKept(centres));
  }
}

}  // namespace
