/// Bringing frames to the processing size.
#include "imaging/FrameResize.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "Matchers.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

const cv::Size TARGET(640, 480);

/// Each pixel holds its own column and row.
cv::Mat IndexImage(int width, int height) {
  cv::Mat image(height, width, CV_16UC2);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      image.at<cv::Vec2w>(y, x) = {static_cast<ushort>(x), static_cast<ushort>(y)};
    }
  }
  return image;
}

cv::Mat Filled(const cv::Mat& src, const cv::Size& size = TARGET, int interpolation = cv::INTER_NEAREST) {
  cv::Mat dst;
  EXPECT_TRUE(ResizeFrame(src, dst, size, true, interpolation));
  return dst;
}

/// The scaled image with its overflow cut away from (x, y) on.
cv::Mat ScaledAndCut(const cv::Mat& src, const cv::Size& scaledSize, int x, int y) {
  cv::Mat scaled;
  cv::resize(src, scaled, scaledSize, 0, 0, cv::INTER_NEAREST);
  return scaled(cv::Rect(x, y, TARGET.width, TARGET.height)).clone();
}

TEST(FrameResize, ScalesAWideFrameTo853ColumnsAndCutsAt106) {
  const cv::Mat src = IndexImage(1280, 720);
  const cv::Mat dst = Filled(src);
  EXPECT_SAME_MAT(dst, ScaledAndCut(src, {853, 480}, 106, 0));
  // The nearest neighbour of the first column left: 106 of 853 columns from the left edge.
  EXPECT_EQ(dst.at<cv::Vec2w>(0, 0)[0], 106 * 1280 / 853);
  EXPECT_EQ(dst.at<cv::Vec2w>(479, 0)[1], 479 * 720 / 480);
}

TEST(FrameResize, ScalesAPortraitFrameTo853RowsAndCutsAt186) {
  const cv::Mat src = IndexImage(480, 640);
  const cv::Mat dst = Filled(src);
  EXPECT_SAME_MAT(dst, ScaledAndCut(src, {640, 853}, 0, 186));
  EXPECT_EQ(dst.at<cv::Vec2w>(0, 0)[1], 186 * 640 / 853);
}

TEST(FrameResize, CopiesAFrameOfTheTargetSizeUnchanged) {
  const cv::Mat src = IndexImage(640, 480);
  cv::Mat dst = Filled(src);
  EXPECT_SAME_MAT(dst, src);
  dst.setTo(0);
  EXPECT_SAME_MAT(src, IndexImage(640, 480));
}

TEST(FrameResize, ScalesWithoutACutWhenTheFactorsAreEqual) {
  const cv::Mat src = IndexImage(1280, 960);
  cv::Mat expected;
  cv::resize(src, expected, TARGET, 0, 0, cv::INTER_NEAREST);
  EXPECT_SAME_MAT(Filled(src), expected);
}

TEST(FrameResize, EnlargesASmallFrame) {
  const cv::Mat src = IndexImage(320, 180);
  EXPECT_SAME_MAT(Filled(src), ScaledAndCut(src, {853, 480}, 106, 0));
}

TEST(FrameResize, TruncatesTheScaledSideInsteadOfRoundingIt) {
  // 1000 x 480 / 700 = 685.7
  const cv::Mat src = IndexImage(1000, 700);
  EXPECT_SAME_MAT(Filled(src), ScaledAndCut(src, {685, 480}, 22, 0));
}

TEST(FrameResize, ComputesTheScaledSideInSinglePrecision) {
  // A width for which the two precisions disagree about the scaled side.
  int width = 0;
  int height = 0;
  int single = 0;
  for (int h = 481; h < 1200 && width == 0; ++h) {
    for (int w = h * 4 / 3 + 1; w < 1600 && width == 0; ++w) {
      single = static_cast<int>(480.0F / static_cast<float>(h) * static_cast<float>(w));
      if (single > static_cast<int>(480.0 / h * w)) {
        width = w;
        height = h;
      }
    }
  }
  ASSERT_GT(width, 0);
  const cv::Mat src = IndexImage(width, height);
  EXPECT_SAME_MAT(Filled(src), ScaledAndCut(src, {single, 480}, (single - 640) / 2, 0));
}

TEST(FrameResize, MayWriteOverItsSource) {
  for (const cv::Size& size :
       {cv::Size(1280, 720), cv::Size(480, 640), cv::Size(640, 480), cv::Size(320, 240)}) {
    const cv::Mat src = IndexImage(size.width, size.height);
    cv::Mat both = src.clone();
    EXPECT_TRUE(ResizeFrame(both, both, TARGET, true, cv::INTER_NEAREST));
    EXPECT_SAME_MAT(both, Filled(src));
  }
}

TEST(FrameResize, LeavesTheSourceAloneWhenItIsAnotherMatrix) {
  const cv::Mat src = IndexImage(1280, 720);
  Filled(src).setTo(0);
  EXPECT_SAME_MAT(src, IndexImage(1280, 720));
}

