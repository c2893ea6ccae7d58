/// What the guide says of frames without a grid, of parts, of pairs, and of what makes no sense.
#include <gtest/gtest.h>

#include <limits>

#include "TemporaryFolder.h"
#include "assistant/GuideScenes.h"
#include "finder/RobustFinder.h"
#include "velmora/Guide.h"

using namespace velmora;

namespace {

using Centres = std::vector<cv::Point2d>;

class AGuide : public ::testing::Test {
 protected:
  Guide guide_ = unit::GuideWithPoses({640, 480});
  double time_ = 0.0;

  std::string SaysOf(const std::string& whyNotFound) {
    GuideFrame frame;
    frame.whyNotFound = whyNotFound;
    time_ += 10.0;
    return unit::AnswerTo(guide_, frame, time_).instruction;
  }
};

TEST_F(AGuide, SaysWhatMakesTheGridBeFound) {
  EXPECT_EQ(SaysOf(""), "show the grid");
  EXPECT_EQ(SaysOf(DescribeFault(GridFault::NothingLikeIt)), "show the grid");
  EXPECT_EQ(SaysOf(DescribeFault(GridFault::PartOutside)), "part of the grid is outside the picture");
  EXPECT_EQ(SaysOf(DescribeFault(GridFault::CirclesTooSmall)), "closer");
  EXPECT_EQ(SaysOf(DescribeFault(GridFault::CirclesTooLarge)), "farther");
  EXPECT_EQ(SaysOf(DescribeFault(GridFault::PartlyHidden)), "part of the grid is hidden");
  EXPECT_EQ(guide_.ReasonAgainst({}), "the grid is not in sight");
}

TEST_F(AGuide, SaysTheWayBackToAGridThatHasJustLeftThePicture) {
  const std::vector<std::pair<cv::Point2d, std::string>> ways = {
      {{-60.0, 0.0}, "right"}, {{60.0, 0.0}, "left"}, {{0.0, -52.0}, "down"}, {{0.0, 52.0}, "up"}};
  for (const auto& [way, back] : ways) {
    Centres centres = guide_.Target();
    for (cv::Point2d& centre : centres) centre += way;
    time_ += 10.0;
    unit::AnswerTo(guide_, unit::FrameOf(centres, 0.0), time_);
    GuideFrame lost;
    lost.whyNotFound = DescribeFault(GridFault::PartOutside);
    EXPECT_EQ(unit::AnswerTo(guide_, lost, time_).instruction, back);
  }
}

TEST_F(AGuide, KeepsItsLineWhenTheSearchLosesASingleFrame) {
  Centres centres = guide_.Target();
  for (cv::Point2d& centre : centres) centre.x += 60.0;
  EXPECT_EQ(unit::AnswerTo(guide_, unit::FrameOf(centres, 0.0), time_).instruction, "left");
  const GuideAnswer lost = guide_.Look(unit::FrameOf({}, time_ + 0.03));
  EXPECT_EQ(lost.state, GuideState::NotFound);
  EXPECT_EQ(lost.instruction, "left");
  EXPECT_EQ(guide_.Look(unit::FrameOf(centres, time_ + 0.06)).instruction, "left");
}

TEST_F(AGuide, WantsAllCirclesSeenAtTheTarget) {
  GuideFrame frame = unit::FrameOf(guide_.Target(), 0.0);
  frame.weights.assign(44, 1.0);
  EXPECT_EQ(unit::AnswerTo(guide_, frame, time_).state, GuideState::Reached);
  frame.weights[7] = 0.0;
  const GuideAnswer answer = unit::AnswerTo(guide_, frame, time_);
  EXPECT_EQ(answer.state, GuideState::Away);
  EXPECT_EQ(answer.instruction, "part of the grid is hidden");
  EXPECT_EQ(guide_.ReasonAgainst(frame), "");
}

TEST_F(AGuide, WantsTheRightCameraOfAPairToSeeTheGridToo) {
  Guide pair({{4, 11}, {640, 480}, 2});
  pair.LoadTargets(VELMORA_POSES_JSON);
  GuideFrame frame = unit::FrameOf(pair.Target(), 0.0);
  const GuideAnswer answer = unit::AnswerTo(pair, frame, time_);
  EXPECT_EQ(answer.state, GuideState::Away);
  EXPECT_EQ(answer.instruction, "the right camera does not see the grid");
  EXPECT_EQ(pair.ReasonAgainst(frame), answer.instruction);
  frame.rightCentres = pair.Target();
  EXPECT_EQ(unit::AnswerTo(pair, frame, time_).state, GuideState::Reached);
}

TEST_F(AGuide, TakesGridsOfOtherSizes) {
  const world::Sheet sheet(cv::Size(5, 7), 0.03);
  const world::Camera camera = unit::UsualCamera({800, 600});
  const world::Pose pose{{0.0, 0.0, 1.57}, {0.1, -0.12, 0.6}};
  const Centres centres = world::TrueCentres(camera.lens, sheet, pose);
  Guide guide({{5, 7}, {800, 600}});
  guide.SetTarget(centres);
  EXPECT_EQ(guide.TargetNumber(), 1);
  EXPECT_EQ(unit::AnswerTo(guide, unit::FrameOf(centres, 0.0), time_).state, GuideState::Reached);
  Centres beside = centres;
  for (cv::Point2d& centre : beside) centre.y -= 100.0;
  EXPECT_EQ(unit::AnswerTo(guide, unit::FrameOf(beside, 0.0), time_).instruction, "down");
}

TEST_F(AGuide, SaysTheSameToTheSameFrames) {
  Guide other = unit::GuideWithPoses({640, 480});
  cv::RNG random(3);
  for (int frame = 0; frame < 200; ++frame) {
    Centres centres = guide_.Target();
    const cv::Point2d way(random.gaussian(60.0), random.gaussian(60.0));
    for (cv::Point2d& centre : centres) centre += way;
    const GuideFrame now = unit::FrameOf(frame % 7 == 0 ? Centres() : centres, frame / 10.0);
    const GuideAnswer a = guide_.Look(now);
    const GuideAnswer b = other.Look(now);
    EXPECT_EQ(a.instruction, b.instruction);
    EXPECT_EQ(a.closeness, b.closeness);
    EXPECT_EQ(a.state, b.state);
  }
}

TEST_F(AGuide, RefusesWhatMakesNoSense) {
  EXPECT_THROW(Guide({{1, 11}, {640, 480}}), std::invalid_argument);
  EXPECT_THROW(Guide({{4, 11}, {0, 480}}), std::invalid_argument);
  EXPECT_THROW(Guide({{4, 11}, {640, 480}, 3}), std::invalid_argument);
  GuideFrame frame = unit::FrameOf(guide_.Target(), 0.0);
  frame.centres.pop_back();
  EXPECT_THROW(guide_.Look(frame), std::invalid_argument);
  frame = unit::FrameOf(guide_.Target(), 0.0);
  frame.weights.assign(3, 1.0);
  EXPECT_THROW(guide_.Look(frame), std::invalid_argument);
  frame.weights.clear();
  frame.centres[0].x = std::numeric_limits<double>::quiet_NaN();
  EXPECT_THROW(guide_.Look(frame), std::invalid_argument);
  frame = unit::FrameOf(guide_.Target(), std::numeric_limits<double>::infinity());
  EXPECT_THROW(guide_.Look(frame), std::invalid_argument);
  frame = unit::FrameOf(guide_.Target(), 0.0);
  frame.image = cv::Mat(480, 641, CV_8UC1);
  EXPECT_THROW(guide_.Look(frame), std::invalid_argument);
  frame.image = cv::Mat(480, 640, CV_16UC1);
  EXPECT_THROW(guide_.ReasonAgainst(frame), std::invalid_argument);
}

TEST_F(AGuide, KeepsItsTargetsWhenOthersCannotBeUsed) {
  const support::TemporaryFolder folder;
  guide_.Advance();
  const Centres target = guide_.Target();
  EXPECT_THROW(guide_.LoadTargets(folder.File("missing.json")), std::runtime_error);
  EXPECT_THROW(guide_.SetTarget(Centres(44, {5.0, 5.0})), std::invalid_argument);
  EXPECT_THROW(guide_.SetTargets({target, Centres(3)}), std::invalid_argument);
  EXPECT_THROW(guide_.SetReached({13}), std::invalid_argument);
  EXPECT_THROW(guide_.Kept(Centres(3)), std::invalid_argument);
  EXPECT_EQ(guide_.Targets(), 12);
  EXPECT_EQ(guide_.TargetNumber(), 2);
  EXPECT_EQ(guide_.Target(), target);
}

}  // namespace
