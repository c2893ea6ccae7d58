/// The application calibrates from live streams.
#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>

#include "Footage.h"
#include "JSON.h"
#include "Servers.h"
#include "Session.h"

using namespace system_test;  // NOLINT

namespace {

constexpr int SNAPSHOTS = 8;

class StreamCalibration : public testing::Test {
 protected:
  /// Numbered pictures of the sheet; the pattern of their paths.
  std::string Pictures() {
    int number = 0;
    for (const cv::Mat& view : ViewsOf(camera_, 24)) {
      cv::imwrite(folder_.File(cv::format("view-%03d.jpg", number++)), view);
    }
    return folder_.File("view-%03d.jpg");
  }

  static bool IsTotal(const std::string& line, int total) {
    return line == "New points added. Total number of pictures: " + std::to_string(total);
  }

  /// The application with these options, from the first picture to the result file.
  void ExpectCalibration(const std::vector<std::string>& source) {
    std::vector<std::string> arguments = source;
    for (const char* const argument : {"--hdist", "0.2", "--output", "result"}) {
      arguments.emplace_back(argument);
    }
    Session session(virtualDisplay_, arguments, folder_.Path());
    ASSERT_TRUE(session.AwaitPicture()) << session.Application().Errors();
    for (int total = 0, presses = 0; total < SNAPSHOTS; ++presses) {
      ASSERT_LT(presses, 200) << "the grid is not found";
      if (IsTotal(session.TakeSnapshot(), total + 1)) {
        ++total;
      }
    }
    EXPECT_EQ(session.CalibrateAndReview(), SNAPSHOTS);
    EXPECT_EQ(session.Quit(), 1) << session.Application().Errors();
    JSON result;
    ASSERT_TRUE(result.load(folder_.File("result.json"))) << session.Application().Output();
    EXPECT_GT(result.readDouble("error"), 0.0);
    EXPECT_LT(result.readDouble("error"), 0.7);
    const cv::Mat K = result.readMat("cameraMatrix");
    const cv::Matx33d truth = camera_.lens.K();
    EXPECT_NEAR(K.at<double>(0, 0), truth(0, 0), 0.03 * truth(0, 0));
    EXPECT_NEAR(K.at<double>(1, 1), truth(1, 1), 0.03 * truth(1, 1));
  }

  const world::Camera camera_ = SmallCamera();
  support::TemporaryFolder folder_;
  VirtualDisplay virtualDisplay_;
};

TEST_F(StreamCalibration, AnH264StreamIsCalibratedToTheEnd) {
  const StreamServer server(PicturesInALoop(Pictures(), 4), H264);
  ExpectCalibration({"--gstreamer", "127.0.0.1", "--codec", "h264", "--port", server.Port()});
}

TEST_F(StreamCalibration, AnMjpegStreamIsCalibratedToTheEnd) {
  const StreamServer server(PicturesInALoop(Pictures(), 4), MJPEG);
  ExpectCalibration({"--gstreamer", "127.0.0.1", "--codec", "mjpeg", "--port", server.Port()});
}

TEST_F(StreamCalibration, AnRtmpStreamIsCalibratedToTheEnd) {
  WriteVideo(folder_.File("sheet.avi"), ViewsOf(camera_, 24), 6);
  const WebServer server(folder_.Path());
  VideoSender sender(folder_.File("sheet.avi"), server.Rtmp("sheet"));
  ExpectCalibration({"--rtmp", server.Rtmp("sheet")});
  EXPECT_TRUE(sender.Program().Running()) << sender.Program().Errors();
}

}  // namespace
