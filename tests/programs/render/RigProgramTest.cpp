/// The renderer with rigs of many cameras, as a user runs it.
#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "Calibrator.h"
#include "Matchers.h"
#include "Process.h"
#include "RigRenderer.h"
#include "RigTruth.h"
#include "TemporaryFolder.h"

namespace {

using support::Process;
using support::TemporaryFolder;
using world::RigTruth;

constexpr std::chrono::minutes LONG_ENOUGH{2};

struct Outcome {
  int status;
  std::string output;
  std::string errors;
};

Outcome Render(const TemporaryFolder& folder, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), VELMORA_RENDER);
  Process::Options options;
  options.folder = folder.Path();
  Process tool(arguments, options);
  const int status = tool.WaitForExit(LONG_ENOUGH);
  return {status, tool.Output(), tool.Errors()};
}

/// Renders small pictures of a ring of five cameras.
Outcome RenderRing(const TemporaryFolder& folder, std::vector<std::string> arguments) {
  arguments.insert(arguments.end(),
                   {"--rig", "5", "--ring", "--views", "8", "--size", "160x120", "--noise", "2"});
  return Render(folder, arguments);
}

std::string CameraFolder(std::size_t camera) {
  return "camera-" + std::to_string(camera);
}

/// What the robust search finds in a picture; empty when it finds nothing.
std::vector<cv::Point2d> Find(const cv::Mat& picture) {
  Calibrator calibrator(cv::Size(4, 11), 0.02F, Calibrator::MONOCULAR, picture.cols, picture.rows);
  calibrator.SetFinder(Calibrator::FINDER_ROBUST);
  cv::Mat frame = picture.clone();
  std::vector<cv::Point2d> points;
  return calibrator.DetectPoints(frame, points, false) ? points : std::vector<cv::Point2d>();
}

/// The centres of gravity of the discs' images, which perspective moves off the images of their centres.
std::vector<cv::Point2d> Centroids(const world::Camera& camera, const world::Sheet& sheet,
                                   const world::Pose& pose) {
  constexpr int RIM = 64;
  const auto rims = world::ProjectPoints(camera.lens, sheet.RimPoints(RIM), pose);
  std::vector<cv::Point2d> centroids;
  for (auto rim = rims.begin(); rim != rims.end(); rim += RIM) {
    // Moments take single precision.
    std::vector<cv::Point2f> outline;
    for (auto point = rim; point != rim + RIM; ++point) outline.emplace_back(*point - *rim);
    const cv::Moments moments = cv::moments(outline);
    centroids.push_back(*rim + cv::Point2d(moments.m10, moments.m01) / moments.m00);
  }
  return centroids;
}

int CountPictures(const std::string& folder) {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    count += entry.path().extension() == ".png" ? 1 : 0;
  }
  return count;
}

}  // namespace

TEST(RigProgram, ShowsTheGridWhereTheTruthSaysItIs) {
  const TemporaryFolder folder;
  const Outcome outcome = Render(
      folder, {"--rig", "3", "--views", "2", "--noise", "1", "--blur", "0.7", "--dist=-0.1,0.02,0,0,0"});
  ASSERT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_EQ(outcome.output + outcome.errors, "");
  const RigTruth truth = world::LoadRigTruth(folder.File("truth.json"));
  ASSERT_EQ(truth.rig.cameras.size(), 3U);
  ASSERT_EQ(truth.frames.size(), 2U);
  int whole = 0;
  for (const world::RigTruthFrame& frame : truth.frames) {
    for (std::size_t k = 0; k < 3; ++k) {
      const world::RigCamera& camera = truth.rig.cameras[k];
      const world::Pose pose = world::PoseFor(truth.rig, k, frame.pose);
      const world::TruthView& view = frame.views[k];
      EXPECT_EQ(view.file, CameraFolder(k) + "/view00" + std::to_string(frame.index) + ".png");
      EXPECT_LT(cv::norm(view.pose.tvec - pose.tvec), 1e-12);
      EXPECT_EQ(view.whole, world::DiscsInside(camera, truth.sheet, pose));
      if (!view.whole) continue;
      const std::vector<cv::Point2d> found = Find(cv::imread(folder.File(view.file)));
      const std::vector<cv::Point2d> expected = Centroids(camera, truth.sheet, pose);
      ASSERT_EQ(found.size(), expected.size()) << view.file;
      for (std::size_t p = 0; p < found.size(); ++p) {
        EXPECT_LT(cv::norm(found[p] - expected[p]), 0.1) << view.file << " disc " << p;
        EXPECT_LT(cv::norm(view.centres[p] - expected[p]), 1.0) << view.file << " disc " << p;
      }
      ++whole;
    }
  }
  EXPECT_GE(whole, 4);
}

TEST(RigProgram, WritesATruthForEachCameraBesideItsPictures) {
  const TemporaryFolder folder;
  ASSERT_EQ(RenderRing(folder, {"--output", "out"}).status, 0);
  const RigTruth rig = world::LoadRigTruth(folder.File("out/truth.json"));
  for (std::size_t k = 0; k < 5; ++k) {
    const std::string own = folder.File("out/" + CameraFolder(k));
    EXPECT_EQ(CountPictures(own), 8);
    const world::Truth truth = world::LoadTruth(own + "/truth.json");
    EXPECT_EQ(truth.lens.K(), rig.rig.cameras[k].lens.K());
    ASSERT_EQ(truth.frames.size(), 8U);
    EXPECT_EQ(truth.frames[3].file, "view003.png");
    EXPECT_EQ(truth.frames[3].index, 3);
    EXPECT_EQ(truth.frames[3].pose.tvec, rig.frames[3].views[k].pose.tvec);
  }
}