TEST(FrameResize, TakesARegionOfInterest) {
  const cv::Mat whole = IndexImage(1400, 800);
  const cv::Mat region = whole(cv::Rect(50, 30, 1280, 720));
  EXPECT_SAME_MAT(Filled(region), Filled(region.clone()));
  const cv::Mat sameSize = whole(cv::Rect(50, 30, 640, 480));
  EXPECT_SAME_MAT(Filled(sameSize), sameSize.clone());
}

TEST(FrameResize, GivesContinuousData) {
  for (const cv::Size& size :
       {cv::Size(1280, 720), cv::Size(480, 640), cv::Size(640, 480), cv::Size(1280, 960)}) {
    EXPECT_TRUE(Filled(IndexImage(size.width, size.height)).isContinuous()) << size;
  }
}

TEST(FrameResize, IgnoresTheAspectRatioWhenItDoesNotFill) {
  const cv::Mat src = IndexImage(1280, 720);
  cv::Mat expected;
  cv::resize(src, expected, TARGET, 0, 0, cv::INTER_NEAREST);
  cv::Mat dst;
  EXPECT_TRUE(ResizeFrame(src, dst, TARGET, false, cv::INTER_NEAREST));
  EXPECT_SAME_MAT(dst, expected);
  EXPECT_EQ(dst.at<cv::Vec2w>(0, 1)[0], 2);
}

TEST(FrameResize, InterpolatesAsAsked) {
  const cv::Mat src = IndexImage(1280, 720);
  cv::Mat scaled;
  cv::resize(src, scaled, {853, 480}, 0, 0, cv::INTER_LINEAR);
  const cv::Mat linear = Filled(src, TARGET, cv::INTER_LINEAR);
  EXPECT_SAME_MAT(linear, scaled(cv::Rect(106, 0, 640, 480)).clone());
  EXPECT_FALSE(support::SameMat(linear, Filled(src)));
}

TEST(FrameResize, LeavesTheDestinationAloneForASourceWithoutData) {
  for (const cv::Mat& nothing : {cv::Mat(), cv::Mat(0, 640, CV_8UC3), cv::Mat(480, 0, CV_8UC3)}) {
    cv::Mat dst = IndexImage(8, 6);
    EXPECT_FALSE(ResizeFrame(nothing, dst, TARGET, true, cv::INTER_NEAREST));
    EXPECT_FALSE(ResizeFrame(nothing, dst, TARGET, false, cv::INTER_NEAREST));
    EXPECT_SAME_MAT(dst, IndexImage(8, 6));
  }
}

TEST(FrameResize, RefusesToFillFromAFrameOfExtremeAspect) {
  for (const cv::Size& size : {cv::Size(1, 100000), cv::Size(100000, 1)}) {
    const cv::Mat src(size, CV_8UC1, cv::Scalar(5));
    cv::Mat dst = IndexImage(8, 6);
    EXPECT_FALSE(ResizeFrame(src, dst, TARGET, true, cv::INTER_NEAREST));
    EXPECT_SAME_MAT(dst, IndexImage(8, 6));
    EXPECT_TRUE(ResizeFrame(src, dst, TARGET, false, cv::INTER_NEAREST));
    EXPECT_SAME_MAT(dst, cv::Mat(TARGET, CV_8UC1, cv::Scalar(5)));
  }
}

TEST(FrameResize, FillsFromALongAndNarrowFrame) {
  const cv::Mat src = IndexImage(4, 400);
  const cv::Mat dst = Filled(src);
  ASSERT_EQ(dst.size(), TARGET);
  // The middle of the frame is what is left.
  EXPECT_EQ(dst.at<cv::Vec2w>(240, 320), cv::Vec2w(2, 200));
}

TEST(FrameResize, GivesExactlyTheTargetForAnySource) {
  const cv::Size small(64, 48);
  for (int width = 1; width <= 140; ++width) {
    for (int height = 1; height <= 140; ++height) {
      const cv::Mat dst = Filled(cv::Mat(height, width, CV_8U, cv::Scalar(9)), small);
      ASSERT_EQ(dst.size(), small) << width << " x " << height;
      ASSERT_TRUE(dst.isContinuous());
    }
  }
}

TEST(FrameResize, IsWhatACalibratorDoes) {
  const auto calibrator = unit::MakeCalibrator();
  const cv::Mat src = IndexImage(1280, 720);
  cv::Mat dst;
  calibrator->Resize(src, dst, true, 0);
  EXPECT_SAME_MAT(dst, Filled(src));
  calibrator->Resize(cv::Mat(), dst, true, 0);
  EXPECT_SAME_MAT(dst, Filled(src));
  calibrator->Resize(src, dst, false, cv::INTER_LINEAR);
  cv::Mat expected;
  cv::resize(src, expected, TARGET, 0, 0, cv::INTER_LINEAR);
  EXPECT_SAME_MAT(dst, expected);
}

}  // namespace
