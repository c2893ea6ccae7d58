/// The application as its user meets it: a window, keys, printed lines, a result file.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <opencv2/imgproc.hpp>
#include <regex>

#include "Footage.h"
#include "JSON.h"
#include "Session.h"

using namespace system_test;  // NOLINT

namespace {

constexpr char SEPARATOR[] = "---------------------------------------------------------";

class Interactive : public testing::Test {
 protected:
  /// A video in the test's folder.
  std::string Video(const std::string& name, const std::vector<cv::Mat>& pictures, int hold) {
    WriteVideo(folder_.File(name), pictures, hold);
    return folder_.File(name);
  }

  /// Presses p until there are that many snapshots. Every press adds one or, when the grid is not found in
  /// the frame on the screen, none; the totals printed tell so.
  void TakeSnapshots(Session& session, int count) {
    int total = 0;
    for (int presses = 0; total < count; ++presses) {
      ASSERT_LT(presses, 500) << "the grid is not found any more";
      const std::string line = session.TakeSnapshot();
      printed_ += line + "\n";
      if (line == "New points added. Total number of pictures: " + std::to_string(total + 1)) {
        ++total;
      } else {
        ASSERT_EQ(line, "Failed to add points. Total number of pictures: " + std::to_string(total));
      }
    }
  }

  /// The whole output: what TakeSnapshots saw, the calibration with this model, and the rest. The error
  /// printed.
  double ExpectOutput(Session& session, const std::string& model, const std::string& rest) {
    const std::string before = printed_ + "\n" + SEPARATOR + "\n\nComputing monocular calibration, model '" +
                               model + "'. This may take a while...\nCalibration computed! Error = ";
    const std::string after = std::string("\n\n\n") + SEPARATOR + "\n\n" + rest;
    const std::string output = session.Application().Output();
    EXPECT_EQ(output.substr(0, before.size()), before);
    const auto end = output.find('\n', before.size());
    if (end == std::string::npos) {
      ADD_FAILURE() << output;
      return -1.0;
    }
    EXPECT_EQ(output.substr(end), after);
    const std::string error = output.substr(before.size(), end - before.size());
    EXPECT_TRUE(std::regex_match(error, std::regex("[0-9]+(\\.[0-9]+)?(e-[0-9]+)?"))) << error;
    return std::strtod(error.c_str(), nullptr);
  }

  /// The result file of a monocular calibration that comes close to the camera.
  void ExpectResult(const std::string& name, const world::Camera& camera, double error) {
    JSON result;
    ASSERT_TRUE(result.load(folder_.File(name)));
    EXPECT_EQ(result.readInt("sensor"), 0);
    EXPECT_EQ(result.readInt("imgWidth"), 640);
    EXPECT_EQ(result.readInt("imgHeight"), 480);
    EXPECT_NEAR(result.readDouble("error"), error, 1e-5);
    const cv::Mat K = result.readMat("cameraMatrix");
    ASSERT_EQ(K.size(), cv::Size(3, 3));
    ASSERT_EQ(K.type(), CV_64FC1);
    const cv::Matx33d truth = camera.lens.K();
    EXPECT_NEAR(K.at<double>(0, 0), truth(0, 0), 0.01 * truth(0, 0));
    EXPECT_NEAR(K.at<double>(1, 1), truth(1, 1), 0.01 * truth(1, 1));
    EXPECT_NEAR(K.at<double>(0, 2), truth(0, 2), 6.4);
    EXPECT_NEAR(K.at<double>(1, 2), truth(1, 2), 4.8);
  }

