/// The examples that use a result file: lines of the scene become straight, and all languages agree.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>

#include "ExifFiles.h"
#include "JSON.h"
#include "Process.h"
#include "Renderer.h"
#include "Views.h"

namespace {

using support::Process;
constexpr std::chrono::minutes LONG_ENOUGH{2};

class Undistort : public ::testing::Test {
 protected:
  Undistort() {
    scene_.camera = world::CameraFromFieldOfView({640, 480}, 65.0, {-0.25, 0.06, 0.0, 0.0, 0.0});
    // Off the middle, but not so far that undistorting would move it out of the picture.
    world::Appearance appearance;
    appearance.x = appearance.y = 0.5;
    appearance.span = 0.6;
    world::Pose pose;
    EXPECT_TRUE(world::PlaceGrid(scene_.camera, scene_.sheet, appearance, 10.0, pose));
    picture_ = world::Renderer(scene_).Render(pose);
    cv::imwrite(folder_.File("picture.png"), picture_);
    WriteResult({-0.25, 0.06, 0.0, 0.0, 0.0});
  }

  void WriteResult(const std::vector<double>& distortion) const {
    JSON result;
    result.addInt("sensor", 0);
    result.addDouble("error", 0.1);
    result.addInt("imgWidth", 640);
    result.addInt("imgHeight", 480);
    result.addMat("cameraMatrix", cv::Mat(scene_.camera.lens.K()));
    result.addMat("distCoefs", cv::Mat(distortion).t());
    ASSERT_TRUE(result.save(folder_.File("camera.json")));
  }

  std::vector<std::string> Files(const std::string& undistorted) const {
    return {folder_.File("camera.json"), folder_.File("picture.png"), folder_.File(undistorted)};
  }

  /// The picture that a program makes of the view.
  cv::Mat Undistorted(std::vector<std::string> command, const std::string& name) const {
    for (const std::string& file : Files(name)) command.push_back(file);
    Process example(command);
    EXPECT_EQ(example.WaitForExit(LONG_ENOUGH), 0) << example.Errors();
    return cv::imread(folder_.File(name));
  }

