/// The shipped model of the assistant: how it is made, and how good its choice of poses is.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <opencv2/imgproc.hpp>
#include <sstream>

#include "Calibrator.h"
#include "Process.h"
#include "Reach.h"
#include "Renderer.h"
#include "TemporaryFolder.h"
#include "Views.h"
#include "poses/PoseList.h"
#include "poses/PoseModel.h"

namespace {

using support::Process;
using Centres = std::vector<cv::Point2d>;

constexpr std::chrono::minutes LONG_ENOUGH{2};
const cv::Size FRAME(640, 480);
const std::vector<double> DISTORTION = {-0.2, 0.06, 0.0008, -0.0006, -0.008};

world::Camera CameraOf(double fieldOfView) {
  return world::CameraFromFieldOfView(FRAME, fieldOfView, DISTORTION);
}

/// The poses of the shipped model, as it is read.
std::vector<Centres> ShippedPoses() {
  JSON model;
  EXPECT_TRUE(model.load(VELMORA_POSES_JSON));
  EXPECT_EQ(model.readInt("imgWidth"), FRAME.width);
  EXPECT_EQ(model.readInt("imgHeight"), FRAME.height);
  std::vector<Centres> poses;
  for (int i = 0; i < model.readInt("count"); ++i) {
    const cv::Mat points = model.readMat("points" + std::to_string(i));
    poses.emplace_back(points.begin<cv::Vec2f>(), points.end<cv::Vec2f>());
  }
  return poses;
}

std::string FaultOf(const std::string& list) {
  std::istringstream text(list);
  try {
    poses::ReadPoseList(text);
    return "";
  } catch (const std::runtime_error& fault) {
    return fault.what();
  }
}

TEST(PoseList, HoldsAPoseALineAndRemarks) {
  std::istringstream text("# remark\n\n  0.5 -1 0.7 10 -20 5 a corner\n0 0 0.8 0 0 0\n");
  const auto list = poses::ReadPoseList(text);
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0].x, 0.5);
  EXPECT_EQ(list[0].y, -1.0);
  EXPECT_EQ(list[0].span, 0.7);
  EXPECT_EQ(list[0].tiltY, 10.0);
  EXPECT_EQ(list[0].tiltX, -20.0);
  EXPECT_EQ(list[0].roll, 5.0);
}

TEST(PoseList, NamesTheLineThatIsWrong) {
  EXPECT_EQ(FaultOf("0 0 0.8 0 0 0\n0 0 0.8 0 0\n"), "line 2 does not hold six numbers");
  EXPECT_EQ(FaultOf("here and there\n"), "line 1 does not hold six numbers");
  EXPECT_EQ(FaultOf("2 0 0.8 0 0 0\n").substr(0, 7), "line 1:");
  EXPECT_EQ(FaultOf("0 0 0.8 0 nan 0\n").substr(0, 7), "line 1 ");
  EXPECT_EQ(FaultOf("# nothing\n"), "it holds no pose");
}

TEST(PosesProgram, MakesTheShippedModelOfItsList) {
  const support::TemporaryFolder folder;
  Process tool({VELMORA_POSES, VELMORA_POSES_LIST, "--output", folder.File("made.json")});
  ASSERT_EQ(tool.WaitForExit(LONG_ENOUGH), 0) << tool.Errors();
  EXPECT_EQ(tool.Output(), "12 poses written to " + folder.File("made.json") + "\n");
  JSON made;
  ASSERT_TRUE(made.load(folder.File("made.json")));
  const std::vector<Centres> shipped = ShippedPoses();
  ASSERT_EQ(made.readInt("count"), static_cast<int>(shipped.size()));
  for (size_t i = 0; i < shipped.size(); ++i) {
    const cv::Mat points = made.readMat("points" + std::to_string(i));
    ASSERT_EQ(points.rows, static_cast<int>(shipped[i].size()));
    for (int k = 0; k < points.rows; ++k) {
      const cv::Point2d point = points.at<cv::Point2f>(k);
      EXPECT_LT(cv::norm(point - shipped[i][static_cast<size_t>(k)]), 0.01) << i << ", disc " << k;
    }
  }
}

TEST(PosesProgram, ReportsWhatItCannotUse) {
  const support::TemporaryFolder folder;
  support::WriteText(folder.File("huge.txt"), "0 0 1 60 60 90\n");
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{folder.File("none.txt")}, "ERROR: '" + folder.File("none.txt") + "' cannot be read.\n"},
      {{folder.File("huge.txt")},
       "ERROR: '" + folder.File("huge.txt") + "': in pose 1 not all of the grid is in the image.\n"},
      {{VELMORA_POSES_LIST, "--output", "/nowhere/poses.json"},
       "ERROR: cannot write '/nowhere/poses.json'.\n"}};
  for (const auto& [words, message] : cases) {
    std::vector<std::string> command = {VELMORA_POSES};
    command.insert(command.end(), words.begin(), words.end());
    Process tool(command);
    EXPECT_EQ(tool.WaitForExit(LONG_ENOUGH), 2);
    EXPECT_EQ(tool.Errors(), message);
  }
}

