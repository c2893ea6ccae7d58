/// A calibrator's detection: what it finds, and what it leaves in the frame.
#include <gtest/gtest.h>

#include <cstring>
#include <opencv2/imgproc.hpp>

#include "Calibrator.h"
#include "Matchers.h"
#include "finder/StandardFinder.h"
#include "imaging/Overlay.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

/// Where the overlay's speed text is: the one text that is not known beforehand.
const cv::Rect SPEED_TEXT(130, 86, 510, 22);

class Detection : public ::testing::Test {
 protected:
  bool Detect(cv::Mat& frame, bool draw) { return calibrator_->DetectPoints(frame, points_, draw); }

  /// What the frame looks like with the overlay, but for the speed.
  static cv::Mat WithOverlay(const cv::Mat& frame, const std::vector<cv::Point2d>& points) {
    cv::Mat expected = frame.clone();
    if (!points.empty()) DrawGrid(points, unit::GRID, expected);
    OverlayState state;
    state.frameSize = unit::FRAME;
    state.status = Calibrator::STATUS_NOT_READY;
    state.elapsed = 1.0;
    DrawOverlay(state, expected);
    return expected;
  }

  /// Expects two frames to be the same outside of the speed text.
  static void ExpectSameButForSpeed(const cv::Mat& frame, const cv::Mat& expected,
                                    const cv::Rect& speed = SPEED_TEXT) {
    cv::Mat frameWithout = frame.clone();
    cv::Mat expectedWithout = expected.clone();
    frameWithout(speed).setTo(0);
    expectedWithout(speed).setTo(0);
    EXPECT_SAME_MAT(frameWithout, expectedWithout);
  }

  std::unique_ptr<Calibrator> calibrator_ = unit::MakeCalibrator();
  std::vector<cv::Point2d> points_;
};

TEST_F(Detection, FindsTheTrueCentresInTheOrderOfTheGrid) {
  const unit::RenderedViews& views = unit::Rendered();
  for (size_t view = 0; view < views.images.size(); ++view) {
    SCOPED_TRACE(view);
    cv::Mat frame = views.images[view].clone();
    ASSERT_TRUE(Detect(frame, view % 2 == 0));
    ASSERT_EQ(points_.size(), 44U);
    for (size_t i = 0; i < points_.size(); ++i) EXPECT_LT(cv::norm(points_[i] - views.centres[view][i]), 0.7);
  }
}

TEST_F(Detection, PrintsNothing) {
  cv::Mat with = unit::ImageWithGrid();
  cv::Mat without = unit::ImageWithoutGrid();
  const unit::ScopedLogLevel everything(5);
  EXPECT_EQ(unit::PrintedBy([&] {
              Detect(with, true);
              Detect(without, true);
            }),
            "");
}

TEST_F(Detection, LeavesThePixelsAloneWithoutDrawing) {
  for (const cv::Mat& image : {unit::ImageWithGrid(), unit::ImageWithoutGrid()}) {
    cv::Mat frame = image.clone();
    Detect(frame, false);
    EXPECT_SAME_MAT(frame, image);
  }
}

TEST_F(Detection, LeavesTheResizedPixelsAloneWithoutDrawing) {
  cv::Mat large;
  cv::resize(unit::ImageWithGrid(), large, {1600, 1000}, 0, 0, cv::INTER_LINEAR);
  cv::Mat expected;
  calibrator_->Resize(large, expected, true, 0);
  cv::Mat frame = large.clone();
  ASSERT_TRUE(Detect(frame, false));
  EXPECT_SAME_MAT(frame, expected);
  std::vector<cv::Point2d> expectedPoints;
  ASSERT_TRUE(FindGridStandard(expected, unit::GRID, expectedPoints));
  EXPECT_EQ(points_, expectedPoints);
}

TEST_F(Detection, DrawsCornersAndOverlayWhenTheGridIsFound) {
  const cv::Mat image = unit::ImageWithGrid();
  cv::Mat frame = image.clone();
  ASSERT_TRUE(Detect(frame, true));
  ExpectSameButForSpeed(frame, WithOverlay(image, points_));
  cv::Mat withoutOverlay = image.clone();
  DrawGrid(points_, unit::GRID, withoutOverlay);
  EXPECT_FALSE(support::SameMat(frame(SPEED_TEXT), withoutOverlay(SPEED_TEXT))) << "the speed is missing";
}