  support::TemporaryFolder folder_;
  VirtualDisplay virtualDisplay_;
  std::string printed_;  ///< the lines of TakeSnapshots
};

TEST_F(Interactive, ASessionLeadsFromTheFirstPictureToTheResultFile) {
  const world::Camera camera = SmallCamera();
  std::vector<cv::Mat> pictures(80, EmptyView(camera));
  for (const cv::Mat& view : ViewsOf(camera, 120)) {
    pictures.push_back(view);
  }
  Session session(virtualDisplay_,
                  {"--video", Video("sheet.avi", pictures, 2), "--hdist", "0.2", "--output", "result"},
                  folder_.Path());
  ASSERT_TRUE(session.AwaitPicture());

  TakeSnapshots(session, 10);
  const std::string outOfView = "Failed to add points. Total number of pictures: 0\n";
  EXPECT_EQ(printed_.substr(0, outOfView.size()), outOfView) << "the sheet is out of view at first";
  EXPECT_EQ(session.CalibrateAndReview(), 10);
  EXPECT_EQ(session.TakeSnapshot(), "New points added. Total number of pictures: 1");
  EXPECT_EQ(session.Quit(), 1);

  const double error =
      ExpectOutput(session, "rational", "New points added. Total number of pictures: 1\nBye.\n");
  EXPECT_GT(error, 0.0);
  EXPECT_LT(error, 0.5);
  EXPECT_EQ(session.Application().Errors().find("ERROR"), std::string::npos);
  ExpectResult("result.json", camera, error);
}

TEST_F(Interactive, TheSelectedHalfOfASplitVideoIsCalibrated) {
  const world::Camera left = SmallCamera();
  const world::Camera right = world::CameraFromFieldOfView(left.size, 75.0);
  const std::vector<cv::Mat> leftViews = ViewsOf(left, 60);
  const std::vector<cv::Mat> rightViews = ViewsOf(right, 60);
  std::vector<cv::Mat> pairs;
  for (std::size_t i = 0; i < leftViews.size(); ++i) {
    pairs.push_back(Beside(leftViews[i], rightViews[i]));
  }
  Session session(virtualDisplay_,
                  {"--video", Video("pair.avi", pairs, 3), "--split", "vertical", "--select", "right",
                   "--model", "classic", "--output", "right"},
                  folder_.Path());
  ASSERT_TRUE(session.AwaitPicture());
  TakeSnapshots(session, 8);
  EXPECT_EQ(session.CalibrateAndReview(), 8);
  EXPECT_EQ(session.Quit(), 1);
  ExpectResult("right.json", right, ExpectOutput(session, "classic", "Bye.\n"));
}

TEST_F(Interactive, TheKeysGoOnWorkingAfterTheEndOfAVideo) {
  Session session(virtualDisplay_, {"--video", Video("short.avi", ViewsOf(SmallCamera(), 1), 1)},
                  folder_.Path());
  ASSERT_TRUE(session.AwaitPicture());
  EXPECT_EQ(session.TakeSnapshot(), "New points added. Total number of pictures: 1");
  const cv::Mat one = session.StillPicture("Frame");
  ASSERT_FALSE(one.empty());
  EXPECT_EQ(session.TakeSnapshot(), "New points added. Total number of pictures: 2");
  EXPECT_TRUE(WaitUntil([&] {
    const cv::Mat two = session.StillPicture("Frame");
    return !two.empty() && !Same(one, two);
  })) << "the picture does not tell the new number of snapshots";
  EXPECT_EQ(session.Quit(), 1);
}

TEST_F(Interactive, EnterWithTooFewSnapshotsReportsMinusOneAndTheWindowComesBack) {
  Session session(virtualDisplay_,
                  {"--video", Video("short.avi", ViewsOf(SmallCamera(), 1), 1), "--output", "none"},
                  folder_.Path());
  ASSERT_TRUE(session.AwaitPicture());
  EXPECT_EQ(session.TakeSnapshot(), "New points added. Total number of pictures: 1");
  // The snapshot there is gets its review all the same: a plain picture.
  EXPECT_EQ(session.CalibrateAndReview(), 1);
  EXPECT_FALSE(virtualDisplay_.AwaitWindow("Frame").empty());
  EXPECT_EQ(session.TakeSnapshot(), "New points added. Total number of pictures: 1");
  EXPECT_EQ(session.Quit(), 1);
  EXPECT_NE(session.Application().Output().find("Calibration computed! Error = -1\n\n"), std::string::npos);
  EXPECT_FALSE(std::ifstream(folder_.File("none.json")).is_open());
}

TEST_F(Interactive, ClosingTheReviewEndsIt) {
  Session session(virtualDisplay_,
                  {"--video", Video("sheet.avi", ViewsOf(SmallCamera(), 60), 3), "--output", "result"},
                  folder_.Path());
  ASSERT_TRUE(session.AwaitPicture());
  TakeSnapshots(session, 7);
  std::string review;
  ASSERT_TRUE(session.Press("Frame", "Return", [&] {
    review = virtualDisplay_.FindWindow("Reprojected frame");
    return !review.empty();
  }));
  ASSERT_FALSE(session.StillPicture("Reprojected frame").empty());
  virtualDisplay_.CloseWindow(review);
  EXPECT_FALSE(virtualDisplay_.AwaitWindow("Frame").empty()) << "the session goes on";
  EXPECT_TRUE(virtualDisplay_.FindWindow("Reprojected frame").empty());
  EXPECT_EQ(session.Quit(), 1);
}

TEST_F(Interactive, APictureLargerThanAScreenIsShownScaledDown) {
  cv::Mat large;
  cv::resize(ViewsOf(SmallCamera(), 1).front(), large, {1920, 1080});
  Session session(virtualDisplay_,
                  {"--video", Video("large.avi", {large}, 1), "--width", "1920", "--height", "1080"},
                  folder_.Path());
  ASSERT_TRUE(session.AwaitPicture());
  const cv::Mat live = session.StillPicture("Frame");
  EXPECT_LE(live.cols, 1280);
  EXPECT_LE(live.rows, 720);
  EXPECT_GE(live.cols, 1200) << "no smaller than need be";
  EXPECT_NE(session.TakeSnapshot(), "");
  EXPECT_EQ(session.Quit(), 1);
}

/// Seconds of processor time that a process has used so far.
double ProcessorSeconds(pid_t process) {
  std::ifstream stat("/proc/" + std::to_string(process) + "/stat");
  std::string text{std::istreambuf_iterator<char>(stat), std::istreambuf_iterator<char>()};
  std::istringstream fields(text.substr(text.rfind(')') + 1));
  std::string skipped;
  for (int i = 0; i < 11; ++i) {
    fields >> skipped;
  }
  double user = 0.0;
  double system = 0.0;
  fields >> user >> system;
  return (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

TEST_F(Interactive, AnEndedVideoKeepsTheProcessorAlmostIdle) {
  Session session(virtualDisplay_, {"--video", Video("short.avi", ViewsOf(SmallCamera(), 1), 1)},
                  folder_.Path());
  ASSERT_TRUE(session.AwaitPicture());
  ASSERT_FALSE(session.StillPicture("Frame").empty());
  const pid_t process = session.Application().Id();
  const double used = ProcessorSeconds(process);
  ASSERT_GT(used, 0.0);
  const auto start = std::chrono::steady_clock::now();
  ASSERT_TRUE(WaitUntil([&] { return std::chrono::steady_clock::now() - start > std::chrono::seconds(2); }));
  EXPECT_LT(ProcessorSeconds(process) - used, 1.0);
  EXPECT_EQ(session.Quit(), 1);
}

TEST_F(Interactive, AVideoWhoseFirstFrameCannotBeReadIsNamed) {
  const std::string path = Video("cut.avi", ViewsOf(SmallCamera(), 1), 3);
  const std::string whole = support::ReadText(path);
  const auto firstFrame = whole.find("00dc", whole.find("movi"));
  ASSERT_NE(firstFrame, std::string::npos);
  support::WriteText(path, whole.substr(0, firstFrame + 64));
  const Ending ending = RunToEnd({"--video", path}, virtualDisplay_.Display());
  EXPECT_EQ(ending.status, 255);
  EXPECT_EQ(ending.errors, "ERROR: cannot read video '" + path + "'.\n");
  EXPECT_EQ(ending.output, "");
}

}  // namespace
