/// Live streams over the network, and what happens when they stall.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <sstream>

#include "Session.h"

using namespace system_test;  // NOLINT

namespace {

sockaddr_in Loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<in_port_t>(port));
  return address;
}

/// A port of the loopback interface that nobody listens on.
int FreePort() {
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address = Loopback(0);
  socklen_t length = sizeof(address);
  auto* const plain = reinterpret_cast<sockaddr*>(&address);
  const bool bound = bind(listener, plain, length) == 0 && getsockname(listener, plain, &length) == 0;
  close(listener);
  return bound ? ntohs(address.sin_port) : -1;
}

bool Answers(int port) {
  const int client = socket(AF_INET, SOCK_STREAM, 0);
  const sockaddr_in address = Loopback(port);
  const bool connected = connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
  close(client);
  return connected;
}

/// The command that serves a moving test picture in the coding, given as the pipeline's middle part.
std::vector<std::string> ServerCommand(const std::string& coding, int port) {
  std::istringstream words(
      "gst-launch-1.0 -q videotestsrc is-live=true pattern=ball ! "
      "video/x-raw,format=I420,width=640,height=480,framerate=30/1 ! " +
      coding + " ! tcpserversink host=127.0.0.1 sync=false port=" + std::to_string(port));
  std::vector<std::string> command;
  for (std::string word; words >> word;) {
    command.push_back(word);
  }
  return command;
}

class Stream : public testing::Test {
 protected:
  /// The picture in the window moves.
  bool Moves() {
    const std::string window = desktop_.AwaitWindow("Frame");
    const cv::Mat first = desktop_.PictureOf(window);
    return WaitUntil([&] {
      const cv::Mat later = desktop_.PictureOf(window);
      return !first.empty() && !later.empty() && !Same(first, later);
    });
  }

  /// Whether the source stalls or not: the stream is shown, p and q work.
  void WatchAndQuit(const std::string& coding, const std::string& codec, bool stall) {
    const int port = FreePort();
    ASSERT_GT(port, 0);
    support::Process server(ServerCommand(coding, port));
    ASSERT_TRUE(WaitUntil([&] { return Answers(port) || !server.Running(); }));
    ASSERT_TRUE(server.Running()) << server.Errors();
    Session session(desktop_, {"--gstreamer", "127.0.0.1", "--codec", codec, "--port", std::to_string(port)},
                    folder_.Path());
    ASSERT_TRUE(Moves()) << session.Application().Errors();
    if (stall) {
      server.Signal(SIGSTOP);
      ASSERT_FALSE(session.StillPicture("Frame").empty()) << "frames go on arriving";
    }
    EXPECT_EQ(session.TakeSnapshot(), "Failed to add points. Total number of pictures: 0");
    EXPECT_EQ(session.Quit(), 1);
    EXPECT_EQ(session.Application().Output(), "Failed to add points. Total number of pictures: 0\nBye.\n");
  }

  support::TemporaryFolder folder_;
  Desktop desktop_;
};

TEST_F(Stream, PicturesOfAnMjpegStreamAreShown) {
  WatchAndQuit("jpegenc ! multipartmux", "mjpeg", false);
}

TEST_F(Stream, PicturesOfAnH264StreamAreShown) {
  WatchAndQuit("x264enc tune=zerolatency key-int-max=15 ! rtph264pay config-interval=1 ! gdppay", "h264",
               false);
}

TEST_F(Stream, AStalledStreamDoesNotHoldUpTheKeys) {
  WatchAndQuit("jpegenc ! multipartmux", "mjpeg", true);
}

}  // namespace
