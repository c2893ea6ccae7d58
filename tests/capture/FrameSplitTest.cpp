/// How frames of a side-by-side camera are cut.
#include "capture/FrameSplit.h"

#include <gtest/gtest.h>

using namespace velmora;

namespace {

constexpr int LEFT = 10;
constexpr int RIGHT = 20;

/// Its left half shows one value, its right half (and the odd column) another.
cv::Mat TwoViews(int width = 8, int height = 3) {
  cv::Mat frame(height, width, CV_8UC1, cv::Scalar(RIGHT));
  frame.colRange(0, width / 2) = cv::Scalar(LEFT);
  return frame;
}

bool Shows(const cv::Mat& view, int value, const cv::Size& size = {4, 3}) {
  return view.size() == size && cv::countNonZero(view != value) == 0;
}

TEST(FrameSplit, ModeOneKeepsTheRightHalfAlone) {
  const CapturedViews views = SplitViews(TwoViews(), 1);
  EXPECT_TRUE(Shows(views.frame, RIGHT));
  EXPECT_TRUE(views.right.empty());
  EXPECT_FALSE(views.pair);
}

TEST(FrameSplit, ModeMinusOneKeepsTheLeftHalfAlone) {
  const CapturedViews views = SplitViews(TwoViews(), -1);
  EXPECT_TRUE(Shows(views.frame, LEFT));
  EXPECT_TRUE(views.right.empty());
  EXPECT_FALSE(views.pair);
}

TEST(FrameSplit, ModeZeroMakesAPair) {
  const CapturedViews views = SplitViews(TwoViews(), 0);
  EXPECT_TRUE(Shows(views.frame, LEFT));
  EXPECT_TRUE(Shows(views.right, RIGHT));
  EXPECT_TRUE(views.pair);
}

TEST(FrameSplit, AnyOtherModeKeepsBothWithoutMakingThemAPair) {
  for (const int mode : {2, -2, 100}) {
    const CapturedViews views = SplitViews(TwoViews(), mode);
    EXPECT_TRUE(Shows(views.frame, LEFT)) << mode;
    EXPECT_TRUE(Shows(views.right, RIGHT)) << mode;
    EXPECT_FALSE(views.pair) << mode;
  }
}

TEST(FrameSplit, TheOddColumnOfAnOddWidthIsLeftOut) {
  const CapturedViews views = SplitViews(TwoViews(9), 0);
  EXPECT_TRUE(Shows(views.frame, LEFT));
  EXPECT_TRUE(Shows(views.right, RIGHT));
}

TEST(FrameSplit, AFrameOnePixelWideHasNoHalves) {
  for (const int mode : {-1, 0, 1, 2}) EXPECT_TRUE(SplitViews(TwoViews(1), mode).frame.empty()) << mode;
}

TEST(FrameSplit, HalvesAreCopies) {
  cv::Mat frame = TwoViews();
  const CapturedViews views = SplitViews(frame, 0);
  frame = cv::Scalar(99);
  EXPECT_TRUE(Shows(views.frame, LEFT));
  EXPECT_TRUE(Shows(views.right, RIGHT));
}

}  // namespace
