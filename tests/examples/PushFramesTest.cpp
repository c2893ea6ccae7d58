/// The example that pushes frames, on rendered ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>

#include "Process.h"

namespace {

namespace fs = std::filesystem;
using support::Process;
constexpr std::chrono::minutes LONG_ENOUGH{3};

class PushFrames : public ::testing::Test {
 protected:
  std::string Output() const { return folder_.File("annotated"); }

  void Render(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), VELMORA_RENDER);
    Process render(arguments);
    ASSERT_EQ(render.WaitForExit(LONG_ENOUGH), 0) << render.Errors();
  }

  /// The lines that name an annotated frame.
  static int FrameLines(const std::string& printed) {
    int count = 0;
    for (size_t at = 0; (at = printed.find(".jpg: status ", at)) != std::string::npos; ++at) ++count;
    return count;
  }

  /// Expects `count` annotated frames, each drawn on: the overlay's text is pure white in its corner.
  void ExpectAnnotatedFrames(int count) {
    int seen = 0;
    for (const auto& entry : fs::directory_iterator(Output())) {
      const cv::Mat frame = cv::imread(entry.path().string(), cv::IMREAD_GRAYSCALE);
      ASSERT_EQ(frame.size(), cv::Size(640, 480)) << entry.path();
      double brightest = 0.0;
      cv::minMaxLoc(frame(cv::Rect(10, 10, 100, 60)), nullptr, &brightest);
      EXPECT_GT(brightest, 235.0) << entry.path();
      ++seen;
    }
    EXPECT_EQ(seen, count);
  }

  support::TemporaryFolder folder_;
};

TEST_F(PushFrames, AnnotatesEveryPictureOfAFolder) {
  Render({"--views", "4", "--output", folder_.File("views")});
  Process example({VELMORA_PUSH_FRAMES, folder_.File("views"), Output()});
  ASSERT_EQ(example.WaitForExit(LONG_ENOUGH), 0) << example.Errors();
  ExpectAnnotatedFrames(4);
  const std::string printed = example.Output();
  EXPECT_EQ(FrameLines(printed), 4) << printed;
  EXPECT_EQ(printed.find("frame00001.jpg: status 100, snapshots 0\n"), 0U) << printed;
  EXPECT_NE(printed.find("frame00002.jpg: status 100, snapshots 1\n"), std::string::npos) << printed;
  EXPECT_NE(printed.find("\n4 frames, 1 snapshots\n"), std::string::npos) << printed;
}

TEST_F(PushFrames, CalibratesFromAVideo) {
  const std::string video = folder_.File("grid.avi");
  Render({"--video", video, "--seconds", "6", "--fps", "10"});
  Process example({VELMORA_PUSH_FRAMES, video, Output()});
  ASSERT_EQ(example.WaitForExit(LONG_ENOUGH), 0) << example.Errors();
  ExpectAnnotatedFrames(60);
  const std::string printed = example.Output();
  EXPECT_EQ(FrameLines(printed), 60) << printed;
  const size_t result = printed.find("RMS reprojection error: ");
  ASSERT_NE(result, std::string::npos) << printed;
  const double rms = std::stod(printed.substr(result + 24));
  EXPECT_GT(rms, 0.0);
  EXPECT_LT(rms, 0.5);
}

TEST_F(PushFrames, SaysWhatIsWrong) {
  Process usage({VELMORA_PUSH_FRAMES});
  EXPECT_EQ(usage.WaitForExit(LONG_ENOUGH), 2);
  EXPECT_EQ(usage.Errors(), "usage: velmora-push-frames SOURCE FOLDER\n");
  fs::create_directory(folder_.File("empty"));
  Process nothing({VELMORA_PUSH_FRAMES, folder_.File("empty"), Output()});
  EXPECT_EQ(nothing.WaitForExit(LONG_ENOUGH), 1);
  EXPECT_EQ(nothing.Errors(), "ERROR: no frames in " + folder_.File("empty") + ".\n");
}

}  // namespace
