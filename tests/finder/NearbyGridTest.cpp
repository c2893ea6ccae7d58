/// Finding the grid where it is expected.
#include "finder/NearbyGrid.h"

#include <gtest/gtest.h>

#include <limits>
#include <opencv2/imgproc.hpp>

#include "finder/FinderScenes.h"
#include "finder/FlatDiscs.h"
#include "finder/Pattern.h"
#include "finder/RobustFinder.h"

using namespace velmora;

namespace {

using finder::ExpectedGrid;
using finder::LabelledDiscs;

constexpr double SLACK = 0.3;

ExpectedGrid ExpectedAt(const GridFinding& finding, const cv::Point2d& off) {
  ExpectedGrid expected;
  expected.slack = SLACK;
  expected.discs = {unit::FLAT_GRID, finder::PatternIndices(unit::FLAT_GRID), finding.centres, finding.radii};
  for (cv::Point2d& centre : expected.discs.centres) centre += off;
  return expected;
}

cv::Mat Grey(const cv::Mat& image) {
  cv::Mat grey = image;
  if (image.channels() == 3) cv::cvtColor(image, grey, cv::COLOR_BGR2GRAY);
  return grey;
}

TEST(NearbyGrid, HasTheCentresAndRadiiThatASearchOfTheWholeImageFinds) {
  int searched = 0;
  int found = 0;
  for (int number = 0; number < 120; ++number) {
    const cv::Mat image = unit::RandomFinderFrame(number).image;
    const GridFinding whole = SearchGridRobust(image, unit::FLAT_GRID);
    if (!whole.Found() || whole.tone != DiscTone::Dark) continue;
    ++searched;
    LabelledDiscs discs;
    if (!finder::FindNearby(Grey(image), {ExpectedAt(whole, {1.5, -1.0})}, discs)) continue;
    ++found;
    for (size_t k = 0; k < discs.centres.size(); ++k) {
      EXPECT_LT(cv::norm(discs.centres[k] - whole.centres[k]), 1e-3) << number << ", " << k;
      EXPECT_NEAR(discs.radii[k], whole.radii[k], 1e-3) << number << ", " << k;
    }
  }
  EXPECT_GT(searched, 100);
  EXPECT_GT(found, 0.8 * searched);
}

class NearbyFlatGrid : public ::testing::Test {
 protected:
  bool Finds(const cv::Mat& image, const cv::Point2d& off = {}) const {
    LabelledDiscs discs;
    return finder::FindNearby(image, {ExpectedAt(finding_, off)}, discs);
  }

  const cv::Mat image_ = unit::FlatGrid(unit::FLAT_GRID, 0.4, unit::FLAT_STEP);
  const GridFinding finding_ = SearchGridRobust(image_, unit::FLAT_GRID);
};

TEST_F(NearbyFlatGrid, IsFoundAsFarAwayAsTheSlackAndNoFarther) {
  const double far = SLACK * unit::FLAT_STEP;
  EXPECT_TRUE(Finds(image_));
  EXPECT_TRUE(Finds(image_, {0.9 * far, 0.0}));
  EXPECT_FALSE(Finds(image_, {1.5 * far, 0.0}));
  // One whole step, onto the places of other discs.
  EXPECT_FALSE(Finds(image_, {2.0 * unit::FLAT_STEP, 0.0}));
  EXPECT_FALSE(Finds(image_, {unit::FLAT_STEP, unit::FLAT_STEP}));
}

TEST_F(NearbyFlatGrid, IsFoundInTheFirstOfSeveralPlacesThatFits) {
  LabelledDiscs discs;
  const std::vector<ExpectedGrid> expected = {ExpectedAt(finding_, {3.0 * unit::FLAT_STEP, 40.0}),
                                              ExpectedAt(finding_, {1.0, 1.0})};
  ASSERT_TRUE(finder::FindNearby(image_, expected, discs));
  EXPECT_EQ(discs.centres, finding_.centres);
  EXPECT_FALSE(finder::FindNearby(image_, {}, discs));
}

TEST_F(NearbyFlatGrid, IsNotFoundWithoutOneDiscOrWithOneMoreOrCut) {
  for (const size_t k : {size_t{0}, size_t{21}, size_t{43}}) {
    cv::Mat without = image_.clone();
    cv::circle(without, finding_.centres[k], 14, cv::Scalar(235), cv::FILLED);
    EXPECT_FALSE(Finds(without)) << k;
  }
  cv::Mat more = image_.clone();
  cv::circle(more, unit::InFlatGrid({8, 2}), 10, cv::Scalar(25), cv::FILLED, cv::LINE_AA);
  EXPECT_FALSE(Finds(more));
  const int edge = cvRound(finding_.centres[0].x) - 4;
  EXPECT_FALSE(Finds(image_.colRange(edge, image_.cols), {-1.0 * edge, 0.0}));
}

TEST_F(NearbyFlatGrid, IsNotFoundWithoutContrast) {
  EXPECT_FALSE(Finds(cv::Mat(image_.size(), CV_8UC1, cv::Scalar(90))));
}

TEST_F(NearbyFlatGrid, MayBeExpectedAnywhere) {
  for (const double far :
       {1e3, 1e7, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_FALSE(Finds(image_, {far, -far})) << far;
  }
}

}  // namespace
