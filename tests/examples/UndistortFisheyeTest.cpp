/// The examples that straighten pictures of fisheyes: a line of the scene becomes one of the picture.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "FisheyeResult.h"
#include "Process.h"
#include "TemporaryFolder.h"

namespace {

using support::Process;
constexpr std::chrono::minutes LONG_ENOUGH{2};
const cv::Size SIZE(1280, 960);
constexpr double F = 420.0;
const double K[] = {-0.012, 0.003, -0.0004, 0.00002};
const cv::Point2d MIDDLE(642.0, 476.0);

/// Where the fisheye sees a point; written out here.
cv::Point2d Seen(const cv::Vec3d& p) {
  const double away = std::hypot(p[0], p[1]);
  const double t = std::atan2(away, p[2]);
  const double t2 = t * t;
  const double distance = t * (1.0 + t2 * (K[0] + t2 * (K[1] + t2 * (K[2] + t2 * K[3]))));
  return MIDDLE + F * distance / away * cv::Point2d(p[0], p[1]);
}

class UndistortFisheye : public ::testing::Test {
 protected:
  UndistortFisheye() {
    FisheyeResult lens;
    lens.K = (cv::Mat_<double>(3, 3) << F, 0.0, MIDDLE.x, 0.0, F, MIDDLE.y, 0.0, 0.0, 1.0);
    lens.coefficients = (cv::Mat_<double>(1, 4) << K[0], K[1], K[2], K[3]);
    lens.imageSize = SIZE;
    lens.rms = 0.1;
    support::WriteText(folder_.File("lens_fisheye.json"), lens.ToJson());
    // A bright line from left to right, above the axis and at a slant.
    cv::Mat picture = cv::Mat::zeros(SIZE, CV_8UC3);
    constexpr int FRACTION_BITS = 4;
    std::vector<cv::Point> line;
    for (double x = -0.95; x <= 0.95; x += 0.01)
      line.emplace_back((1 << FRACTION_BITS) * Seen({x, -0.5 + 0.1 * x, 1.0}));
    cv::polylines(picture, line, false, cv::Scalar::all(255), 3, cv::LINE_AA, FRACTION_BITS);
    cv::imwrite(folder_.File("picture.png"), picture);
  }

  std::vector<std::string> Command(std::vector<std::string> program, const std::string& undistorted,
                                   const std::vector<std::string>& more) const {
    program.insert(program.end(), {folder_.File("lens_fisheye.json"), folder_.File("picture.png"),
                                   folder_.File(undistorted)});
    program.insert(program.end(), more.begin(), more.end());
    return program;
  }

  cv::Mat Undistorted(const std::vector<std::string>& program, const std::string& name,
                      const std::vector<std::string>& more = {}) const {
    Process example(Command(program, name, more));
    EXPECT_EQ(example.WaitForExit(LONG_ENOUGH), 0) << example.Errors();
    return cv::imread(folder_.File(name), cv::IMREAD_GRAYSCALE);
  }

  support::TemporaryFolder folder_;
};

/// Of each column of the picture from `first` to `last` the middle of what is bright, less that of the line
/// through their ends: the most.
double BendIn(const cv::Mat& picture, int first, int last) {
  const auto middle = [&](int column) {
    const cv::Moments moments = cv::moments(picture.col(column));
    return moments.m00 > 0.0 ? moments.m01 / moments.m00 : std::nan("");
  };
  const double from = middle(first);
  const double to = middle(last);
  double most = 0.0;
  for (int column = first; column <= last; ++column) {
    const double share = static_cast<double>(column - first) / (last - first);
    most = std::max(most, std::abs(middle(column) - (from + share * (to - from))));
  }
  return std::isfinite(from) && std::isfinite(to) ? most : std::nan("");
}

TEST_F(UndistortFisheye, MakesALineStraight) {
  const cv::Mat before = cv::imread(folder_.File("picture.png"), cv::IMREAD_GRAYSCALE);
  EXPECT_GT(BendIn(before, 400, 880), 5.0);
  const cv::Mat straight = Undistorted({VELMORA_UNDISTORT_FISHEYE}, "straight.png");
  EXPECT_LT(BendIn(straight, 100, 1180), 1.0);
}

TEST_F(UndistortFisheye, ShowsAsMuchAsIsAskedFor) {
  // The line's end at the angle of tan 0.95 is beyond a field of 60 degrees and within one of 120.
  const cv::Mat narrow = Undistorted({VELMORA_UNDISTORT_FISHEYE}, "narrow.png", {"60"});
  EXPECT_GT(cv::countNonZero(narrow.col(1275)), 0);
  const cv::Mat wide = Undistorted({VELMORA_UNDISTORT_FISHEYE}, "wide.png", {"120"});
  EXPECT_EQ(cv::countNonZero(wide.col(1275)), 0);
  EXPECT_LT(BendIn(wide, 400, 880), 1.0);
}

TEST_F(UndistortFisheye, DoesTheSameInPython) {
  const std::string python = VELMORA_PYTHON;
  Process probe({python.empty() ? "false" : python, "-c", "import cv2"});
  if (probe.WaitForExit(LONG_ENOUGH) != 0) GTEST_SKIP() << "Python has no cv2 here";
  const cv::Mat expected = Undistorted({VELMORA_UNDISTORT_FISHEYE}, "cpp.png", {"100"});
  const cv::Mat own = Undistorted({python, VELMORA_UNDISTORT_FISHEYE_PY}, "py.png", {"100"});
  EXPECT_EQ(cv::norm(own, expected, cv::NORM_INF), 0.0);
}

TEST_F(UndistortFisheye, SaysWhatItCannotUse) {
  for (const std::string field : {"0", "180", "wide", "90x"}) {
    Process example(Command({VELMORA_UNDISTORT_FISHEYE}, "none.png", {field}));
    EXPECT_EQ(example.WaitForExit(LONG_ENOUGH), 1) << field;
    EXPECT_EQ(example.Errors().find("ERROR: "), 0U) << example.Errors();
  }
  support::WriteText(folder_.File("lens_fisheye.json"), "{}");
  Process example(Command({VELMORA_UNDISTORT_FISHEYE}, "none.png", {}));
  EXPECT_EQ(example.WaitForExit(LONG_ENOUGH), 1);
  EXPECT_NE(example.Errors().find("ERROR: the text is no result of a fisheye"), std::string::npos);
}

}  // namespace
