/// When a calibrator's preview is on, and when its window is open.
#include "capture/Preview.h"

#include <gtest/gtest.h>

#include "capture/FakeWindow.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

class PreviewOfOne : public testing::Test {
 protected:
  static cv::Mat Picture(int value) { return {4, 4, CV_8UC3, cv::Scalar::all(value)}; }

  bool Opens() {
    return unit::Eventually([&] { return log->exists.load(); });
  }
  bool Closes() {
    return unit::Eventually([&] { return !log->exists; });
  }
  bool Shows(int value) {
    return unit::Eventually([&] {
      const auto shown = log->Shown();
      return !shown.empty() && shown.back() == value;
    });
  }

  const std::shared_ptr<unit::WindowLog> log = std::make_shared<unit::WindowLog>();
  PreviewWindow window{std::make_unique<unit::FakeBackend>(log)};
  Preview preview{window};
};

TEST_F(PreviewOfOne, OpeningItOpensTheWindowAndClosingItClosesIt) {
  EXPECT_FALSE(preview.Enabled());
  preview.Open();
  EXPECT_TRUE(preview.Enabled());
  EXPECT_TRUE(Opens());
  preview.Open();
  preview.Close();
  EXPECT_FALSE(preview.Enabled());
  EXPECT_TRUE(Closes());
  EXPECT_EQ(log->created, 1);
}

TEST_F(PreviewOfOne, ClosingItWhenItIsOffDoesNothing) {
  EXPECT_EQ(unit::PrintedBy([&] { preview.Close(); }), "");
  EXPECT_EQ(log->questions, 0);
}

TEST_F(PreviewOfOne, ShowsFramesOnlyWhenItIsOn) {
  preview.Show(Picture(1));
  preview.Open();
  preview.Show(Picture(2));
  EXPECT_TRUE(Shows(2));
  EXPECT_EQ(log->Shown(), std::vector<int>{2});
}

TEST_F(PreviewOfOne, ShowsACopy) {
  preview.Open();
  log->slow = true;
  preview.Show(Picture(1));
  ASSERT_TRUE(unit::Eventually([&] { return log->entered == 1; }));
  cv::Mat frame = Picture(2);
  preview.Show(frame);
  frame = cv::Scalar::all(99);
  log->slow = false;
  EXPECT_TRUE(Shows(2));
}

TEST_F(PreviewOfOne, ASourceClosesTheWindowAndTheNextOneOpensItAgain) {
  preview.SourceOpened();
  EXPECT_EQ(log->questions, 0) << "it is off";
  preview.Open();
  ASSERT_TRUE(Opens());
  preview.SourceClosed();
  EXPECT_TRUE(Closes());
  EXPECT_TRUE(preview.Enabled());
  preview.SourceOpened();
  EXPECT_TRUE(Opens());
}

TEST_F(PreviewOfOne, AFrameOpensTheWindowThatASourceClosed) {
  preview.Open();
  preview.SourceClosed();
  ASSERT_TRUE(Closes());
  preview.Show(Picture(3));
  EXPECT_TRUE(Shows(3));
  EXPECT_TRUE(log->exists);
}

TEST_F(PreviewOfOne, WithoutADisplayItSaysSoOnceAndStaysOff) {
  log->displayAvailable = false;
  EXPECT_EQ(unit::PrintedBy([&] {
              preview.Open();
              preview.SourceOpened();
              preview.Show(Picture(1));
              preview.SourceClosed();
              preview.Close();
            }),
            "ERROR : Cannot open the preview. No display.\n");
  EXPECT_FALSE(preview.Enabled());
}

TEST_F(PreviewOfOne, ItsEndClosesTheWindow) {
  {
    Preview other(window);
    other.Open();
    ASSERT_TRUE(Opens());
  }
  EXPECT_TRUE(Closes());
}

TEST(SideBySidePicture, PutsTheRightOneBesideTheLeftOne) {
  const cv::Mat both =
      SideBySidePicture(cv::Mat(2, 3, CV_8UC1, cv::Scalar(1)), cv::Mat(2, 3, CV_8UC1, cv::Scalar(2)));
  ASSERT_EQ(both.size(), cv::Size(6, 2));
  EXPECT_EQ(both.at<uchar>(1, 2), 1);
  EXPECT_EQ(both.at<uchar>(0, 3), 2);
}

TEST(SideBySidePicture, BringsTheRightOneToTheSizeAndBothToColour) {
  const cv::Mat both =
      SideBySidePicture(cv::Mat(4, 6, CV_8UC1, cv::Scalar(1)), cv::Mat(2, 2, CV_8UC4, cv::Scalar::all(2)));
  ASSERT_EQ(both.size(), cv::Size(12, 4));
  ASSERT_EQ(both.type(), CV_8UC3);
  EXPECT_EQ(both.at<cv::Vec3b>(0, 0), cv::Vec3b(1, 1, 1));
  EXPECT_EQ(both.at<cv::Vec3b>(3, 11), cv::Vec3b(2, 2, 2));
}

TEST(CalibratorPreview, WithoutADisplayPrintsOneErrorLine) {
  const unit::ScopedNoDisplay none;
  const auto calibrator = unit::MakeCalibrator();
  EXPECT_EQ(unit::PrintedBy([&] { calibrator->OpenPreview(); }),
            "ERROR : Cannot open the preview. No display to open a window on: DISPLAY is not set.\n");
  EXPECT_EQ(unit::PrintedBy([&] { calibrator->ClosePreview(); }), "");
}

TEST(CalibratorPreview, WithADisplayThatDoesNotAnswerPrintsOneErrorLine) {
  const unit::ScopedNoDisplay none;
  const unit::ScopedVariable display("DISPLAY", ":97");
  const auto calibrator = unit::MakeCalibrator();
  EXPECT_EQ(
      unit::PrintedBy([&] { calibrator->OpenPreview(); }),
      "ERROR : Cannot open the preview. No display to open a window on: DISPLAY is ':97', which does not "
      "answer.\n");
}

}  // namespace
