/// Live streams over the network, and what happens when they stall.
#include <gtest/gtest.h>

#include <csignal>

#include "Servers.h"
#include "Session.h"

using namespace system_test;  // NOLINT

namespace {

constexpr char BALL[] =
    "videotestsrc is-live=true pattern=ball ! video/x-raw,format=I420,width=640,height=480,framerate=30/1";

class Stream : public testing::Test {
 protected:
  /// The picture in the window moves.
  bool Moves() {
    const std::string window = virtualDisplay_.AwaitWindow("Frame");
    const cv::Mat first = virtualDisplay_.PictureOf(window);
    return WaitUntil([&] {
      const cv::Mat later = virtualDisplay_.PictureOf(window);
      return !first.empty() && !later.empty() && !Same(first, later);
    });
  }

  /// Whether the source stalls or not: the stream is shown, p and q work.
  void WatchAndQuit(const std::string& coding, const std::string& codec, bool stall) {
    StreamServer server(BALL, coding);
    Session session(virtualDisplay_, {"--gstreamer", "127.0.0.1", "--codec", codec, "--port", server.Port()},
                    folder_.Path());
    ASSERT_TRUE(Moves()) << session.Application().Errors();
    if (stall) {
      server.Program().Signal(SIGSTOP);
      ASSERT_FALSE(session.StillPicture("Frame").empty()) << "frames go on arriving";
    }
    EXPECT_EQ(session.TakeSnapshot(), "Failed to add points. Total number of pictures: 0");
    EXPECT_EQ(session.Quit(), 1);
    EXPECT_EQ(session.Application().Output(), "Failed to add points. Total number of pictures: 0\nBye.\n");
  }

  support::TemporaryFolder folder_;
  VirtualDisplay virtualDisplay_;
};

TEST_F(Stream, PicturesOfAnMjpegStreamAreShown) {
  WatchAndQuit(MJPEG, "mjpeg", false);
}

TEST_F(Stream, PicturesOfAnH264StreamAreShown) {
  WatchAndQuit(H264, "h264", false);
}

TEST_F(Stream, AStalledStreamDoesNotHoldUpTheKeys) {
  WatchAndQuit(MJPEG, "mjpeg", true);
}

}  // namespace
