/// The preview of a program that has a calibrator inside, on a desktop.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <opencv2/imgcodecs.hpp>

#include "Footage.h"
#include "Servers.h"
#include "Session.h"

using namespace system_test;  // NOLINT

namespace {

class PreviewOnADesktop : public testing::Test {
 protected:
  std::string Pipeline() {
    int number = 0;
    for (const cv::Mat& view : ViewsOf(SmallCamera(), 8)) {
      cv::imwrite(folder_.File(cv::format("view-%03d.jpg", number++)), view);
    }
    return PicturesInALoop(folder_.File("view-%03d.jpg"), 2) + " ! videoconvert ! appsink sync=false";
  }

  support::Process::Options On(const std::string& display) const {
    support::Process::Options options;
    options.unset = {"WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
    options.environment["DISPLAY"] = display;
    return options;
  }

  bool Shown() { return !virtualDisplay_.FindWindow("Preview").empty(); }

  support::TemporaryFolder folder_;
  VirtualDisplay virtualDisplay_;
};

TEST_F(PreviewOnADesktop, FollowsTheSourceAndEndsWithTheProgram) {
  support::Process program({VELMORA_PREVIEW_PROGRAM, Pipeline()}, On(virtualDisplay_.Display()));
  const std::string window = virtualDisplay_.AwaitWindow("Preview");
  ASSERT_FALSE(window.empty()) << program.Output() << program.Errors();
  cv::Mat first;
  ASSERT_TRUE(WaitUntil([&] {
    first = virtualDisplay_.PictureOf(window);
    return first.cols >= 640 && first.rows >= 480;
  }));
  EXPECT_TRUE(WaitUntil([&] {
    const cv::Mat later = virtualDisplay_.PictureOf(window);
    return !later.empty() && !Same(first, later);
  })) << "it does not move";
  if (const char* path = std::getenv("VELMORA_SCREENSHOT")) {
    cv::imwrite(path, virtualDisplay_.PictureOf(window));
  }

  program.Signal(SIGUSR1);
  EXPECT_TRUE(WaitUntil([&] { return !Shown(); })) << "a closed source takes the window along";
  program.Signal(SIGUSR1);
  EXPECT_TRUE(WaitUntil([&] { return Shown(); })) << "the next one brings it back";
  program.Signal(SIGUSR1);
  EXPECT_EQ(program.WaitForExit(PATIENCE), 0) << program.Errors();
  EXPECT_EQ(program.Output(), "");
}

TEST_F(PreviewOnADesktop, AProgramMayLeaveWhileItsWindowIsBeingMade) {
  for (int milliseconds = 0; milliseconds <= 500; milliseconds += 25) {
    support::Process program({VELMORA_LEAVING_PROGRAM, std::to_string(milliseconds)},
                             On(virtualDisplay_.Display()));
    ASSERT_EQ(program.WaitForExit(PATIENCE), 0) << "after " << milliseconds << " ms: " << program.Errors();
    ASSERT_EQ(program.Output(), "left\n");
  }
}

TEST_F(PreviewOnADesktop, APictureLargerThanAScreenIsShownScaledDown) {
  support::Process program({VELMORA_LEAVING_PROGRAM, "60000", "1920", "1080"}, On(virtualDisplay_.Display()));
  cv::Size size;
  EXPECT_TRUE(WaitUntil([&] {
    const std::string window = virtualDisplay_.FindWindow("Preview");
    if (!window.empty()) size = virtualDisplay_.SizeOf(window);
    return size == cv::Size(1280, 720);
  })) << size;
}

TEST_F(PreviewOnADesktop, APlatformThatIsNotInstalledChangesNothingElse) {
  support::Process::Options options = On(virtualDisplay_.Display());
  options.unset = {"WAYLAND_DISPLAY"};
  options.environment["QT_QPA_PLATFORM"] = "nosuchplatform";
  support::Process program({VELMORA_LEAVING_PROGRAM, "500"}, options);
  EXPECT_EQ(program.WaitForExit(PATIENCE), 0) << program.Errors();
  EXPECT_EQ(program.Output(),
            "ERROR : Cannot open the preview. No display to open a window on: the window library cannot work "
            "with QT_QPA_PLATFORM set to 'nosuchplatform'.\nleft\n");
}

TEST_F(PreviewOnADesktop, ADisplayThatDoesNotAnswerChangesNothingElse) {
  support::Process program({VELMORA_PREVIEW_PROGRAM, Pipeline()}, On(":97"));
  ASSERT_TRUE(program.WaitForOutput("ERROR : Cannot open the preview.", PATIENCE));
  for (int step = 0; step < 3; ++step) {
    program.Signal(SIGUSR1);
  }
  EXPECT_TRUE(WaitUntil([&] {
    program.Signal(SIGUSR1);  // those sent while one is pending are lost
    return !program.Running();
  }));
  EXPECT_EQ(program.WaitForExit(PATIENCE), 0);
  EXPECT_EQ(program.Output(),
            "ERROR : Cannot open the preview. No display to open a window on: DISPLAY is "
            "':97', which does not answer.\n");
}

}  // namespace
