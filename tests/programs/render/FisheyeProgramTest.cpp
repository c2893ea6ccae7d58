/// Tests of the rendering tool with a fisheye, as a user runs it.
#include <gtest/gtest.h>

#include <chrono>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "Matchers.h"
#include "Process.h"
#include "Renderer.h"
#include "RigTruth.h"
#include "TemporaryFolder.h"
#include "Truth.h"
#include "Views.h"

using support::Process;
using support::TemporaryFolder;

namespace {

constexpr std::chrono::minutes LONG{2};

struct Outcome {
  int status;
  std::string errors;
};

/// Runs the tool in a folder, for small pictures.
Outcome Render(const TemporaryFolder& folder, const std::vector<std::string>& arguments) {
  std::vector<std::string> command = {VELMORA_RENDER, "--size", "320x240"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  Process::Options options;
  options.folder = folder.Path();
  Process tool(command, options);
  const int status = tool.WaitForExit(LONG);
  return {status, tool.Errors()};
}

TEST(FisheyeProgram, RendersWhatTheTruthSays) {
  const TemporaryFolder folder;
  const Outcome outcome =
      Render(folder, {"--views", "3", "--fisheye", "190", "--fisheye-dist", "0.02,0.003,0,0", "--seed", "5"});
  ASSERT_EQ(outcome.status, 0) << outcome.errors;
  world::Scene scene;
  scene.camera = world::FisheyeFromFieldOfView({320, 240}, 190.0, {0.02, 0.003, 0.0, 0.0});
  scene.seed = 5;
  const world::Truth truth = world::LoadTruth(folder.File("truth.json"));
  EXPECT_EQ(truth.lens.K(), scene.camera.lens.K());
  ASSERT_TRUE(truth.lens.IsFisheye());
  EXPECT_EQ(truth.lens.Curve()->D(), scene.camera.lens.Curve()->D());
  const std::vector<world::Pose> poses = world::SampleViews(scene.camera, 3, 5);
  world::Renderer renderer(scene);
  ASSERT_EQ(truth.frames.size(), 3U);
  for (std::size_t k = 0; k < 3; ++k) {
    const world::TruthFrame& frame = truth.frames[k];
    EXPECT_TRUE(frame.whole);
    EXPECT_EQ(frame.centres, world::TrueCentres(scene.camera.lens, scene.sheet, poses[k]));
    EXPECT_SAME_MAT(cv::imread(folder.File(frame.file)), renderer.Render(poses[k], k));
  }
}

/// What the comparison of a result with the truth of a fisheye of these options prints.
std::string Compared(const std::vector<std::string>& options, const std::string& lens) {
  const TemporaryFolder folder;
  std::vector<std::string> arguments = {"--views", "1"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  EXPECT_EQ(Render(folder, arguments).status, 0);
  support::WriteText(folder.File("result.json"),
                     R"({"cameraMatrix": {"data": [100, 0, 160, 0, 100, 120, 0, 0, 1]}, "error": 0.1,)"
                     R"( "imgWidth": 320, "imgHeight": 240, )" +
                         lens + "}");
  Process tool({VELMORA_COMPARE, folder.File("result.json"), folder.File("truth.json")});
  EXPECT_EQ(tool.WaitForExit(LONG), 0) << tool.Errors();
  return tool.Output();
}

TEST(FisheyeProgram, RendersTruthsToCompareFisheyesWith) {
  const std::vector<std::string> fisheye = {"--fx", "100", "--cx",           "160",
                                            "--cy", "120", "--fisheye-dist", "0.02,0.003,0,0"};
  const std::string same = Compared(fisheye, R"("fisheyeCoefs": {"data": [0.02, 0.004, 0, 0]})");
  EXPECT_NE(same.find("k2           0.004000 |       0.003000 |     0.001000"), std::string::npos) << same;
  EXPECT_NE(same.find("75 to 90 degrees from the axis"), std::string::npos) << same;
  EXPECT_EQ(same.find("no pixel"), std::string::npos) << same;
  const std::string pinhole = Compared(fisheye, R"("distCoefs": {"data": [0, 0, 0, 0]})");
  EXPECT_NE(pinhole.find("The truth is a fisheye, the estimate a pinhole"), std::string::npos) << pinhole;
  EXPECT_NE(pinhole.find("the estimate has no pixel for what is beside the camera"), std::string::npos)
      << pinhole;
  const std::string other = Compared({"--fov", "60"}, R"("fisheyeCoefs": {"data": [0, 0, 0, 0]})");
  EXPECT_NE(other.find("The estimate is a fisheye, the truth a pinhole"), std::string::npos) << other;
}

TEST(FisheyeProgram, TakesAFocalLengthInsteadOfAField) {
  const TemporaryFolder folder;
  const Outcome outcome = Render(folder, {"--views", "1", "--fisheye-dist", "0,0,0,0", "--fx", "90", "--fy",
                                          "91", "--cx", "150", "--cy", "125"});
  ASSERT_EQ(outcome.status, 0) << outcome.errors;
  const world::Truth truth = world::LoadTruth(folder.File("truth.json"));
  EXPECT_TRUE(truth.lens.IsFisheye());
  EXPECT_EQ(truth.lens.K(), cv::Matx33d(90, 0, 150, 0, 91, 125, 0, 0, 1));
}

TEST(FisheyeProgram, RendersTheListPairsAndRigsToo) {
  const TemporaryFolder folder;
  const Outcome list = Render(folder, {"--views", "4", "--fisheye", "150", "--spread", "--output", "list"});
  EXPECT_EQ(list.status, 0) << list.errors;
  const Outcome pair = Render(folder, {"--rig", "--views", "2", "--fisheye", "180", "--output", "pair"});
  EXPECT_EQ(pair.status, 0) << pair.errors;
  const world::Truth right = world::LoadTruth(folder.File("pair/right/truth.json"));
  EXPECT_TRUE(right.lens.IsFisheye());
  const Outcome rig =
      Render(folder, {"--rig=3", "--ring", "--views", "2", "--fisheye", "180", "--output", "rig"});
  EXPECT_EQ(rig.status, 0) << rig.errors;
  const world::RigTruth ring = world::LoadRigTruth(folder.File("rig/truth.json"));
  ASSERT_EQ(ring.rig.cameras.size(), 3U);
  for (const world::RigCamera& camera : ring.rig.cameras) EXPECT_TRUE(camera.lens.IsFisheye());
}

TEST(FisheyeProgram, TakesTheSheetAwayInAVideo) {
  const TemporaryFolder folder;
  const Outcome outcome =
      Render(folder, {"--video", "v.avi", "--seconds", "5", "--fps", "4", "--away", "1", "--fisheye", "180"});
  ASSERT_EQ(outcome.status, 0) << outcome.errors;
  int whole = 0;
  const world::Truth truth = world::LoadTruth(folder.File("v.truth.json"));
  for (const world::TruthFrame& frame : truth.frames) whole += frame.whole ? 1 : 0;
  EXPECT_GT(whole, 0);
  EXPECT_LT(whole, 20);
}

TEST(FisheyeProgram, RefusesOptionsThatContradictEachOther) {
  const TemporaryFolder folder;
  const auto complaint = [&](std::vector<std::string> options) {
    options.insert(options.end(), {"--views", "1"});
    const Outcome outcome = Render(folder, options);
    EXPECT_EQ(outcome.status, 2);
    return outcome.errors;
  };
  EXPECT_EQ(complaint({"--fisheye", "180", "--dist=-0.2,0.1,0,0"}),
            "ERROR: --dist is of a pinhole; the coefficients of a fisheye are --fisheye-dist.\n");
  EXPECT_EQ(complaint({"--fx", "90", "--fisheye-dist=0,0,0,0", "--dist=0,0,0,0"}),
            "ERROR: --dist is of a pinhole; the coefficients of a fisheye are --fisheye-dist.\n");
  EXPECT_EQ(complaint({"--fisheye", "180", "--rig", "--dist-right=0,0,0,0"}),
            "ERROR: --dist-right is of a pinhole; the coefficients of a fisheye are --fisheye-dist.\n");
  EXPECT_EQ(complaint({"--fisheye", "180", "--fov", "90"}),
            "ERROR: --fov is of a pinhole; --fisheye says what a fisheye sees.\n");
  EXPECT_EQ(complaint({"--fisheye", "180", "--fx", "90"}), "ERROR: give either --fisheye or --fx.\n");
  EXPECT_EQ(complaint({"--fisheye-dist", "0,0,0,0"}),
            "ERROR: --fisheye-dist needs the field of view, --fisheye, or the focal length, --fx.\n");
  EXPECT_EQ(complaint({"--fisheye", "180", "--fisheye-dist", "0.1,0.2,0.3"}),
            "ERROR: --fisheye-dist takes four numbers, k1,k2,k3,k4.\n");
  EXPECT_EQ(complaint({"--fisheye", "150", "--fisheye-dist=-0.3,0,0,0"}),
            "ERROR: a fisheye of this --fisheye-dist images less than 120.7 degrees, not 150.\n");
}

}  // namespace
