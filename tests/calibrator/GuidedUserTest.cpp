/// A user who follows the assistant: the sheet moves towards whatever pose is shown, frame by frame.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "Calibrator.h"
#include "LensError.h"
#include "Reach.h"
#include "Renderer.h"
#include "Views.h"
#include "assistant/AssistantModel.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

constexpr double FRAMES_PER_SECOND = 30.0;
constexpr double PATIENCE = 60.0;  ///< simulated seconds for the whole sequence

/// Hands that move the sheet: quickly from afar, slowly when near, never quite still.
class Hands {
 public:
  explicit Hands(const world::Pose& start) : pose_(start) {}

  /// The pose one frame later, on the way to the target.
  world::Pose MoveTowards(const world::Pose& target) {
    constexpr double SPEED = 0.5;     // metres and radians per second at most
    constexpr double EASING = 3.0;    // of the way left, per second
    constexpr double TREMBLE = 4e-4;  // metres
    Advance(pose_.tvec, target.tvec, SPEED, EASING);
    Advance(pose_.rvec, target.rvec, 2.0 * SPEED, EASING);
    world::Pose shaken = pose_;
    for (int i = 0; i < 3; ++i) {
      shaken.tvec[i] += random_.gaussian(TREMBLE);
      shaken.rvec[i] += random_.gaussian(4.0 * TREMBLE);
    }
    return shaken;
  }

 private:
  static void Advance(cv::Vec3d& at, const cv::Vec3d& target, double speed, double easing) {
    const cv::Vec3d left = target - at;
    const double distance = cv::norm(left);
    if (distance == 0.0) return;
    const double step = std::min(speed, easing * distance) / FRAMES_PER_SECOND;
    at += left * std::min(1.0, step / distance);
  }

  world::Pose pose_;
  cv::RNG random_{77};
};

/// Runs of equal statuses as one.
void Note(std::vector<int>& statuses, int status) {
  if (statuses.empty() || statuses.back() != status) statuses.push_back(status);
}

TEST(GuidedUser, TakesAllSnapshotsAndGetsTheResultByFollowingTheShippedPoses) {
  const unit::ScopedLogLevel quiet(1);
  world::Scene scene;
  scene.camera = unit::DistortedCamera();
  scene.sheet = world::Sheet(unit::GRID, static_cast<double>(unit::UNIT));
  scene.blur = 0.6;
  scene.noise = 2.0;
  scene.light = 0.2;
  world::Renderer renderer(scene);
  const AssistantModel model = ReadAssistantModel(VELMORA_POSES_JSON, unit::FRAME, unit::GRID);
  std::vector<world::Pose> targets;
  for (const cv::Mat& pose : model.poses) {
    targets.push_back(
        world::PoseNearest(scene.camera, scene.sheet, {pose.begin<cv::Vec2f>(), pose.end<cv::Vec2f>()}));
  }
  ASSERT_EQ(targets.size(), 12U);

  const auto calibrator = unit::MakeCalibrator();
  calibrator->EnableAssistant(VELMORA_POSES_JSON);
  ASSERT_EQ(calibrator->GetAssistantGoal(), 12);
  Hands hands(world::AwayPose(scene.camera, scene.sheet, targets.front()));
  std::vector<int> statuses;
  unit::PointLists taken;
  for (int frame = 0; calibrator->GetAssistantGoal() > 0; ++frame) {
    ASSERT_LT(frame / FRAMES_PER_SECOND, PATIENCE) << calibrator->GetNumberOfRecords() << " snapshots";
    const auto shown = static_cast<size_t>(calibrator->GetNumberOfRecords());
    ASSERT_LT(shown, targets.size());
    cv::Mat image = renderer.Render(hands.MoveTowards(targets[shown]), static_cast<std::uint64_t>(frame));
    std::vector<cv::Point2d> points;
    calibrator->DetectPoints(image, points, true);
    const int records = calibrator->GetNumberOfRecords();
    ASSERT_LE(records, static_cast<int>(shown) + 1);
    if (records > static_cast<int>(shown)) taken.push_back(points);
    Note(statuses, calibrator->GetStatus());
  }
  ASSERT_TRUE(unit::Eventually([&] {
    Note(statuses, calibrator->GetStatus());
    return statuses.back() == Calibrator::STATUS_COMPLETED;
  }));

  EXPECT_EQ(calibrator->GetNumberOfRecords(), 12);
  EXPECT_EQ(statuses, (std::vector<int>{Calibrator::STATUS_NOT_READY, Calibrator::STATUS_READY,
                                        Calibrator::STATUS_PROGRESS, Calibrator::STATUS_COMPLETED}));
  const cv::Matx33d trueK = scene.camera.lens.K();
  const cv::Mat K = calibrator->GetK();
  EXPECT_LT(calibrator->GetRMS(), 0.2F);
  EXPECT_NEAR(K.at<double>(0, 0), trueK(0, 0), 0.003 * trueK(0, 0));
  EXPECT_NEAR(K.at<double>(1, 1), trueK(1, 1), 0.003 * trueK(1, 1));
  EXPECT_NEAR(K.at<double>(0, 2), trueK(0, 2), 2.0);
  EXPECT_NEAR(K.at<double>(1, 2), trueK(1, 2), 2.0);
  const auto distance =
      world::MeanProjectionDistance(scene.camera.lens, world::LensFrom(K, calibrator->GetDistCoefs()),
                                    unit::FRAME, world::CoveredRegion(taken));
  EXPECT_LT(distance.mean, 0.5);
}

}  // namespace