TEST_F(Detection, DrawsOnlyTheOverlayWhenTheGridIsNotFound) {
  const cv::Mat image = unit::ImageWithoutGrid();
  cv::Mat frame = image.clone();
  ASSERT_FALSE(Detect(frame, true));
  ExpectSameButForSpeed(frame, WithOverlay(image, {}));
  EXPECT_FALSE(support::SameMat(frame(SPEED_TEXT), image(SPEED_TEXT))) << "the speed is missing";
}

TEST_F(Detection, MirrorsOnlyWhatIsShown) {
  const cv::Mat image = unit::ImageWithGrid();
  cv::Mat plain = image.clone();
  ASSERT_TRUE(Detect(plain, false));
  const std::vector<cv::Point2d> unmirrored = points_;

  calibrator_->SetFlipImage(true);
  cv::Mat frame = image.clone();
  ASSERT_TRUE(Detect(frame, false));
  EXPECT_EQ(points_, unmirrored);
  cv::Mat mirrored;
  cv::flip(image, mirrored, 1);
  EXPECT_SAME_MAT(frame, mirrored);
}

TEST_F(Detection, MirrorsFramesWithoutAGridToo) {
  calibrator_->SetFlipImage(true);
  const cv::Mat image = unit::ImageWithoutGrid();
  cv::Mat frame = image.clone();
  ASSERT_FALSE(Detect(frame, false));
  cv::Mat mirrored;
  cv::flip(image, mirrored, 1);
  EXPECT_SAME_MAT(frame, mirrored);
}

TEST_F(Detection, MirrorsTheDrawingWithTheImage) {
  calibrator_->SetFlipImage(true);
  const cv::Mat image = unit::ImageWithGrid();
  cv::Mat frame = image.clone();
  ASSERT_TRUE(Detect(frame, true));
  cv::Mat mirrored;
  cv::flip(WithOverlay(image, points_), mirrored, 1);
  const cv::Rect mirroredSpeed(unit::FRAME.width - SPEED_TEXT.x - SPEED_TEXT.width, SPEED_TEXT.y,
                               SPEED_TEXT.width, SPEED_TEXT.height);
  ExpectSameButForSpeed(frame, mirrored, mirroredSpeed);
}

TEST_F(Detection, TakesGreyFramesAndFramesOfFourChannels) {
  cv::Mat image = unit::ImageWithGrid();
  ASSERT_TRUE(Detect(image, false));
  const std::vector<cv::Point2d> expected = points_;
  for (const int conversion : {cv::COLOR_BGR2GRAY, cv::COLOR_BGR2BGRA}) {
    cv::Mat plain;
    cv::cvtColor(unit::ImageWithGrid(), plain, conversion);
    cv::Mat frame = plain.clone();
    points_.clear();
    EXPECT_TRUE(Detect(frame, true));
    EXPECT_EQ(points_, expected);
    ExpectSameButForSpeed(frame, WithOverlay(plain, points_));
  }
}

TEST_F(Detection, RefusesOtherKindsOfPixelsWithAMessage) {
  const std::pair<int, std::string> kinds[] = {
      {CV_16UC3, "18"}, {CV_8UC2, "8"}, {CV_32FC1, "5"}, {CV_8SC3, "17"}, {CV_8UC(5), "32"}};
  for (const auto& kind : kinds) {
    cv::Mat image(720, 1280, kind.first);
    std::memset(image.data, 100, image.total() * image.elemSize());
    cv::Mat frame = image.clone();
    bool found = true;
    EXPECT_EQ(unit::PrintedBy([&] { found = Detect(frame, true); }),
              "ERROR : Cannot process a frame of OpenCV type " + kind.second +
                  ": 8 bits and 1, 3 or 4 channels are needed.\n");
    EXPECT_FALSE(found);
    EXPECT_SAME_MAT(frame, image);
  }
}

