/// What the guide says of views whose truth is known.
#include "velmora/Guide.h"

#include <gtest/gtest.h>

#include "assistant/GuideScenes.h"
#include "assistant/ObedientUser.h"
#include "finder/RobustFinder.h"

using namespace velmora;

namespace {

using Centres = std::vector<cv::Point2d>;

/// A way off the target, and what undoes it.
struct Off {
  cv::Vec3d rotation;  ///< radians
  cv::Vec3d way;       ///< in depths of the sheet
  const char* undo;
  const char* undoMirrored;
};

const std::vector<Off> OFFS = {
    {{}, {0.15, 0.0, 0.0}, "left", "right"},
    {{}, {-0.15, 0.0, 0.0}, "right", "left"},
    {{}, {0.0, 0.15, 0.0}, "up", "up"},
    {{}, {0.0, -0.15, 0.0}, "down", "down"},
    {{0.0, 0.0, 0.5}, {}, "turn it anticlockwise", "turn it clockwise"},
    {{0.0, 0.0, -0.5}, {}, "turn it clockwise", "turn it anticlockwise"},
    {{0.0, 0.0, 3.0}, {}, "turn it round", "turn it round"},
    {{0.0, 0.75, 0.0},
     {},
     "tilt the right edge away from the camera",
     "tilt the left edge away from the camera"},
    {{0.0, -0.75, 0.0},
     {},
     "tilt the left edge away from the camera",
     "tilt the right edge away from the camera"},
    {{0.75, 0.0, 0.0},
     {},
     "tilt the top edge away from the camera",
     "tilt the top edge away from the camera"},
    {{-0.75, 0.0, 0.0},
     {},
     "tilt the bottom edge away from the camera",
     "tilt the bottom edge away from the camera"},
};

double DepthOf(const world::Pose& pose) {
  return world::ToCamera({unit::UsualSheet().GridMiddle()}, pose).front().z;
}

class TheGuide : public ::testing::TestWithParam<cv::Size> {
 protected:
  Guide guide_ = unit::GuideWithPoses(GetParam());
  const world::Camera camera_ = unit::UsualCamera(GetParam());
  double time_ = 0.0;