TEST(ShippedPoses, AreReachedWithinHalfTheThresholdByCamerasOfAllUsualFieldsOfView) {
  constexpr double HALF_THE_THRESHOLD = 75.0;
  constexpr double REACH = 45.0;  // degrees, the steepest that the default search finds without fail
  const world::Sheet sheet;
  for (const double fieldOfView : {50.0, 55.0, 60.0, 65.0, 70.0, 75.0, 80.0}) {
    const world::Camera camera = CameraOf(fieldOfView);
    int number = 0;
    for (const Centres& target : ShippedPoses()) {
      ++number;
      const world::Pose pose = world::PoseNearest(camera, sheet, target);
      const Centres reached = world::TrueCentres(camera.lens, sheet, pose);
      const std::vector<cv::Point2f> shown(target.begin(), target.end());
      const cv::Size2f extent = cv::minAreaRect(shown).size;
      const double weight =
          std::sqrt((FRAME.width / double{extent.width} + FRAME.height / double{extent.height}) * 0.5);
      EXPECT_LT(cv::norm(reached, target, cv::NORM_L2) * weight, HALF_THE_THRESHOLD)
          << number << " at " << fieldOfView;
      EXPECT_TRUE(world::DiscsInside(camera, sheet, pose, 2.0)) << number << " at " << fieldOfView;
      EXPECT_LT(world::Obliqueness(sheet, pose), REACH) << number << " at " << fieldOfView;
      // No nearer than cameras focus, and no further than an arm reaches, for a sheet of 20 mm units.
      const double distance = cv::norm(world::ToCamera({sheet.GridMiddle()}, pose).front());
      EXPECT_GT(distance, 0.12) << number << " at " << fieldOfView;
      EXPECT_LT(distance, 0.60) << number << " at " << fieldOfView;
    }
  }
}

TEST(ShippedPoses, AreFoundByTheDefaultSearchInEveryUsualFieldOfView) {
  constexpr int TRIES = 3;  // a sheet in hands is never quite still
  world::Scene scene;
  scene.noise = 2.0;
  scene.blur = 0.6;
  Calibrator calibrator(scene.sheet.Grid(), 0.02F, Calibrator::MONOCULAR, FRAME.width, FRAME.height);
  for (const double fieldOfView : {50.0, 55.0, 60.0, 65.0, 70.0, 75.0, 80.0}) {
    scene.camera = CameraOf(fieldOfView);
    world::Renderer renderer(scene);
    int number = 0;
    for (const Centres& target : ShippedPoses()) {
      ++number;
      bool found = false;
      for (int attempt = 0; !found && attempt < TRIES; ++attempt) {
        world::Pose pose = world::PoseNearest(scene.camera, scene.sheet, target);
        pose.rvec[0] += 0.01 * attempt;
        cv::Mat image = renderer.Render(pose, static_cast<std::uint64_t>(attempt));
        Centres centres;
        found = calibrator.DetectPoints(image, centres, false);
      }
      EXPECT_TRUE(found) << number << " at " << fieldOfView;
    }
  }
}

/// Standard deviations of fx, fy, cx, cy that the rational model is told for these views with 0.1 px of
/// noise.
std::array<double, 4> Deviations(const world::Camera& camera, const std::vector<world::Pose>& views,
                                 std::uint64_t seed) {
  constexpr double NOISE = 0.1;
  const world::Sheet sheet;
  cv::RNG random(0x5eed + seed);
  Calibrator calibrator(sheet.Grid(), static_cast<float>(sheet.Unit()), Calibrator::MONOCULAR, FRAME.width,
                        FRAME.height);
  for (const world::Pose& pose : views) {
    Centres centres = world::TrueCentres(camera.lens, sheet, pose);
    for (cv::Point2d& centre : centres) centre += {random.gaussian(NOISE), random.gaussian(NOISE)};
    calibrator.AddPoints(centres);
  }
  EXPECT_GT(calibrator.ComputeCalibration(Calibrator::MODEL_RATIONAL), 0.0F);
  const cv::Mat all = calibrator.GetStdDevIntrinsics();
  return {all.at<double>(0), all.at<double>(1), all.at<double>(2), all.at<double>(3)};
}

double Median(std::vector<double> numbers) {
  std::sort(numbers.begin(), numbers.end());
  const size_t half = numbers.size() / 2;
  return 0.5 * (numbers[half - 1] + numbers[half]);
}

class ShippedPosesWorth : public ::testing::TestWithParam<double> {};

TEST_P(ShippedPosesWorth, IsMoreThanThatOfAsManyRandomViews) {
  constexpr int SEEDS = 20;
  const world::Camera camera = CameraOf(GetParam());
  const world::Sheet sheet;
  std::vector<world::Pose> chosen;
  for (const Centres& target : ShippedPoses()) chosen.push_back(world::PoseNearest(camera, sheet, target));
  const int count = static_cast<int>(chosen.size());
  std::array<std::vector<double>, 4> ours;
  std::array<std::vector<double>, 4> randoms;
  for (std::uint64_t seed = 1; seed <= SEEDS; ++seed) {
    const auto our = Deviations(camera, chosen, seed);
    const auto random = Deviations(camera, world::SampleViews(camera, count, seed, sheet), seed);
    for (size_t i = 0; i < our.size(); ++i) {
      ours[i].push_back(our[i]);
      randoms[i].push_back(random[i]);
    }
  }
  const char* const names[] = {"fx", "fy", "cx", "cy"};
  for (size_t i = 0; i < ours.size(); ++i) {
    EXPECT_LT(Median(ours[i]), Median(randoms[i])) << names[i];
    RecordProperty(std::string("ratio_") + names[i], std::to_string(Median(ours[i]) / Median(randoms[i])));
  }
}

INSTANTIATE_TEST_SUITE_P(Cameras, ShippedPosesWorth, ::testing::Values(55.0, 75.0));

}  // namespace
