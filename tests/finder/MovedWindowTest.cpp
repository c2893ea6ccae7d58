/// A window that moves.
#include "finder/MovedWindow.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "finder/FinderScenes.h"
#include "finder/FlatDiscs.h"

using namespace velmora;

namespace {

constexpr size_t MIDDLE = 17;

finder::DiscWindow WindowAt(const cv::Point2d& off) {
  const finder::LabelledDiscs discs = unit::FlatDiscs();
  finder::DiscWindow window = finder::WindowOf(unit::PlaneOf(discs), discs, MIDDLE);
  window.centre += off;
  return window;
}

TEST(MovedWindow, SeesWhatAnotherOneSeesThatWasAlwaysThere) {
  cv::Mat image = unit::FlatGrid(unit::FLAT_GRID, 0.4, unit::FLAT_STEP);
  cv::GaussianBlur(image, image, {}, 1.2);
  cv::Mat noise(image.size(), CV_16SC1);
  cv::RNG random(5);
  random.fill(noise, cv::RNG::NORMAL, 0.0, 4.0);
  cv::add(image, noise, image, cv::noArray(), CV_8U);
  finder::MovedWindow moved(image);
  int seen = 0;
  for (int step = 0; step < 200; ++step) {
    SCOPED_TRACE(step);
    // Mostly by little, at times by far, to other discs and beyond the border.
    const double far = step % 20 == 19 ? 200.0 : 1.5;
    const finder::DiscWindow window = WindowAt({random.uniform(-far, far), random.uniform(-far, far)});
    finder::MovedWindow other(image);
    const bool apart = moved.MoveTo(window);
    ASSERT_EQ(apart, other.MoveTo(window));
    if (!apart) continue;
    cv::Point2d middle;
    cv::Point2d expected;
    double area = 0.0;
    double expectedArea = 0.0;
    const bool any = moved.FindMiddle(middle, area);
    ASSERT_EQ(any, other.FindMiddle(expected, expectedArea));
    if (!any) continue;
    ++seen;
    EXPECT_EQ(middle, expected);
    EXPECT_EQ(area, expectedArea);
  }
  EXPECT_GT(seen, 180);
}

TEST(MovedWindow, HasTheMiddleAndTheAreaOfTheDisc) {
  const cv::Mat image = unit::FlatGrid(unit::FLAT_GRID, 0.4, unit::FLAT_STEP);
  finder::MovedWindow moved(image);
  cv::Point2d middle;
  double area = 0.0;
  for (const cv::Point2d& off : {cv::Point2d(1.5, -1.0), cv::Point2d()}) {
    ASSERT_TRUE(moved.MoveTo(WindowAt(off)));
    ASSERT_TRUE(moved.FindMiddle(middle, area));
    EXPECT_LT(cv::norm(middle - WindowAt({}).centre), 0.05);
    EXPECT_NEAR(area, CV_PI * unit::FLAT_RADIUS * unit::FLAT_RADIUS, 3.0);
  }
}

TEST(MovedWindow, SeesNothingOnBlankPaper) {
  const cv::Mat image(400, 400, CV_8UC1, cv::Scalar(180));
  finder::MovedWindow moved(image);
  EXPECT_FALSE(moved.MoveTo(WindowAt({})));
  EXPECT_FALSE(moved.MoveTo(WindowAt({2000.0, 0.0})));
}

}  // namespace