TEST_F(Detection, RefusesAFrameWithoutDataQuietly) {
  for (const cv::Mat& nothing : {cv::Mat(), cv::Mat(0, 640, CV_8UC3)}) {
    cv::Mat frame = nothing.clone();
    points_ = {{1.0, 2.0}};
    bool found = true;
    EXPECT_EQ(unit::PrintedBy([&] { found = Detect(frame, true); }), "");
    EXPECT_FALSE(found);
    EXPECT_TRUE(frame.empty());
    EXPECT_EQ(points_.size(), 1U);
  }
}

TEST_F(Detection, RefusesAFrameOfExtremeAspectWithAMessage) {
  const cv::Mat image(100000, 1, CV_8UC1, cv::Scalar(7));
  cv::Mat frame = image.clone();
  bool found = true;
  EXPECT_EQ(unit::PrintedBy([&] { found = Detect(frame, true); }),
            "ERROR : Cannot process a frame of 1 x 100000 pixels.\n");
  EXPECT_FALSE(found);
  EXPECT_SAME_MAT(frame, image);
}

TEST_F(Detection, IsRememberedUntilTheNextFrameWithoutAGrid) {
  cv::Mat with = unit::ImageWithGrid();
  ASSERT_TRUE(Detect(with, false));
  EXPECT_TRUE(calibrator_->IsDetected());
  cv::Mat without = unit::ImageWithoutGrid();
  ASSERT_FALSE(Detect(without, false));
  EXPECT_FALSE(calibrator_->IsDetected());
}

TEST_F(Detection, IsForgottenAtAFrameThatCannotBeProcessed) {
  for (cv::Mat bad : {cv::Mat(), cv::Mat(480, 640, CV_16UC3, cv::Scalar::all(0))}) {
    cv::Mat with = unit::ImageWithGrid();
    ASSERT_TRUE(Detect(with, false));
    unit::PrintedBy([&] { Detect(bad, false); });
    EXPECT_FALSE(calibrator_->IsDetected());
  }
}

TEST_F(Detection, ChangesNeitherSnapshotsNorStatus) {
  cv::Mat frame = unit::ImageWithGrid();
  ASSERT_TRUE(Detect(frame, true));
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 0);
  EXPECT_EQ(calibrator_->GetStatus(), Calibrator::STATUS_NOT_READY);
}

TEST_F(Detection, GoesOnDuringAComputation) {
  calibrator_->SetStatus(Calibrator::STATUS_PROGRESS);
  cv::Mat frame = unit::ImageWithGrid();
  EXPECT_TRUE(Detect(frame, true));
  EXPECT_TRUE(calibrator_->IsDetected());
}

TEST_F(Detection, TouchesNothingInAStereoCalibrator) {
  const auto stereo = unit::MakeCalibrator(Calibrator::STEREO);
  stereo->SetFlipImage(true);
  const cv::Mat image(720, 1280, CV_8UC3, cv::Scalar(10, 20, 30));
  cv::Mat frame = image.clone();
  points_ = {{1.0, 2.0}};
  EXPECT_FALSE(stereo->DetectPoints(frame, points_, true));
  EXPECT_SAME_MAT(frame, image);
  EXPECT_EQ(points_.size(), 1U);
  cv::Mat withGrid = unit::ImageWithGrid();
  EXPECT_FALSE(stereo->DetectPoints(withGrid, points_, true));
  EXPECT_FALSE(stereo->IsDetected());
}

TEST_F(Detection, FindsGridsOfOtherSizes) {
  // The first seven rows of the grid are a grid as well.
  Calibrator smaller({4, 7}, unit::UNIT, Calibrator::MONOCULAR, 640, 480);
  cv::Mat frame = unit::ImageWithGrid();
  for (size_t i = 28; i < 44; ++i) {
    cv::circle(frame, unit::Rendered().centres.front()[i], 22, cv::Scalar(225, 225, 225), cv::FILLED);
  }
  ASSERT_TRUE(smaller.DetectPoints(frame, points_, false));
  ASSERT_EQ(points_.size(), 28U);
  EXPECT_LT(cv::norm(points_[27] - unit::Rendered().centres.front()[27]), 0.7);
}

}  // namespace
