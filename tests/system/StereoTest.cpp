/// A pair of cameras from a single stream that holds both images: each camera alone, then the pair.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <opencv2/calib3d.hpp>

#include "Footage.h"
#include "JSON.h"
#include "Session.h"

using namespace system_test;  // NOLINT

namespace {

class Stereo : public testing::Test {
 protected:
  /// The application on the side-by-side video, at the size of each half.
  std::vector<std::string> Arguments(const std::vector<std::string>& more) const {
    std::vector<std::string> arguments = {"--video", video_,    "--width", "640",     "--height",
                                          "480",     "--hdist", "0.2",     "--split", "vertical"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
  }

  static void TakeSnapshots(Session& session, int count) {
    const std::string last = "New points added. Total number of pictures: " + std::to_string(count);
    std::string line;
    for (int presses = 0; line != last; ++presses) {
      ASSERT_LT(presses, 200) << "the grid is not found any more: " << line;
      line = session.TakeSnapshot();
    }
  }

  void CalibrateAlone(const std::string& side) {
    Session session(virtualDisplay_, Arguments({"--select", side, "--output", side}), folder_.Path());
    ASSERT_TRUE(session.AwaitPicture());
    TakeSnapshots(session, 10);
    EXPECT_EQ(session.CalibrateAndReview(), 10);
    EXPECT_EQ(session.Quit(), 1);
    ASSERT_TRUE(std::filesystem::exists(folder_.File(side + ".json"))) << session.Application().Errors();
  }

  support::TemporaryFolder folder_;
  VirtualDisplay virtualDisplay_;
  std::string video_ = folder_.File("pair.avi");
};

double DegreesBetween(const cv::Matx33d& a, const cv::Matx33d& b) {
  cv::Vec3d rotation;
  cv::Rodrigues(a * b.t(), rotation);
  return cv::norm(rotation) * 180.0 / CV_PI;
}

TEST_F(Stereo, ThreeStepsLeadFromASideBySideVideoToTheStereoResult) {
  const world::Pair rig =
      world::SideBySidePair({640, 480}, 60.0, 0.08, 2.0, {-0.1, 0.02, 0, 0, 0}, {-0.08, 0.01, 0, 0, 0});
  WriteVideo(video_, SideBySideViewsOf(rig, 72), 4);
  CalibrateAlone("left");
  CalibrateAlone("right");

  const std::string run = folder_.File("run");  // pictures go beside the folder the application runs in
  std::filesystem::create_directory(run);
  Session session(
      virtualDisplay_,
      Arguments({"--calib_left", "../left.json", "--calib_right", "../right.json", "--output", "../stereo"}),
      run);
  ASSERT_TRUE(session.AwaitPicture());
  TakeSnapshots(session, 10);
  EXPECT_FALSE(virtualDisplay_.FindWindow("FrameRight").empty());
  EXPECT_TRUE(std::filesystem::exists(folder_.File("res/left/0.jpg")));
  EXPECT_TRUE(std::filesystem::exists(folder_.File("res/right/9.jpg")));
  ASSERT_TRUE(session.Calibrate());
  EXPECT_EQ(session.Quit(), 1);
  EXPECT_NE(session.Application().Output().find("Computing stereo calibration, model 'rational'."),
            std::string::npos);

  JSON result;
  ASSERT_TRUE(result.load(folder_.File("stereo.json"))) << session.Application().Output();
  EXPECT_EQ(result.readInt("sensor"), 1);
  EXPECT_EQ(result.readInt("imgWidth"), 640);
  EXPECT_NEAR(cv::norm(result.readMat("T")), 0.08, 0.08 * 0.01);
  EXPECT_LT(DegreesBetween(cv::Matx33d(result.readMat("R")), rig.R), 0.2);
  EXPECT_LT(result.readDouble("error"), 0.5);
}

}  // namespace
