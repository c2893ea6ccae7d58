/// Tests of the rendering tool with two cameras, as a user runs it.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/videoio.hpp>

#include "Matchers.h"
#include "Process.h"
#include "RigRenderer.h"
#include "TemporaryFolder.h"
#include "Truth.h"

using support::Process;
using support::TemporaryFolder;
using world::Truth;

namespace {

constexpr std::chrono::minutes LONG{2};

struct Outcome {
  int exitCode;
  std::string errors;
};

/// Runs the tool in a folder.
Outcome Render(const TemporaryFolder& folder, const std::vector<std::string>& arguments) {
  std::vector<std::string> command = {VELMORA_RENDER};
  command.insert(command.end(), arguments.begin(), arguments.end());
  Process::Options options;
  options.folder = folder.Path();
  Process tool(command, options);
  const int exitCode = tool.WaitForExit(LONG);
  return {exitCode, tool.Errors()};
}

/// Renders the rig with the scene below.
Outcome RenderRig(const TemporaryFolder& folder, const std::vector<std::string>& arguments) {
  std::vector<std::string> all = {"--rig",
                                  "--size",
                                  "160x120",
                                  "--fov",
                                  "65",
                                  "--baseline",
                                  "0.12",
                                  "--toe-in",
                                  "6",
                                  "--dist=-0.1,0.02,0,0",
                                  "--dist-right=-0.12,0.03,0,0",
                                  "--noise",
                                  "2",
                                  "--spread",
                                  "--seed",
                                  "7"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return Render(folder, all);
}

world::Pair SomeRig() {
  return world::SideBySidePair({160, 120}, 65.0, 0.12, 6.0, {-0.1, 0.02, 0.0, 0.0}, {-0.12, 0.03, 0.0, 0.0});
}

world::Scene SomeScene() {
  world::Scene scene;
  scene.noise = 2.0;
  scene.seed = 7;
  return scene;
}

std::vector<cv::Mat> ExpectedPair(std::uint64_t number) {
  const std::vector<world::Pose> poses = world::RigViews(SomeRig(), static_cast<int>(number) + 1);
  return world::RigRenderer(SomeRig(), SomeScene()).Render(poses.back(), number);
}

std::vector<cv::Mat> FramesOf(const std::string& path) {
  std::vector<cv::Mat> frames;
  cv::VideoCapture video(path);
  cv::Mat frame;
  while (video.read(frame)) frames.push_back(frame.clone());
  return frames;
}

/// The mean difference of two pictures, grey levels; compression makes a few of them.
double Difference(const cv::Mat& a, const cv::Mat& b) {
  return a.size() == b.size() ? cv::norm(a, b, cv::NORM_L1) / (3.0 * static_cast<double>(a.total())) : 255.0;
}

}  // namespace

TEST(RenderProgram, WritesAFolderOfPicturesForEachCamera) {
  const TemporaryFolder folder;
  const Outcome outcome = RenderRig(folder, {"--views", "2", "--output", "out"});
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  const std::vector<cv::Mat> pair = ExpectedPair(1);
  EXPECT_SAME_MAT(cv::imread(folder.File("out/left/view001.png")), pair[0]);
  EXPECT_SAME_MAT(cv::imread(folder.File("out/right/view001.png")), pair[1]);
  const Truth truth = world::LoadTruth(folder.File("out/truth.json"));
  const world::Pair rig = world::PairOf(truth);
  EXPECT_EQ(rig.R, SomeRig().R);
  EXPECT_EQ(rig.T, SomeRig().T);
  EXPECT_EQ(rig.left.lens.D(), SomeRig().left.lens.D());
  EXPECT_EQ(rig.right.lens.D(), SomeRig().right.lens.D());
  EXPECT_EQ(rig.right.lens.K(), SomeRig().right.lens.K());
  ASSERT_EQ(truth.frames.size(), 2U);
  EXPECT_EQ(truth.frames[1].file, "left/view001.png");
  EXPECT_EQ(truth.frames[1].right.value().file, "right/view001.png");
  EXPECT_TRUE(truth.frames[1].whole && truth.frames[1].right.value().whole);
}

TEST(RenderProgram, WritesATruthForEachCameraBesideItsPictures) {
  const TemporaryFolder folder;
  const Outcome outcome = RenderRig(folder, {"--views", "1", "--output", "out"});
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  const Truth both = world::LoadTruth(folder.File("out/truth.json"));
  const Truth left = world::LoadTruth(folder.File("out/left/truth.json"));
  const Truth right = world::LoadTruth(folder.File("out/right/truth.json"));
  EXPECT_FALSE(left.right.has_value());
  EXPECT_FALSE(right.right.has_value());
  EXPECT_EQ(left.lens.D(), SomeRig().left.lens.D());
  EXPECT_EQ(right.lens.D(), SomeRig().right.lens.D());
  EXPECT_EQ(left.frames.at(0).file, "view000.png");
  EXPECT_EQ(right.frames.at(0).file, "view000.png");
  EXPECT_EQ(left.frames.at(0).centres, both.frames.at(0).centres);
  EXPECT_EQ(right.frames.at(0).centres, both.frames.at(0).right.value().centres);
}

TEST(RenderProgram, CombinesBothCamerasInOnePicture) {
  const TemporaryFolder folder;
  const std::vector<cv::Mat> pair = ExpectedPair(0);
  const Outcome beside = RenderRig(folder, {"--views", "1", "--output", "beside", "--combine", "vertical"});
  ASSERT_EQ(beside.exitCode, 0) << beside.errors;
  EXPECT_SAME_MAT(cv::imread(folder.File("beside/view000.png")), world::SideBySide(pair));
  const Outcome above = RenderRig(folder, {"--views", "1", "--output", "above", "--combine", "horizontal"});
  ASSERT_EQ(above.exitCode, 0) << above.errors;
  EXPECT_SAME_MAT(cv::imread(folder.File("above/view000.png")), world::OneAboveTheOther(pair));
  EXPECT_FALSE(std::filesystem::exists(folder.File("above/left")));
  const Truth truth = world::LoadTruth(folder.File("above/truth.json"));
  EXPECT_EQ(truth.imageSize, cv::Size(160, 120));
  EXPECT_EQ(truth.frames.at(0).file, "view000.png");
  EXPECT_EQ(truth.frames.at(0).right.value().file, "view000.png");
}

TEST(RenderProgram, WritesAVideoForEachCamera) {
  const TemporaryFolder folder;
  const Outcome outcome = RenderRig(folder, {"--video", "pair.avi", "--seconds", "2.5", "--fps", "4"});
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_FALSE(std::filesystem::exists(folder.File("pair.avi")));
  const std::vector<cv::Mat> left = FramesOf(folder.File("pair_left.avi"));
  const std::vector<cv::Mat> right = FramesOf(folder.File("pair_right.avi"));
  const Truth truth = world::LoadTruth(folder.File("pair.truth.json"));
  ASSERT_EQ(left.size(), 10U);
  ASSERT_EQ(right.size(), 10U);
  ASSERT_EQ(truth.frames.size(), 10U);
  world::RigRenderer renderer(world::PairOf(truth), SomeScene());
  for (std::size_t k = 0; k < truth.frames.size(); ++k) {
    const std::vector<cv::Mat> pair = renderer.Render(truth.frames[k].pose, k);
    EXPECT_LT(Difference(left[k], pair[0]), 4.0) << "frame " << k;
    EXPECT_LT(Difference(right[k], pair[1]), 4.0) << "frame " << k;
    EXPECT_GT(Difference(left[k], pair[1]), 8.0) << "frame " << k;
  }
  const Truth ofLeft = world::LoadTruth(folder.File("pair_left.truth.json"));
  const Truth ofRight = world::LoadTruth(folder.File("pair_right.truth.json"));
  EXPECT_EQ(ofLeft.frames.at(9).centres, truth.frames.at(9).centres);
  EXPECT_EQ(ofRight.frames.at(9).centres, truth.frames.at(9).right.value().centres);
}

TEST(RenderProgram, CombinesBothCamerasInOneVideo) {
  const TemporaryFolder folder;
  for (const std::string& way : {std::string("vertical"), std::string("horizontal")}) {
    const std::string name = way + ".avi";
    const Outcome outcome =
        RenderRig(folder, {"--video", name, "--seconds", "1", "--fps", "4", "--combine", way});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_FALSE(std::filesystem::exists(folder.File(way + "_left.avi")));
    const std::vector<cv::Mat> frames = FramesOf(folder.File(name));
    const Truth truth = world::LoadTruth(folder.File(way + ".truth.json"));
    ASSERT_EQ(frames.size(), 4U);
    ASSERT_EQ(truth.frames.size(), 4U);
    world::RigRenderer renderer(world::PairOf(truth), SomeScene());
    for (std::size_t k = 0; k < frames.size(); ++k) {
      const std::vector<cv::Mat> pair = renderer.Render(truth.frames[k].pose, k);
      const cv::Mat joined = way == "vertical" ? world::SideBySide(pair) : world::OneAboveTheOther(pair);
      EXPECT_LT(Difference(frames[k], joined), 4.0) << way << " frame " << k;
    }
  }
}

TEST(RenderProgram, TakesTheSheetOutOfBothVideosWhenAsked) {
  const TemporaryFolder folder;
  // Keys at 0, 1.25 and 2.5 seconds; away in the middle.
  const Outcome outcome =
      RenderRig(folder, {"--video", "pair.avi", "--seconds", "2.5", "--fps", "4", "--away", "1"});
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  const Truth truth = world::LoadTruth(folder.File("pair.truth.json"));
  EXPECT_TRUE(truth.frames.at(0).whole && truth.frames.at(0).right.value().whole);
  EXPECT_FALSE(truth.frames.at(5).whole || truth.frames.at(5).right.value().whole);
}

TEST(RenderProgram, GivesBothCamerasTheSameLensByDefault) {
  const TemporaryFolder folder;
  const Outcome outcome = Render(folder, {"--rig", "--views", "1", "--size", "160x120", "--fx", "140", "--cx",
                                          "75", "--dist=-0.1,0.02,0,0"});
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  const world::Pair rig = world::PairOf(world::LoadTruth(folder.File("truth.json")));
  EXPECT_EQ(rig.right.lens.K()(0, 0), 140.0);
  EXPECT_EQ(rig.right.lens.K(), rig.left.lens.K());
  EXPECT_EQ(rig.right.lens.D(), rig.left.lens.D());
  EXPECT_EQ(rig.R, cv::Matx33d::eye());
  EXPECT_EQ(rig.T, cv::Vec3d(-0.1, 0.0, 0.0));
}

TEST(RenderProgram, RefusesRigsThatMakeNoSense) {
  const TemporaryFolder folder;
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{"--views", "2", "--baseline", "0.1"}, "--baseline goes only with --rig"},
      {{"--views", "2", "--toe-in", "5"}, "--toe-in goes only with --rig"},
      {{"--views", "2", "--dist-right=0.1,0,0,0"}, "--dist-right goes only with --rig"},
      {{"--views", "2", "--combine", "vertical"}, "--combine goes only with --rig"},
      {{"--views", "2", "--rig", "--combine", "diagonal"}, "--combine"},
      {{"--views", "2", "--rig", "--baseline", "0"}, "--baseline"},
      {{"--views", "2", "--rig", "--toe-in", "-90"}, "the cameras cannot see the whole grid together"},
      {{"--video", "pair.mp4", "--rig"}, ".avi"}};
  for (const auto& [arguments, message] : cases) {
    const Outcome outcome = Render(folder, arguments);
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_NE(outcome.errors.find(message), std::string::npos) << outcome.errors;
  }
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}
