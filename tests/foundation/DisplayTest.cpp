/// Whether windows can be opened.
#include "Display.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <string>

#include "Process.h"
#include "TemporaryFolder.h"
#include "unit/LocalServer.h"
#include "unit/Scopes.h"

namespace {

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
  const unit::LocalServer server(unit::XSocketName(48152));
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

TEST_F(Display, IsAbsentForPlatformsThatAreNotInstalled) {
  const unit::ScopedVariable unknown("QT_QPA_PLATFORM", "nosuchplatform");
  EXPECT_FALSE(DisplayAvailable(&reason_));
  EXPECT_EQ(reason_,
            "No display to open a window on: the window library cannot work with QT_QPA_PLATFORM set to "
            "'nosuchplatform'.");
}

TEST_F(Display, IsAbsentForPlatformsWithoutTheirDevice) {
  if (std::system("test -e /dev/fb0") == 0) GTEST_SKIP() << "this machine has a frame buffer";
  const unit::ScopedVariable frameBuffer("QT_QPA_PLATFORM", "linuxfb");
  EXPECT_FALSE(DisplayAvailable(&reason_));
}

TEST_F(Display, IsAbsentWhenAWaylandSocketAcceptsAndNothingComesOfIt) {
  const support::TemporaryFolder folder;
  const unit::LocalServer server(folder.File("wayland-7"));
  {
    const unit::ScopedVariable absolute("WAYLAND_DISPLAY", folder.File("wayland-7"));
    EXPECT_FALSE(DisplayAvailable(&reason_));
    EXPECT_EQ(reason_,
              "No display to open a window on: the window library cannot use the one that there is.");
  }
  const unit::ScopedVariable runtime("XDG_RUNTIME_DIR", folder.Path());
  const unit::ScopedVariable relative("WAYLAND_DISPLAY", "wayland-7");
  EXPECT_FALSE(DisplayAvailable(&reason_));
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
    const unit::ScopedVariable other("QT_QPA_PLATFORM", "nosuchplatform");
    EXPECT_FALSE(DisplayAvailable(&reason_)) << "the window library would not use the server";
  }
  const unit::ScopedVariable ended("DISPLAY", name);
  EXPECT_FALSE(DisplayAvailable(&reason_));
}

}  // namespace
