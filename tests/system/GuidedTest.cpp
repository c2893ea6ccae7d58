/// The guided calibration as its user meets it: a window, poses reached by the sheet alone, a result file.
#include <gtest/gtest.h>

#include <filesystem>

#include "JSON.h"
#include "Truth.h"
#include "VirtualDisplay.h"

using namespace system_test;  // NOLINT

namespace {

class GuidedProgram : public testing::Test {
 protected:
  /// A video in which the sheet goes through the shipped poses, at rest in each for a moment.
  std::string VideoOfThePoses() {
    const std::string video = folder_.File("poses.avi");
    support::Process render({VELMORA_RENDER, "--video", video, "--follow", VELMORA_POSES_JSON, "--seconds",
                             "22", "--fps", "12", "--fov", "68", "--dist=-0.25,0.07,0,0,0", "--noise", "2"});
    EXPECT_EQ(render.WaitForExit(PATIENCE), 0) << render.Errors();
    return video;
  }

  support::Process::Options OnTheDesktop() {
    support::Process::Options options;
    options.unset = {"WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
    options.environment["DISPLAY"] = virtualDisplay_.Display();
    options.folder = folder_.Path();
    return options;
  }

  /// Whether the picture has as green a line near its lower edge as the score bar.
  static bool ShowsBar(const cv::Mat& picture) {
    if (picture.empty() || picture.rows < 480 || picture.cols < 640) return false;
    const cv::Vec3b pixel = picture.at<cv::Vec3b>(478, 320);
    return pixel[1] > 240 && pixel[0] < 20 && pixel[2] < 20;
  }

  support::TemporaryFolder folder_;
  VirtualDisplay virtualDisplay_;
};

TEST_F(GuidedProgram, CalibratesFromAVideoOfTheShippedPoses) {
  const std::string video = VideoOfThePoses();
  support::Process program(
      {VELMORA_GUIDED, "--video", video, "--fast", "--hdist", "0.2", "--output", "camera"}, OnTheDesktop());
  EXPECT_TRUE(WaitUntil([&] {
    const std::string window = virtualDisplay_.FindWindow("Velmora");
    return (!window.empty() && ShowsBar(virtualDisplay_.PictureOf(window))) || !program.Running();
  }));
  EXPECT_TRUE(program.Running()) << "the bar was never seen";
  ASSERT_EQ(program.WaitForExit(PATIENCE), 0) << program.Output() << program.Errors();
  EXPECT_NE(program.Output().find("Pose 12 of 12 reached.\n"), std::string::npos) << program.Output();
  EXPECT_NE(program.Output().find("\nWritten:\n  camera.json\n  camera_verdict.json\n"), std::string::npos)
      << program.Output();

  JSON result;
  ASSERT_TRUE(result.load(folder_.File("camera.json")));
  const cv::Matx33d truth = world::LoadTruth(folder_.File("poses.truth.json")).lens.K();
  const cv::Mat K = result.readMat("cameraMatrix");
  EXPECT_LT(result.readDouble("error"), 0.2);
  EXPECT_NEAR(K.at<double>(0, 0), truth(0, 0), 0.005 * truth(0, 0));
  EXPECT_NEAR(K.at<double>(1, 1), truth(1, 1), 0.005 * truth(1, 1));
  EXPECT_NEAR(K.at<double>(0, 2), truth(0, 2), 3.0);
  EXPECT_NEAR(K.at<double>(1, 2), truth(1, 2), 3.0);
}

TEST_F(GuidedProgram, SaysWhatItCannotUseInOneLine) {
  const std::string missing = folder_.File("missing.avi");
  support::Process noSource({VELMORA_GUIDED, "--video", missing}, OnTheDesktop());
  EXPECT_EQ(noSource.WaitForExit(PATIENCE), 2);
  EXPECT_NE(noSource.Errors().find("missing.avi"), std::string::npos) << noSource.Errors();

  support::Process noFolder({VELMORA_GUIDED, "--video", missing, "--output", "/nowhere/camera"},
                            OnTheDesktop());
  EXPECT_EQ(noFolder.WaitForExit(PATIENCE), 2);
  EXPECT_EQ(noFolder.Errors(), "ERROR: folder '/nowhere' does not exist.\n");
}

}  // namespace