TEST(RigProgram, ShowsTheBackgroundWhereACameraDoesNotSeeTheSheet) {
  const TemporaryFolder folder;
  ASSERT_EQ(RenderRing(folder, {"--output", "all"}).status, 0);
  ASSERT_EQ(RenderRing(folder, {"--output", "some", "--leave-out-empty"}).status, 0);
  const RigTruth all = world::LoadRigTruth(folder.File("all/truth.json"));
  const RigTruth some = world::LoadRigTruth(folder.File("some/truth.json"));
  world::Scene scene;
  scene.noise = 2.0;
  world::RigRenderer renderer(all.rig, scene);
  int leftOut = 0;
  for (std::size_t i = 0; i < all.frames.size(); ++i) {
    const std::vector<cv::Mat> empty = renderer.RenderEmpty(i);
    for (std::size_t k = 0; k < 5; ++k) {
      const std::string name = all.frames[i].views[k].file;
      const cv::Mat picture = cv::imread(folder.File("all/" + name));
      const bool isEmpty = support::SameMat(picture, empty[k]);
      EXPECT_EQ(some.frames[i].views[k].file, isEmpty ? "" : name) << name;
      EXPECT_EQ(std::filesystem::exists(folder.File("some/" + name)), !isEmpty) << name;
      EXPECT_FALSE(isEmpty && all.frames[i].views[k].whole) << name;
      leftOut += isEmpty ? 1 : 0;
    }
  }
  EXPECT_GT(leftOut, 0);
  EXPECT_LT(leftOut, 5 * 8 / 2);
}

TEST(RigProgram, RemovesEarlierPicturesThatItNowLeavesOut) {
  const TemporaryFolder folder;
  ASSERT_EQ(RenderRing(folder, {}).status, 0);
  ASSERT_EQ(RenderRing(folder, {"--leave-out-empty"}).status, 0);
  const RigTruth truth = world::LoadRigTruth(folder.File("truth.json"));
  for (std::size_t k = 0; k < 5; ++k) {
    const auto pictures = world::TruthOfCamera(truth, k).frames.size();
    EXPECT_EQ(CountPictures(folder.File(CameraFolder(k))), static_cast<int>(pictures));
  }
}

TEST(RigProgram, RefusesFoldersWhosePicturesWouldBeTakenForItsOwn) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.File("camera-1"));
  support::WriteText(folder.File("camera-1/photo.jpg"), "mine");
  const std::vector<std::string> three = {"--rig", "3", "--views", "2", "--size", "160x120"};
  const Outcome foreign = Render(folder, three);
  EXPECT_EQ(foreign.status, 2);
  EXPECT_NE(foreign.errors.find("camera-1\" holds 1 other picture (photo.jpg): "), std::string::npos)
      << foreign.errors;
  EXPECT_FALSE(std::filesystem::exists(folder.File("camera-0")));
  std::filesystem::remove_all(folder.File("camera-1"));

  ASSERT_EQ(Render(folder, three).status, 0);
  ASSERT_EQ(Render(folder, three).status, 0);
  std::vector<std::string> two = {"--rig", "2", "--views", "2", "--size", "160x120"};
  const Outcome fewer = Render(folder, two);
  EXPECT_EQ(fewer.status, 2);
  EXPECT_NE(fewer.errors.find("camera-2\" holds 2 other pictures"), std::string::npos) << fewer.errors;
  EXPECT_EQ(CountPictures(folder.File("camera-2")), 2);
  two.emplace_back("--overwrite");
  EXPECT_EQ(Render(folder, two).status, 0);
  EXPECT_EQ(CountPictures(folder.File("camera-2")), 0);
  EXPECT_EQ(CountPictures(folder.File("camera-1")), 2);
}

TEST(RigProgram, SaysWhatMakesNoRig) {
  const TemporaryFolder folder;
  const std::string many = " goes only with --rig and a number of cameras, such as --rig 3.\n";
  const std::string pair = " goes only with a pair: --rig without a number.\n";
  const std::string help = ". See velmora-render --help.\n";
  const std::string noRig = " is not a number of cameras from 2 to 100" + help;
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{"--rig", "1"}, "--rig: '1'" + noRig},
      {{"--rig", "0"}, "--rig: '0'" + noRig},
      {{"--rig", "-3"}, "--rig: '-3'" + noRig},
      {{"--rig=3.5"}, "--rig: '3.5'" + noRig},
      {{"--rig", "101"}, "--rig: '101'" + noRig},
      {{"--rig", "many"}, "--rig: 'many'" + noRig},
      {{"--rig", "3", "--toe-in", "0"}, "--toe-in" + pair},
      {{"--rig", "3", "--dist-right=0.1,0,0,0"}, "--dist-right" + pair},
      {{"--rig", "3", "--combine", "vertical"}, "--combine" + pair},
      {{"--rig", "--ring"}, "--ring" + many},
      {{"--rig", "--leave-out-empty"}, "--leave-out-empty" + many},
      {{"--ring"}, "--ring goes only with --rig" + help},
      {{"--leave-out-empty"}, "--leave-out-empty goes only with --rig" + help},
      {{"--rig", "3", "--ring", "--baseline", "0.1"}, "--ring does not go with --baseline" + help}};
  for (auto [arguments, message] : cases) {
    arguments.insert(arguments.end(), {"--views", "2"});
    const Outcome outcome = Render(folder, arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors, "ERROR: " + message);
  }
  const Outcome video = Render(folder, {"--rig", "3", "--video", "rig.avi"});
  EXPECT_EQ(video.status, 2);
  EXPECT_EQ(video.errors, "ERROR: --rig with a number of cameras makes no --video.\n");
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}
