/// The quick look.
#include "finder/Glance.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "finder/FinderScenes.h"
#include "finder/Pattern.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

cv::Mat Grey(const cv::Mat& image) {
  cv::Mat grey = image;
  if (image.channels() == 3) cv::cvtColor(image, grey, cv::COLOR_BGR2GRAY);
  return grey;
}

TEST(Glance, SeesWhereMostGridsAre) {
  int seen = 0;
  constexpr int COUNT = 60;
  for (int number = 0; number < COUNT; ++number) {
    const unit::FinderFrame frame = unit::RandomFinderFrame(number);
    finder::ExpectedGrid expected;
    if (!finder::GlanceAtGrid(Grey(frame.image), unit::GRID, expected)) continue;
    ++seen;
    ASSERT_EQ(expected.discs.centres.size(), frame.centres.size());
    EXPECT_EQ(expected.discs.gridIndices, finder::PatternIndices(unit::GRID));
    EXPECT_TRUE(unit::InOrder(expected.discs.centres, frame.centres)) << number;
    EXPECT_EQ(expected.discs.Missing(), 0);
  }
  EXPECT_GT(seen, COUNT / 2);
}

TEST(Glance, SeesDiscsWhereTheyAreAndAsLarge) {
  const double step = 30.0;
  finder::ExpectedGrid expected;
  ASSERT_TRUE(finder::GlanceAtGrid(unit::FlatGrid(unit::GRID, 0.4, step), unit::GRID, expected));
  for (size_t k = 0; k < expected.discs.centres.size(); ++k) {
    const cv::Point2d at(2.0 * step + step * expected.discs.gridIndices[k].x,
                         2.0 * step + step * expected.discs.gridIndices[k].y);
    EXPECT_LT(cv::norm(expected.discs.centres[k] - at), 0.5);
    EXPECT_NEAR(expected.discs.radii[k], 0.4 * step, 1.0);
  }
}

TEST(Glance, SeesNothingInSmallPicturesAndInThoseOfOtherThings) {
  finder::ExpectedGrid expected;
  EXPECT_FALSE(finder::GlanceAtGrid(unit::FlatGrid(unit::GRID, 0.4, 12.0), unit::GRID, expected));
  EXPECT_FALSE(finder::GlanceAtGrid(cv::Mat(480, 640, CV_8UC1, cv::Scalar(80)), unit::GRID, expected));
  EXPECT_FALSE(finder::GlanceAtGrid(unit::FlatGrid({4, 9}, 0.4, 30.0), unit::GRID, expected));
  EXPECT_FALSE(finder::GlanceAtGrid(unit::FlatGrid({4, 12}, 0.4, 30.0), unit::GRID, expected));
}

}  // namespace
