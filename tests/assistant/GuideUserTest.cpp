/// Users who do what the guide says, blindly, reach every shipped pose.
#include <gtest/gtest.h>

#include <opencv2/calib3d.hpp>

#include "Placement.h"
#include "assistant/GuideScenes.h"
#include "assistant/ObedientUser.h"

using namespace velmora;

namespace {

constexpr double FRAMES_PER_SECOND = 30.0;
constexpr double PATIENCE = 60.0;  ///< simulated seconds for a pose
/// A line that is read by somebody: this many different ones on a way at most.
constexpr int MOST_LINES = 30;
constexpr int USUAL_LINES = 13;

struct Walk {
  bool reached = false;
  int lines = 0;
  std::string text;  ///< of all lines, for a failure
};

/// From the start to the guide's target.
Walk Follow(Guide& guide, unit::ObedientUser user, double& time) {
  Walk walk;
  std::string last;
  for (const double end = time + PATIENCE; time < end; time += 1.0 / FRAMES_PER_SECOND) {
    const GuideAnswer answer = guide.Look(user.Show(time));
    if (answer.instruction != last) {
      ++walk.lines;
      walk.text += answer.instruction + "; ";
      last = answer.instruction;
    }
    if (answer.state == GuideState::Reached) {
      walk.reached = true;
      break;
    }
    user.Obey(answer, 1.0 / FRAMES_PER_SECOND);
  }
  return walk;
}

/// In the middle, far away, near and tilted, in two corners, turned, upside down, and tilted both ways.
std::vector<world::Pose> Starts(const world::Camera& camera, const world::Sheet& sheet) {
  //                                                 x     y     span  tiltY tiltX roll
  const std::vector<world::Appearance> appearances = {
      {0.0, 0.0, 0.5, 0.0, 0.0, 0.0},      {0.0, 0.0, 0.25, 0.0, 0.0, 0.0},
      {0.0, 0.0, 0.7, -30.0, 0.0, 0.0},    {0.9, 0.9, 0.45, 0.0, 0.0, 0.0},
      {-0.9, -0.9, 0.45, 0.0, 0.0, 80.0},  {0.0, 0.0, 0.45, 0.0, 0.0, 178.0},
      {0.0, 0.0, 0.45, 30.0, 35.0, -150.0}};
  std::vector<world::Pose> starts;
  for (const world::Appearance& appearance : appearances) {
    const cv::Matx33d upright(0.0, 1.0, 0.0, -1.0, 0.0, 0.0, 0.0, 0.0, 1.0);
    world::Pose pose;
    EXPECT_TRUE(world::Place({{world::RigCamera{camera}, 10.0}}, sheet,
                             world::RotationFor(appearance) * upright, appearance, pose));
    starts.push_back(pose);
  }
  return starts;
}

class GuidedUsers : public ::testing::TestWithParam<cv::Size> {
 protected:
  /// Every pose from every start.
  void ReachAllBefore(const world::Camera& camera, bool mirrored) {
    const world::Sheet sheet = unit::UsualSheet();
    Guide guide = unit::GuideWithPoses(camera.size, mirrored);
    ASSERT_EQ(guide.Targets(), 12);
    const std::vector<world::Pose> starts = Starts(camera, sheet);
    double time = 0.0;
    int lines = 0;
    int walks = 0;
    for (; guide.TargetNumber() > 0; guide.Advance()) {
      for (size_t start = 0; start < starts.size(); ++start) {
        time += 10.0;
        const Walk walk = Follow(guide, unit::ObedientUser(camera, sheet, starts[start], mirrored), time);
        EXPECT_TRUE(walk.reached) << "pose " << guide.TargetNumber() << " from " << start << ": "
                                  << walk.text;
        EXPECT_LE(walk.lines, MOST_LINES) << "pose " << guide.TargetNumber() << ": " << walk.text;
        lines += walk.lines;
        ++walks;
      }
    }
    EXPECT_EQ(walks, 84);
    EXPECT_LE(lines, USUAL_LINES * walks);
  }
};

TEST_P(GuidedUsers, ReachEveryPoseFromEverywhere) {
  ReachAllBefore(unit::UsualCamera(GetParam()), false);
}

TEST_P(GuidedUsers, ReachThemInAMirroredPicture) {
  ReachAllBefore(unit::UsualCamera(GetParam()), true);
}

TEST_P(GuidedUsers, ReachThemBeforeALensThatBends) {
  ReachAllBefore(world::CameraFromFieldOfView(GetParam(), 60.0, {-0.2, 0.05, 0.001, -0.001}), false);
}

TEST_P(GuidedUsers, ReachThemBeforeAWiderLensThanTheGuideTakesItFor) {
  ReachAllBefore(world::CameraFromFieldOfView(GetParam(), 78.0), false);
}

INSTANTIATE_TEST_SUITE_P(Sizes, GuidedUsers, ::testing::ValuesIn(unit::FRAME_SIZES));

}  // namespace
