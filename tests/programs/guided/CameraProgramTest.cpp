/// The program with cameras that a preloaded library plays.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <opencv2/imgcodecs.hpp>

#include "Process.h"

namespace {

constexpr std::chrono::minutes LONG_ENOUGH{1};

class CameraProgram : public testing::Test {
 protected:
  void Provide(int camera, const cv::Size& size) {
    const std::string folder =
        folder_.File(std::to_string(camera)) + "/" + cv::format("%dx%d", size.width, size.height);
    std::filesystem::create_directories(folder);
    cv::imwrite(folder + "/0.jpg", cv::Mat(size, CV_8UC3, cv::Scalar(90, 120, 150)));
  }
  void Write(int camera, const std::string& file, const std::string& text) {
    std::filesystem::create_directories(folder_.File(std::to_string(camera)));
    support::WriteText(FileOf(camera, file), text);
  }
  std::string Content(int camera, const std::string& file) const {
    std::ifstream stream(FileOf(camera, file));
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  }
  support::Process::Options WithTheCameras() const {
    support::Process::Options options;
    options.environment = {{"LD_PRELOAD", VELMORA_FAKE_CAMERA}, {"VELMORA_FAKE_CAMERAS", folder_.Path()}};
    options.unset = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
    return options;
  }
  /// What the program says when it is started with these cameras and without a display.
  std::string Output(const std::vector<std::string>& words, int status) {
    std::vector<std::string> command = {VELMORA_GUIDED};
    command.insert(command.end(), words.begin(), words.end());
    support::Process program(command, WithTheCameras());
    EXPECT_EQ(program.WaitForExit(LONG_ENOUGH), status) << program.Errors();
    errors_ = program.Errors();
    return program.Output();
  }

  std::string errors_;

 private:
  std::string FileOf(int camera, const std::string& file) const {
    return folder_.File(std::to_string(camera)) + "/" + file;
  }

  support::TemporaryFolder folder_;
};

TEST_F(CameraProgram, ListsCamerasWithTheirSizes) {
  for (const cv::Size size : {cv::Size(640, 480), cv::Size(1920, 1080)}) Provide(0, size);
  Write(0, "card", "A camera with a name of 32 letters and more");
  Provide(1, {640, 480});
  Write(1, "behaviour", "metadata");
  Provide(2, {1280, 720});
  Write(2, "behaviour", "busy");
  Provide(11, {640, 480});
  Write(11, "behaviour", "forbidden");
  EXPECT_EQ(Output({"--list-cameras"}, 0),
            "Cameras (--webcam NUMBER; sizes with the most frames per second):\n"
            "  0  A camera with a name of 32 lette\n     1920x1080 (30/s), 640x480 (30/s)\n"
            "  2  Fake camera: in use by another program\n     1280x720 (30/s)\n"
            " 11  /dev/video11: you have no permission to use it\n");
  EXPECT_EQ(errors_, "");
}

TEST_F(CameraProgram, ListsNoCamerasWhereThereAreNone) {
  EXPECT_EQ(Output({"--list-cameras"}, 0), "There is no camera: no /dev/video* delivers pictures.\n");
}

TEST_F(CameraProgram, TellsTheSizeThatArrivesAndLargerOnes) {
  Provide(0, {640, 480});
  Provide(0, {1280, 720});
  EXPECT_EQ(Output({"--webcam", "0"}, 2),
            "Frames of webcam 0: 640x480.\n"
            "The camera offers up to 1280x720: --width 1280 --height 720.\n");
  EXPECT_EQ(Output({"--webcam", "0", "--width", "1280", "--height", "720"}, 2),
            "Frames of webcam 0: 1280x720.\n");
  EXPECT_EQ(Output({"--webcam", "0", "--width", "800", "--height", "600"}, 2),
            "Frames of webcam 0: 640x480, although 800x600 was asked for.\n");
}

TEST_F(CameraProgram, SwitchesAutofocusOffWhereTheFocusIs) {
  Provide(0, {640, 480});
  Write(0, "controls", "focus_auto 1 1\nfocus_absolute 40 0\nzoom_absolute 100 100\n");
  EXPECT_EQ(Output({"--webcam", "0"}, 2),
            "Frames of webcam 0: 640x480.\n"
            "Autofocus switched off: the focus must not change while calibrating.\n");
  EXPECT_EQ(Content(0, "controls"), "focus_auto 0 1\nfocus_absolute 40 0\nzoom_absolute 100 100\n");
}

TEST_F(CameraProgram, LeavesAFixedFocusAndTheZoomAlone) {
  const std::string controls = "focus_auto 0 1\nfocus_absolute 40 0\nzoom_absolute 150 100\n";
  Provide(0, {640, 480});
  Write(0, "controls", controls);
  EXPECT_EQ(Output({"--webcam", "0"}, 2),
            "Frames of webcam 0: 640x480.\n"
            "The zoom is at 150, and usually at 100: the result holds for this zoom alone.\n");
  EXPECT_EQ(Content(0, "controls"), controls);
}

TEST_F(CameraProgram, SaysWhenTheFocusCannotBeFixed) {
  Provide(0, {640, 480});
  Write(0, "controls", "focus_auto 1 1 locked\n");
  EXPECT_EQ(Output({"--webcam", "0"}, 2),
            "Frames of webcam 0: 640x480.\n"
            "Autofocus cannot be switched off: the result holds for no focus in particular.\n");
}

TEST_F(CameraProgram, GoesOnWithACameraThatWasUnpluggedAtTheFocusItHad) {
  Provide(0, {640, 480});
  Write(0, "controls", "focus_auto 1 1\nfocus_absolute 40 0\n");
  support::Process program({VELMORA_SOURCE_PROGRAM, "0"}, WithTheCameras());
  ASSERT_TRUE(program.WaitForOutput("state: \nframes\n", LONG_ENOUGH)) << program.Errors();
  Write(0, "behaviour", "gone");
  ASSERT_TRUE(program.WaitForOutput("state: The camera (webcam 0) is gone: plug it in again.\n", LONG_ENOUGH))
      << program.Output();
  // A camera that is plugged in is as it was made.
  Write(0, "controls", "focus_auto 1 1\nfocus_absolute 0 0\n");
  Write(0, "behaviour", "");
  ASSERT_TRUE(program.WaitForOutput("plug it in again.\nstate: \nframes\n", LONG_ENOUGH)) << program.Output();
  EXPECT_EQ(Content(0, "controls"), "focus_auto 0 1\nfocus_absolute 40 0\n");
}

TEST_F(CameraProgram, TellsThatACameraIsSilent) {
  Provide(0, {640, 480});
  support::Process program({VELMORA_SOURCE_PROGRAM, "0"}, WithTheCameras());
  ASSERT_TRUE(program.WaitForOutput("state: \nframes\n", LONG_ENOUGH)) << program.Errors();
  Write(0, "behaviour", "silent");
  EXPECT_TRUE(program.WaitForOutput("No picture for 2 s: is the camera still plugged in?\n", LONG_ENOUGH))
      << program.Output();
  Write(0, "behaviour", "");
  EXPECT_TRUE(program.WaitForOutput("plugged in?\nstate: \nframes\n", LONG_ENOUGH)) << program.Output();
}

TEST_F(CameraProgram, SplitsWhatACameraDelivers) {
  Provide(0, {1280, 480});
  EXPECT_EQ(Output({"--webcam", "0", "--split", "vertical", "--select", "left"}, 2),
            "Frames of webcam 0: 1280x480, two halves of 640x480.\n");
}

}  // namespace