  Centres AtTarget() const { return unit::CentresAt(camera_, unit::PoseAtTarget(guide_, camera_)); }
};

TEST_P(TheGuide, SaysWhatUndoesEachWayOffTheTarget) {
  Guide mirrored = unit::GuideWithPoses(GetParam(), true);
  for (; guide_.TargetNumber() > 0; guide_.Advance(), mirrored.Advance()) {
    const world::Pose target = unit::PoseAtTarget(guide_, camera_);
    for (const Off& off : OFFS) {
      const Centres centres = unit::CentresAt(
          camera_, unit::Displaced(target, unit::UsualSheet(), off.rotation, DepthOf(target) * off.way));
      const double start = time_;
      const GuideAnswer answer = unit::AnswerTo(guide_, unit::FrameOf(centres, 0.0), time_);
      EXPECT_EQ(answer.state, GuideState::Away) << guide_.TargetNumber() << " " << off.undo;
      EXPECT_EQ(answer.instruction, off.undo) << guide_.TargetNumber();
      time_ = start;
      EXPECT_EQ(unit::AnswerTo(mirrored, unit::FrameOf(centres, 0.0), time_).instruction, off.undoMirrored);
      time_ += 5.0;
    }
  }
}

TEST_P(TheGuide, AsksForAnotherDistance) {
  for (; guide_.TargetNumber() > 0; guide_.Advance()) {
    const world::Pose target = unit::PoseAtTarget(guide_, camera_);
    const cv::Point3d middle = world::ToCamera({unit::UsualSheet().GridMiddle()}, target).front();
    const auto at = [&](double share) {
      world::Pose pose = target;
      pose.tvec += (share - 1.0) * cv::Vec3d(middle.x, middle.y, middle.z);
      return unit::AnswerTo(guide_, unit::FrameOf(unit::CentresAt(camera_, pose), 0.0), time_).instruction;
    };
    EXPECT_EQ(at(1.5), "closer");
    EXPECT_EQ(at(0.75), "farther");
  }
}

TEST_P(TheGuide, TakesTheTargetOnceItIsHeldStill) {
  for (; guide_.TargetNumber() > 0; guide_.Advance()) {
    const Centres centres = AtTarget();
    time_ += 10.0;
    for (int frame = 0; frame < 9; ++frame) {
      const GuideAnswer answer = guide_.Look(unit::FrameOf(centres, time_ + frame / 30.0));
      EXPECT_EQ(answer.state, GuideState::HoldStill) << frame;
      EXPECT_EQ(answer.instruction, "hold still");
      EXPECT_EQ(answer.refusal, "");
    }
    const GuideAnswer answer = guide_.Look(unit::FrameOf(centres, time_ + 9 / 30.0));
    EXPECT_EQ(answer.state, GuideState::Reached);
    EXPECT_EQ(answer.closeness, 1.0);
    EXPECT_EQ(answer.instruction, "");
  }
  EXPECT_EQ(guide_.Look(unit::FrameOf(guide_.Target(), time_)).state, GuideState::NoTarget);
}

TEST_P(TheGuide, IsTheMoreContentTheNearerTheSheetIs) {
  const world::Pose target = unit::PoseAtTarget(guide_, camera_);
  double last = -1.0;
  for (const double off : {3.0, 1.0, 0.5, 0.3, 0.2, 0.1, 0.0}) {
    const world::Pose pose =
        unit::Displaced(target, unit::UsualSheet(), {}, {off * DepthOf(target), 0.0, 0.0});
    const double closeness =
        unit::AnswerTo(guide_, unit::FrameOf(unit::CentresAt(camera_, pose), 0.0), time_).closeness;
    EXPECT_GT(closeness, last) << off;
    EXPECT_LE(closeness, 1.0);
    last = closeness;
  }
  EXPECT_EQ(last, 1.0);
  EXPECT_EQ(guide_.Look(unit::FrameOf({}, time_)).closeness, 0.0);
}

TEST_P(TheGuide, TakesSharpRenderedFramesAndRefusesSoftOnes) {
  for (const int number : {1, 9, 12}) {
    while (guide_.TargetNumber() < number) guide_.Advance();
    const world::Pose pose = unit::PoseAtTarget(guide_, camera_);
    const double pixel = GetParam().width / 640.0;
    for (const double blur : {0.7, 0.5 + 0.6 * pixel}) {
      GuideFrame frame = unit::FrameOf({}, 0.0);
      frame.image = unit::RenderedAt(camera_, pose, blur);
      frame.centres = SearchGridRobust(frame.image, {4, 11}).centres;
      const GuideAnswer answer = unit::AnswerTo(guide_, frame, time_);
      EXPECT_EQ(answer.state, GuideState::Reached) << number << " blur " << blur << answer.refusal;
      EXPECT_EQ(guide_.ReasonAgainst(frame), "");
    }
    GuideFrame frame = unit::FrameOf(unit::CentresAt(camera_, pose), 0.0);
    frame.image = unit::RenderedAt(camera_, pose, 5.0 * pixel);
    const GuideAnswer answer = unit::AnswerTo(guide_, frame, time_);
    EXPECT_EQ(answer.state, GuideState::Refused) << number;
    EXPECT_EQ(answer.refusal, "the image is out of focus");
    EXPECT_EQ(answer.instruction, "out of focus: set the focus");
    EXPECT_EQ(guide_.ReasonAgainst(frame), answer.refusal);
  }
}

TEST_P(TheGuide, RefusesFramesThatWereTakenInMovement) {
  const world::Pose pose = unit::PoseAtTarget(guide_, camera_);
  const double way = 12.0 / 640.0 * GetParam().width * DepthOf(pose) / camera_.lens.K()(0, 0);
  for (const cv::Vec3d& direction :
       {cv::Vec3d(1.0, 0.0, 0.0), cv::Vec3d(0.0, 1.0, 0.0), cv::Vec3d(0.7, 0.7, 0.0)}) {
    GuideFrame frame = unit::FrameOf(unit::CentresAt(camera_, pose), 0.0);
    frame.image = unit::SmearedAt(camera_, pose, way * direction);
    const GuideAnswer answer = unit::AnswerTo(guide_, frame, time_);
    EXPECT_EQ(answer.state, GuideState::Refused);
    EXPECT_EQ(answer.refusal, "the sheet moved while the image was taken");
    EXPECT_EQ(answer.instruction, "hold still");
    frame.image = unit::SmearedAt(camera_, pose, 0.15 * way * direction);
    EXPECT_EQ(unit::AnswerTo(guide_, frame, time_).state, GuideState::Reached);
  }
}

TEST_P(TheGuide, WaitsWhileTheSheetMoves) {
  const Centres centres = AtTarget();
  const double step = 0.004 * GetParam().width;
  for (int frame = 0; frame < 30; ++frame) {
    Centres moved = centres;
    for (cv::Point2d& centre : moved) centre.x += frame % 2 == 0 ? 0.0 : step;
    const GuideFrame now = unit::FrameOf(moved, frame / 30.0);
    const GuideAnswer answer = guide_.Look(now);
    EXPECT_EQ(answer.state, GuideState::HoldStill);
    if (frame > 0) {
      EXPECT_EQ(answer.refusal, "the sheet is moving");
      EXPECT_EQ(guide_.ReasonAgainst(now), answer.refusal);
    }
  }
}

TEST_P(TheGuide, TakesAHandThatTrembles) {
  const world::Pose pose = unit::PoseAtTarget(guide_, camera_);
  cv::RNG random(5);
  int reached = 0;
  for (int frame = 0; frame < 60; ++frame) {
    world::Pose shaken = pose;
    for (int i = 0; i < 3; ++i) {
      shaken.tvec[i] += random.gaussian(3e-4);
      shaken.rvec[i] += random.gaussian(1e-3);
    }
    reached += guide_.Look(unit::FrameOf(unit::CentresAt(camera_, shaken), frame / 30.0)).state ==
               GuideState::Reached;
  }
  EXPECT_GT(reached, 25);
}

TEST_P(TheGuide, RefusesAViewThatWasKept) {
  const Centres centres = AtTarget();
  EXPECT_EQ(guide_.ReasonAgainst(unit::FrameOf(centres, 0.0)), "");
  guide_.Kept(centres);
  const GuideAnswer answer = unit::AnswerTo(guide_, unit::FrameOf(centres, 0.0), time_);
  EXPECT_EQ(answer.state, GuideState::Refused);
  EXPECT_EQ(answer.refusal, "it is the same view as one before");
  EXPECT_EQ(answer.instruction, "taken already: skip it");
  EXPECT_EQ(guide_.ReasonAgainst(unit::FrameOf(centres, 9.0)), answer.refusal);
  Centres other = centres;
  for (cv::Point2d& centre : other) centre.x += 0.05 * GetParam().width;
  EXPECT_EQ(guide_.ReasonAgainst(unit::FrameOf(other, 9.0)), "");
  guide_.TakenBack();
  EXPECT_EQ(guide_.ReasonAgainst(unit::FrameOf(centres, 9.0)), "");
}

INSTANTIATE_TEST_SUITE_P(Sizes, TheGuide, ::testing::ValuesIn(unit::FRAME_SIZES));

}  // namespace
