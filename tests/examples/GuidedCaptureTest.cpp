/// The example that lets the engine capture, guide and calibrate, on a rendered video.
#include <gtest/gtest.h>

#include "JSON.h"
#include "Process.h"
#include "Truth.h"

namespace {

using support::Process;
constexpr std::chrono::minutes LONG_ENOUGH{3};

class GuidedCapture : public ::testing::Test {
 protected:
  /// A video in which the sheet goes through the shipped poses.
  void Render(const std::string& seconds) {
    Process render({VELMORA_RENDER, "--video", folder_.File("poses.avi"), "--follow", VELMORA_POSES_JSON,
                    "--seconds", seconds, "--fps", "12", "--fov", "64", "--dist=-0.2,0.05,0,0,0"});
    ASSERT_EQ(render.WaitForExit(LONG_ENOUGH), 0) << render.Errors();
  }

  support::TemporaryFolder folder_;
};

TEST_F(GuidedCapture, CalibratesFromAVideoByItself) {
  Render("22");
  Process example(
      {VELMORA_GUIDED_CAPTURE, folder_.File("poses.avi"), VELMORA_POSES_JSON, folder_.File("camera")});
  ASSERT_EQ(example.WaitForExit(LONG_ENOUGH), 0) << example.Output() << example.Errors();
  EXPECT_NE(example.Output().find(", 12 of 12 poses\n"), std::string::npos) << example.Output();
  JSON result;
  ASSERT_TRUE(result.load(folder_.File("camera.json")));
  const double fx = world::LoadTruth(folder_.File("poses.truth.json")).lens.K()(0, 0);
  EXPECT_NEAR(result.readMat("cameraMatrix").at<double>(0, 0), fx, 0.005 * fx);
}

TEST_F(GuidedCapture, EndsWithItsSource) {
  Render("1");
  Process example(
      {VELMORA_GUIDED_CAPTURE, folder_.File("poses.avi"), VELMORA_POSES_JSON, folder_.File("camera")});
  EXPECT_EQ(example.WaitForExit(LONG_ENOUGH), 1) << example.Output();
  EXPECT_EQ(example.Output().rfind("12 frames, ", 0), 0U) << example.Output();
}

TEST_F(GuidedCapture, EndsWithoutASourceOrPoses) {
  Process noPoses(
      {VELMORA_GUIDED_CAPTURE, "video.avi", folder_.File("missing.json"), folder_.File("camera")});
  EXPECT_EQ(noPoses.WaitForExit(LONG_ENOUGH), 1);
  EXPECT_NE(noPoses.Output().find("missing.json"), std::string::npos) << noPoses.Output();
  Process noSource(
      {VELMORA_GUIDED_CAPTURE, folder_.File("missing.avi"), VELMORA_POSES_JSON, folder_.File("camera")});
  EXPECT_EQ(noSource.WaitForExit(LONG_ENOUGH), 1);
  EXPECT_NE(noSource.Output().find("Could not open content"), std::string::npos) << noSource.Output();
  Process usage({VELMORA_GUIDED_CAPTURE});
  EXPECT_EQ(usage.WaitForExit(LONG_ENOUGH), 2);
}

}  // namespace
