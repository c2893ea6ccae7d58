/// The default search of the grid, on rendered images with known centres.
#include "finder/StandardFinder.h"

#include <gtest/gtest.h>

#include <opencv2/calib3d.hpp>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>

#include "unit/Collection.h"

using namespace velmora;

namespace {

TEST(GridFinder, FindsTheCentresOfEachViewInTheOrderOfTheGrid) {
  const unit::RenderedViews& views = unit::Rendered();
  double sum = 0.0;
  int count = 0;
  for (size_t view = 0; view < views.images.size(); ++view) {
    SCOPED_TRACE(view);
    std::vector<cv::Point2d> points;
    ASSERT_TRUE(FindGridStandard(views.images[view], unit::GRID, points));
    ASSERT_EQ(points.size(), 44U);
    for (size_t i = 0; i < points.size(); ++i) {
      const double distance = cv::norm(points[i] - views.centres[view][i]);
      EXPECT_LT(distance, 0.7) << "centre " << i;
      sum += distance;
      ++count;
    }
  }
  EXPECT_LT(sum / count, 0.15);
}

TEST(GridFinder, IsTheLibrarysSearchWithItsDefaultDetector) {
  const cv::Mat image = unit::ImageWithGrid();
  std::vector<cv::Point2d> expected;
  ASSERT_TRUE(cv::findCirclesGrid(image, unit::GRID, expected, cv::CALIB_CB_ASYMMETRIC_GRID,
                                  cv::SimpleBlobDetector::create()));
  std::vector<cv::Point2d> points;
  ASSERT_TRUE(FindGridStandard(image, unit::GRID, points));
  EXPECT_EQ(points, expected);
}

TEST(GridFinder, FindsTheSameInGreyAndInFourChannels) {
  const cv::Mat image = unit::ImageWithGrid();
  std::vector<cv::Point2d> expected;
  ASSERT_TRUE(FindGridStandard(image, unit::GRID, expected));
  for (const int conversion : {cv::COLOR_BGR2GRAY, cv::COLOR_BGR2BGRA}) {
    cv::Mat other;
    cv::cvtColor(image, other, conversion);
    std::vector<cv::Point2d> points;
    EXPECT_TRUE(FindGridStandard(other, unit::GRID, points));
    EXPECT_EQ(points, expected);
  }
}

TEST(GridFinder, FindsNothingWithoutAGrid) {
  std::vector<cv::Point2d> points;
  EXPECT_FALSE(FindGridStandard(unit::ImageWithoutGrid(), unit::GRID, points));
  EXPECT_FALSE(FindGridStandard(cv::Mat::zeros(480, 640, CV_8UC3), unit::GRID, points));
}

TEST(GridFinder, FindsNothingWhenADiscIsHidden) {
  cv::Mat image = unit::ImageWithGrid();
  cv::circle(image, unit::Rendered().centres.front()[20], 30, cv::Scalar(225, 225, 225), cv::FILLED);
  std::vector<cv::Point2d> points;
  EXPECT_FALSE(FindGridStandard(image, unit::GRID, points));
}

TEST(GridFinder, FindsNoGridOfOneCircleOrNone) {
  for (const cv::Size grid : {cv::Size(1, 1), cv::Size(0, 0), cv::Size(0, 11), cv::Size(-1, -1)}) {
    std::vector<cv::Point2d> points(3);
    EXPECT_FALSE(FindGridStandard(unit::ImageWithGrid(), grid, points)) << grid;
    EXPECT_TRUE(points.empty());
  }
}

TEST(GridFinder, LeavesThePictureAlone) {
  const cv::Mat image = unit::ImageWithGrid();
  const cv::Mat before = image.clone();
  std::vector<cv::Point2d> points;
  FindGridStandard(image, unit::GRID, points);
  EXPECT_EQ(cv::norm(image, before, cv::NORM_INF), 0.0);
}

}  // namespace
