/// The information overlay of the live image.
#include "imaging/Overlay.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include "Calibrator.h"
#include "Matchers.h"

using namespace velmora;

namespace {

const cv::Scalar WHITE(255, 255, 255);

OverlayState SomeState() {
  OverlayState state;
  state.snapshots = 3;
  state.goal = 12;
  state.frameSize = {640, 480};
  state.status = Calibrator::STATUS_NOT_READY;
  state.elapsed = 0.05;
  return state;
}

void ExpectLine(const OverlayText& line, const std::string& text, cv::Point origin,
                const cv::Scalar& colour) {
  EXPECT_EQ(line.text, text);
  EXPECT_EQ(line.origin, origin);
  EXPECT_EQ(line.colour, colour);
}

OverlayText SpeedOf(double elapsed) {
  OverlayState state = SomeState();
  state.elapsed = elapsed;
  return OverlayTexts(state).back();
}

TEST(Overlay, IsDrawnByACalibratorForEverybody) {
  Calibrator calibrator({4, 11}, 0.02F, Calibrator::MONOCULAR, 640, 480);
  cv::Mat frame(480, 640, CV_8UC3, cv::Scalar::all(50));
  cv::Mat expected = frame.clone();
  calibrator.drawInfo(frame, 0.05);
  OverlayState state = SomeState();
  state.snapshots = 0;
  state.goal = -1;
  DrawOverlay(state, expected);
  EXPECT_SAME_MAT(frame, expected);
}

TEST(Overlay, HasSixTextsInDrawingOrder) {
  const std::vector<OverlayText> texts = OverlayTexts(SomeState());
  ASSERT_EQ(texts.size(), 6U);
  ExpectLine(texts[0], "snapshot: 3 / 12", {10, 60}, WHITE);
  ExpectLine(texts[1], "image size: [640 x 480]", {10, 40}, WHITE);
  ExpectLine(texts[2], "version: 5.1.0", {10, 20}, WHITE);
  ExpectLine(texts[3], "status: NOT READY", {10, 80}, WHITE);
  ExpectLine(texts[4], "performances:", {10, 100}, WHITE);
  ExpectLine(texts[5], "medium (20)", {130, 100}, cv::Scalar(0, 255, 255));
}

TEST(Overlay, ShowsTheGoalOnlyAboveFive) {
  const auto snapshotText = [](int goal) {
    OverlayState state = SomeState();
    state.goal = goal;
    return OverlayTexts(state).front().text;
  };
  EXPECT_EQ(snapshotText(12), "snapshot: 3 / 12");
  EXPECT_EQ(snapshotText(6), "snapshot: 3 / 6");
  EXPECT_EQ(snapshotText(5), "snapshot: 3");
  EXPECT_EQ(snapshotText(0), "snapshot: 3");
  EXPECT_EQ(snapshotText(-1), "snapshot: 3");
  EXPECT_EQ(snapshotText(-2), "snapshot: 3");
}

TEST(Overlay, HasNoGoalByDefault) {
  OverlayState state;
  state.elapsed = 1.0;
  EXPECT_EQ(OverlayTexts(state).front().text, "snapshot: 0");
}

TEST(Overlay, HasAWordForEachStatus) {
  const auto statusText = [](int status) {
    OverlayState state = SomeState();
    state.status = status;
    return OverlayTexts(state)[3].text;
  };
  EXPECT_EQ(statusText(Calibrator::STATUS_NOT_READY), "status: NOT READY");
  EXPECT_EQ(statusText(Calibrator::STATUS_READY), "status: READY");
  EXPECT_EQ(statusText(Calibrator::STATUS_COMPLETED), "status: COMPLETED");
  EXPECT_EQ(statusText(Calibrator::STATUS_PROGRESS), "status: PROGRESS");
  EXPECT_EQ(statusText(500), "status: UNKNOWN");
  EXPECT_EQ(statusText(0), "status: UNKNOWN");
  EXPECT_EQ(statusText(-1), "status: UNKNOWN");
}

struct SpeedCase {
  double rate;
  const char* text;
  cv::Scalar colour;
};

class OverlaySpeed : public ::testing::TestWithParam<SpeedCase> {};

TEST_P(OverlaySpeed, IsLabelledByTheTruncatedRateAndWrittenWithThreeDigits) {
  const SpeedCase& speed = GetParam();
  // The time whose rate is not below the wanted one, though the division rounds.
  double elapsed = 1.0 / speed.rate;
  while (1.0 / elapsed < speed.rate) elapsed = std::nextafter(elapsed, 0.0);
  ExpectLine(SpeedOf(elapsed), speed.text, {130, 100}, speed.colour);
}

const cv::Scalar GREEN(0, 255, 0);
const cv::Scalar LIGHT_GREEN(0, 255, 128);
const cv::Scalar YELLOW(0, 255, 255);
const cv::Scalar ORANGE(0, 128, 255);
const cv::Scalar RED(0, 0, 255);

INSTANTIATE_TEST_SUITE_P(
    Rates, OverlaySpeed,
    ::testing::Values(SpeedCase{0.5, "poor (0.5)", RED}, SpeedCase{1.23456, "poor (1.23)", RED},
                      SpeedCase{7.5, "poor (7.5)", RED}, SpeedCase{7.999, "poor (8)", RED},
                      SpeedCase{8.0, "low (8)", ORANGE}, SpeedCase{15.9, "low (15.9)", ORANGE},
                      SpeedCase{15.999, "low (16)", ORANGE}, SpeedCase{16.0, "medium (16)", YELLOW},
                      SpeedCase{22.9, "medium (22.9)", YELLOW}, SpeedCase{23.0, "good (23)", LIGHT_GREEN},
                      SpeedCase{30.9, "good (30.9)", LIGHT_GREEN}, SpeedCase{31.0, "excellent (31)", GREEN},
                      SpeedCase{33.3333, "excellent (33.3)", GREEN},
                      SpeedCase{123.4, "excellent (123)", GREEN},
                      SpeedCase{1234.5, "excellent (1.23e+03)", GREEN},
                      SpeedCase{1e9, "excellent (1e+09)", GREEN}));

TEST(Overlay, CallsExactlyEightDetectionsASecondLow) {
  ExpectLine(SpeedOf(0.125), "low (8)", {130, 100}, cv::Scalar(0, 128, 255));
}

TEST(Overlay, CallsAnUncountableSpeedPoor) {
  ExpectLine(SpeedOf(0.0), "poor (inf)", {130, 100}, cv::Scalar(0, 0, 255));
  EXPECT_EQ(SpeedOf(1e-300).colour, cv::Scalar(0, 0, 255));
}

class OverlayDrawing : public ::testing::TestWithParam<int> {};

TEST_P(OverlayDrawing, EqualsTheTextsDrawnOneByOne) {
  OverlayState state = SomeState();
  state.elapsed = 0.03;
  cv::Mat expected(480, 640, GetParam(), cv::Scalar(60, 90, 120, 150));
  cv::Mat frame = expected.clone();
  const auto put = [&](const char* text, int x, int y, const cv::Scalar& colour) {
    cv::putText(expected, text, {x, y}, cv::FONT_HERSHEY_DUPLEX, 0.5, colour, 1, cv::LINE_AA, false);
  };
  put("snapshot: 3 / 12", 10, 60, WHITE);
  put("image size: [640 x 480]", 10, 40, WHITE);
  put("version: 5.1.0", 10, 20, WHITE);
  put("status: NOT READY", 10, 80, WHITE);
  put("performances:", 10, 100, WHITE);
  put("excellent (33.3)", 130, 100, cv::Scalar(0, 255, 0));
  DrawOverlay(state, frame);
  EXPECT_SAME_MAT(frame, expected);
}

INSTANTIATE_TEST_SUITE_P(Channels, OverlayDrawing, ::testing::Values(CV_8UC1, CV_8UC3, CV_8UC4));

TEST(Overlay, FitsFramesSmallerThanItself) {
  cv::Mat frame = cv::Mat::zeros(50, 40, CV_8UC3);
  DrawOverlay(SomeState(), frame);
  EXPECT_EQ(frame.size(), cv::Size(40, 50));
  EXPECT_GT(cv::norm(frame), 0.0);
}

TEST(Overlay, DrawsTheGridAsFoundCornersInSinglePrecision) {
  std::vector<cv::Point2d> points;
  for (int i = 0; i < 44; ++i) points.emplace_back(20.3 + 9.7 * i, 100.1 + 23.9 * (i % 7));
  cv::Mat frame(480, 640, CV_8UC3, cv::Scalar(128, 128, 128));
  cv::Mat expected = frame.clone();
  const std::vector<cv::Point2f> corners(points.begin(), points.end());
  cv::drawChessboardCorners(expected, {4, 11}, corners, true);
  DrawGrid(points, {4, 11}, frame);
  EXPECT_SAME_MAT(frame, expected);
}

}  // namespace