  support::TemporaryFolder folder_;
  world::Scene scene_;
  cv::Mat picture_;
};

/// The largest distance of the grid's outer rows of centres from straight lines through their ends, pixels.
double Bend(const std::vector<cv::Point2d>& centres) {
  if (centres.size() != 44) return std::nan("");
  double worst = 0.0;
  for (const int column : {0, 3}) {
    // The discs of every second row and the same column lie on a line of the paper.
    const cv::Point2d from = centres[static_cast<size_t>(column)];
    const cv::Point2d to = centres[static_cast<size_t>(40 + column)];
    for (int row = 2; row < 10; row += 2) {
      const cv::Point2d p = centres[static_cast<size_t>(4 * row + column)];
      worst = std::max(worst, std::abs((to - from).cross(p - from)) / cv::norm(to - from));
    }
  }
  return worst;
}

std::vector<cv::Point2d> CentresIn(const cv::Mat& picture) {
  std::vector<cv::Point2d> centres;
  EXPECT_TRUE(cv::findCirclesGrid(picture, cv::Size(4, 11), centres, cv::CALIB_CB_ASYMMETRIC_GRID));
  return centres;
}

TEST_F(Undistort, MakesLinesStraight) {
  std::vector<std::string> command = {VELMORA_UNDISTORT};
  for (const std::string& file : Files("cpp.png")) command.push_back(file);
  Process example(command);
  ASSERT_EQ(example.WaitForExit(LONG_ENOUGH), 0) << example.Errors();
  const double before = Bend(CentresIn(picture_));
  const double after = Bend(CentresIn(cv::imread(folder_.File("cpp.png"))));
  EXPECT_GT(before, 1.5);
  EXPECT_LT(after, 0.3);

  std::string python = VELMORA_PYTHON;
  Process probe({python.empty() ? "false" : python, "-c", "import cv2"});
  if (probe.WaitForExit(LONG_ENOUGH) != 0) GTEST_SKIP() << "Python has no cv2 here";
  command = {python, VELMORA_UNDISTORT_PY};
  for (const std::string& file : Files("py.png")) command.push_back(file);
  Process script(command);
  ASSERT_EQ(script.WaitForExit(LONG_ENOUGH), 0) << script.Errors();
  EXPECT_EQ(cv::norm(cv::imread(folder_.File("cpp.png")), cv::imread(folder_.File("py.png")), cv::NORM_INF),
            0.0);
}

/// Both interpolate, in steps of 1/32 of a pixel here and without steps there; more than that tells a wrong
/// model.
void ExpectSamePictures(const cv::Mat& one, const cv::Mat& other) {
  ASSERT_EQ(one.size(), other.size());
  cv::Mat difference;
  cv::absdiff(one, other, difference);
  EXPECT_LE(cv::norm(difference, cv::NORM_INF), 8.0);
  EXPECT_LT(cv::mean(difference)[0], 0.3);
}

TEST_F(Undistort, MakesTheSamePictureInJava) {
  const std::string java = VELMORA_JAVA;
  if (java.empty()) GTEST_SKIP() << "built without Java";
  const std::vector<std::string> program = {java, "-cp", VELMORA_JAR, VELMORA_UNDISTORT_JAVA};
  const std::vector<std::vector<double>> lenses = {
      {-0.25, 0.06, 0.0, 0.0, 0.0},
      {-0.1, 0.05, 0.001, -0.002, 0.01, 0.15, -0.03, 0.02, 0.003, -0.002, -0.001, 0.002, 0.02, -0.03}};
  for (const std::vector<double>& lens : lenses) {
    WriteResult(lens);
    const cv::Mat expected = Undistorted({VELMORA_UNDISTORT}, "cpp.png");
    // A lens that bends nothing would make any two programs agree.
    EXPECT_GT(cv::norm(expected, picture_, cv::NORM_INF), 100.0);
    ExpectSamePictures(Undistorted(program, "java.png"), expected);
  }
}

/// The result describes the sensor, whichever way up the camera was held.
TEST_F(Undistort, LeavesPicturesAsTheSensorSawThemInEveryLanguage) {
  const std::string jpeg = support::Encoded(picture_, ".jpg");
  std::vector<std::vector<std::string>> programs = {{VELMORA_UNDISTORT}};
  const std::string python = VELMORA_PYTHON;
  Process probe({python.empty() ? "false" : python, "-c", "import cv2"});
  if (probe.WaitForExit(LONG_ENOUGH) == 0) programs.push_back({python, VELMORA_UNDISTORT_PY});
  const std::string java = VELMORA_JAVA;
  if (!java.empty()) programs.push_back({java, "-cp", VELMORA_JAR, VELMORA_UNDISTORT_JAVA});
  for (const auto& program : programs) {
    support::WriteText(folder_.File("picture.png"), jpeg);
    const cv::Mat expected = Undistorted(program, "plain.png");
    ASSERT_EQ(expected.size(), cv::Size(640, 480)) << program.back();
    for (const int orientation : {3, 6}) {
      support::WriteText(folder_.File("picture.png"), support::TurnedJpeg(jpeg, orientation));
      const cv::Mat turned = Undistorted(program, "turned.png");
      ASSERT_EQ(turned.size(), expected.size()) << program.back();
      EXPECT_EQ(cv::norm(turned, expected, cv::NORM_INF), 0.0) << program.back() << " " << orientation;
    }
  }
}

TEST_F(Undistort, RefusesAPictureOfAnotherSize) {
  cv::imwrite(folder_.File("picture.png"), picture_(cv::Rect(0, 0, 320, 240)));
  std::vector<std::string> command = {VELMORA_UNDISTORT};
  for (const std::string& file : Files("cpp.png")) command.push_back(file);
  Process example(command);
  EXPECT_EQ(example.WaitForExit(LONG_ENOUGH), 1);
  EXPECT_EQ(example.Errors(), "ERROR: the picture is missing or of another size.\n");
}

}  // namespace
