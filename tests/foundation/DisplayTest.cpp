/// Whether windows can be opened.
#include "Display.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

#include "Process.h"
#include "TemporaryFolder.h"
#include "foundation/Scopes.h"

namespace {

/// A local socket that accepts connections into its queue and never answers.
class SilentServer {
 public:
  /// A name that starts with a zero byte is one outside the file system.
  explicit SilentServer(const std::string& name) : socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, name.data(), name.size());
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), length) != 0 || listen(socket_, 8) != 0) {
      close(socket_);
      throw std::runtime_error("cannot listen");
    }
  }
  ~SilentServer() { close(socket_); }
  SilentServer(const SilentServer&) = delete;
  SilentServer& operator=(const SilentServer&) = delete;

 private:
  int socket_;
};

class Display : public ::testing::Test {
 protected:
  unit::ScopedNoDisplay none_;
  std::string reason_ = "untouched";
};

TEST_F(Display, IsAbsentWithoutAnyVariable) {
  EXPECT_FALSE(DisplayAvailable(&reason_));
  EXPECT_EQ(reason_, "No display to open a window on: DISPLAY is not set.");
}

TEST_F(Display, IsAbsentWithAnEmptyVariable) {
  const unit::ScopedVariable empty("DISPLAY", "");
  EXPECT_FALSE(DisplayAvailable(&reason_));
  EXPECT_EQ(reason_, "No display to open a window on: DISPLAY is not set.");
}

TEST_F(Display, NeedsNoReasonToBeAbsent) {
  EXPECT_FALSE(DisplayAvailable());
}

TEST_F(Display, IsAbsentWhenNoServerListensThere) {
  const unit::ScopedVariable dead("DISPLAY", ":48151");
  EXPECT_FALSE(DisplayAvailable(&reason_));
  EXPECT_EQ(reason_, "No display to open a window on: DISPLAY is ':48151', which does not answer.");
}

TEST_F(Display, IsAbsentWhenTheServerAcceptsButNeverAnswers) {
  const SilentServer server(std::string(1, '\0') + "/tmp/.X11-unix/X48152");
  const unit::ScopedVariable silent("DISPLAY", ":48152");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(DisplayAvailable(&reason_));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
  EXPECT_EQ(reason_, "No display to open a window on: DISPLAY is ':48152', which does not answer.");
}

TEST_F(Display, IsThereForPlatformsThatDrawWithoutAServer) {
  const unit::ScopedVariable offscreen("QT_QPA_PLATFORM", "offscreen");
  EXPECT_TRUE(DisplayAvailable(&reason_));
  EXPECT_EQ(reason_, "untouched");
}

TEST_F(Display, IgnoresTheOptionsOfAPlatform) {
  const unit::ScopedVariable vnc("QT_QPA_PLATFORM", "vnc:size=640x480");
  EXPECT_TRUE(DisplayAvailable(&reason_));
}

TEST_F(Display, IsAbsentForPlatformsThatNeedAServer) {
  const unit::ScopedVariable xcb("QT_QPA_PLATFORM", "xcb");
  EXPECT_FALSE(DisplayAvailable(&reason_));
  EXPECT_EQ(reason_, "No display to open a window on: DISPLAY is not set.");
}

TEST_F(Display, IsThereWhenAWaylandSocketAccepts) {
  const support::TemporaryFolder folder;
  const SilentServer server(folder.File("wayland-7"));
  {
    const unit::ScopedVariable absolute("WAYLAND_DISPLAY", folder.File("wayland-7"));
    EXPECT_TRUE(DisplayAvailable(&reason_));
  }
  const unit::ScopedVariable runtime("XDG_RUNTIME_DIR", folder.Path());
  const unit::ScopedVariable relative("WAYLAND_DISPLAY", "wayland-7");
  EXPECT_TRUE(DisplayAvailable(&reason_));
  EXPECT_EQ(reason_, "untouched");
}

TEST_F(Display, IsAbsentWhenTheWaylandSocketIsMissing) {
  const support::TemporaryFolder folder;
  const unit::ScopedVariable missing("WAYLAND_DISPLAY", folder.File("wayland-7"));
  EXPECT_FALSE(DisplayAvailable(&reason_));
}

TEST_F(Display, IsAbsentWhenTheWaylandPathIsTooLongForASocket) {
  const unit::ScopedVariable endless("WAYLAND_DISPLAY", "/" + std::string(500, 'w'));
  EXPECT_FALSE(DisplayAvailable(&reason_));
}

TEST_F(Display, IsThereWhileAServerAnswers) {
  if (std::system("command -v Xvfb >/dev/null 2>&1") != 0) GTEST_SKIP() << "no Xvfb on this machine";
  std::string name;
  {
    support::Process server({"Xvfb", "-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp"});
    ASSERT_TRUE(unit::Eventually([&] { return server.Output().find('\n') != std::string::npos; }))
        << server.Errors();
    name = ":" + server.Output().substr(0, server.Output().find('\n'));
    const unit::ScopedVariable live("DISPLAY", name);
    EXPECT_TRUE(DisplayAvailable(&reason_));
    EXPECT_EQ(reason_, "untouched");
  }
  const unit::ScopedVariable ended("DISPLAY", name);
  EXPECT_FALSE(DisplayAvailable(&reason_));
}

}  // namespace
