/// The recipes of the tutorial for a camera that delivers two views side by side.
#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/imgcodecs.hpp>

#include "Footage.h"
#include "JSON.h"
#include "Servers.h"
#include "Session.h"

using namespace system_test;  // NOLINT

namespace {

constexpr double BASELINE = 0.1;  // metres
/// Pictures change faster than a user presses keys, so that snapshots are of different ones.
constexpr int RATE = 20;
constexpr int SNAPSHOTS = 10;

class SideBySide : public testing::Test {
 protected:
  /// Writes numbered pictures of both views into a folder.
  void WritePictures(const std::string& folder) const {
    std::filesystem::create_directories(folder);
    int number = 0;
    for (const cv::Mat& picture : SideBySideViewsOf(rig_, 16)) {
      cv::imwrite(folder + cv::format("/%03d.jpg", number++), picture, {cv::IMWRITE_JPEG_QUALITY, 95});
    }
  }

  /// The application with the options of the recipe and these, in a folder beside its results.
  void Run(const std::vector<std::string>& more, bool pair) {
    std::vector<std::string> arguments = source_;
    for (const char* const word :
         {"--hdist", "0.2", "--width", "640", "--height", "480", "--split", "vertical"}) {
      arguments.emplace_back(word);
    }
    arguments.insert(arguments.end(), more.begin(), more.end());
    std::filesystem::create_directories(folder_.File("run"));
    Session session(virtualDisplay_, arguments, folder_.File("run"), environment_);
    ASSERT_TRUE(session.AwaitPicture()) << session.Application().Errors();
    std::string line;
    const std::string last = "New points added. Total number of pictures: " + std::to_string(SNAPSHOTS);
    for (int presses = 0; line != last; ++presses) {
      ASSERT_LT(presses, 200) << "the grid is not found any more: " << line;
      line = session.TakeSnapshot();
    }
    if (pair) {
      EXPECT_TRUE(session.Calibrate());
    } else {
      EXPECT_EQ(session.CalibrateAndReview(), SNAPSHOTS);
    }
    EXPECT_EQ(session.Quit(), 1);
  }

  /// Runs the three steps, and compares what comes out with the rig.
  void ExpectRig() {
    Run({"--select", "left", "--output", "../left"}, false);
    Run({"--select", "right", "--output", "../right"}, false);
    Run({"--calib_left", "../left.json", "--calib_right", "../right.json", "--output", "../stereo"}, true);
    JSON result;
    ASSERT_TRUE(result.load(folder_.File("stereo.json")));
    EXPECT_EQ(result.readInt("imgWidth"), 640);
    EXPECT_EQ(result.readInt("imgHeight"), 480);
    const cv::Matx33d K(result.readMat("cameraMatrix"));
    const cv::Matx33d truth = rig_.left.lens.K();
    EXPECT_NEAR(K(0, 0), truth(0, 0), 0.01 * truth(0, 0));
    EXPECT_NEAR(K(1, 1), truth(1, 1), 0.01 * truth(1, 1));
    const cv::Vec3d T(result.readMat("T"));
    EXPECT_LT(cv::norm(T - rig_.T), 0.01 * BASELINE) << T;
    EXPECT_LT(result.readDouble("error"), 0.3);
  }

  const world::Pair rig_ =
      world::SideBySidePair({640, 480}, 60.0, BASELINE, 0.0, {-0.1, 0.02, 0, 0, 0}, {-0.1, 0.02, 0, 0, 0});
  support::TemporaryFolder folder_;
  VirtualDisplay virtualDisplay_;
  std::vector<std::string> source_;
  std::map<std::string, std::string> environment_;
};

TEST_F(SideBySide, ACameraThatAnswersTheSizeOfAHalfWithBothIsCalibratedDirectly) {
  WritePictures(folder_.File("cameras/0/1280x480"));
  environment_ = {{"LD_PRELOAD", VELMORA_FAKE_CAMERA}, {"VELMORA_FAKE_CAMERAS", folder_.File("cameras")}};
  source_ = {"--webcam", "0", "--fps", std::to_string(RATE)};
  ExpectRig();
}

TEST_F(SideBySide, AnyOtherIsCalibratedThroughAPipelineThatOpensItAtItsSize) {
  WritePictures(folder_.File("pictures"));
  const StreamServer server("multifilesrc loop=true location=" + folder_.File("pictures/%03d.jpg") +
                                " caps=image/jpeg,framerate=" + std::to_string(RATE) +
                                "/1 ! identity sync=true",
                            "multipartmux");
  source_ = {"--gstreamer", "127.0.0.1", "--codec", "mjpeg", "--port", server.Port()};
  ExpectRig();
}

}  // namespace
