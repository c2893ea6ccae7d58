/// Which parts of a grid are answered and which are not, on flat images.
#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "finder/FinderScenes.h"
#include "finder/Pattern.h"
#include "finder/RobustFinder.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

PartialGrid PartOf(const cv::Mat& image, const cv::Size& grid = unit::GRID) {
  PartialGrid part;
  SearchGridRobust(image, grid, part);
  return part;
}

constexpr double STEP = 24.0;
constexpr int PAPER = 235;

/// The flat image of a grid up to here shows all of a row and none of the next one.
int After(int row) {
  return cvRound(STEP * (2.0 + row)) + 13;
}

/// And from here on all of it and none of the one before.
int Before(int row) {
  return cvRound(STEP * (2.0 + row)) - 12;
}

/// Paper or something else over grid indices of the flat image.
void Cover(cv::Mat& image, const cv::Rect2d& steps, int tone) {
  const cv::Rect2d at(STEP * (2.0 + steps.x), STEP * (2.0 + steps.y), STEP * steps.width,
                      STEP * steps.height);
  image(cv::Rect(at) & cv::Rect({}, image.size())).setTo(tone);
}
const cv::Rect2d FIRST_ROW(-2.0, -1.5, 11.0, 2.0);

/// With paper all around.
cv::Mat Wide(const cv::Mat& image) {
  cv::Mat wide;
  cv::copyMakeBorder(image, wide, 60, 60, 60, 60, cv::BORDER_CONSTANT, cv::Scalar(PAPER));
  return wide;
}

TEST(PartialRules, IsFoundWithoutItsLastRowsBeyondTheBorder) {
  const cv::Mat flat = Wide(unit::FlatGrid(unit::GRID));
  for (const int last : {8, 9}) {
    const PartialGrid part = PartOf(flat.rowRange(0, 60 + After(last)));
    ASSERT_TRUE(part.Found()) << last;
    EXPECT_EQ(part.Seen(), 4 * (last + 1));
    for (size_t k = 0; k < 44; ++k) {
      const cv::Point gridIndex = finder::PatternIndices(unit::GRID)[k];
      EXPECT_EQ(part.weights[k] == 1.0, gridIndex.y <= last) << k;
      EXPECT_LT(cv::norm(part.points[k] -
                         cv::Point2d(60 + STEP * (2 + gridIndex.x), 60 + STEP * (2 + gridIndex.y))),
                0.1);
    }
  }
}

TEST(PartialRules, IsFoundWithoutItsFirstRowsBeyondTheBorder) {
  const cv::Mat flat = Wide(unit::FlatGrid(unit::GRID));
  const PartialGrid part = PartOf(flat.rowRange(60 + Before(1), flat.rows));
  ASSERT_TRUE(part.Found());
  for (size_t k = 0; k < 44; ++k) EXPECT_EQ(part.weights[k] == 1.0, k >= 4) << k;
}

TEST(PartialRules, NeverTakesDiscsThatTheBorderCuts) {
  cv::Mat flat = Wide(unit::FlatGrid(unit::GRID));
  // So that the darkest part of a disc need not touch the border.
  cv::GaussianBlur(flat, flat, {}, 2.0);
  const double radius = 0.4 * STEP;
  for (double beyond = -1.0; beyond <= 1.0; beyond += 0.125) {
    const int rows = cvRound(60 + STEP * 12.0 + beyond * radius);
    PartialGrid part;
    // A whole grid may be found with the last discs' very rims cut.
    if (SearchGridRobust(flat.rowRange(0, rows), unit::GRID, part).Found() && beyond > 0.8) continue;
    ASSERT_TRUE(part.Found()) << beyond;
    for (size_t k = 0; k < 44; ++k) EXPECT_EQ(part.weights[k] == 1.0, k < 40) << k << ", " << beyond;
  }
}

TEST(PartialRules, LeavesOutDiscsThatAreNearerToTheBorderThanTheirBlurReaches) {
  const cv::Mat flat = Wide(unit::FlatGrid(unit::GRID));
  const double rim = 60.0 + STEP * (2.0 + 9.0 + 0.4);
  for (const double room : {0.5, 1.5})
    EXPECT_EQ(PartOf(flat.rowRange(0, cvCeil(rim + room))).Seen(), 36) << room;
  EXPECT_EQ(PartOf(flat.rowRange(0, cvCeil(rim + 3.0))).Seen(), 40);
}

TEST(PartialRules, IsNoneWhenARowIsMissingInsideThePicture) {
  EXPECT_FALSE(PartOf(Wide(unit::FlatGrid({4, 10}))).Found());
  for (const int tone : {PAPER, 130, 255}) {
    cv::Mat covered = unit::FlatGrid(unit::GRID);
    Cover(covered, FIRST_ROW, tone);
    EXPECT_FALSE(PartOf(Wide(covered)).Found()) << tone;
  }
}

TEST(PartialRules, IsNoneWhenAColumnIsMissingInsideThePicture) {
  for (const int tone : {PAPER, 130, 255}) {
    cv::Mat covered = unit::FlatGrid(unit::GRID);
    Cover(covered, {-1.5, -1.5, 2.0, 14.0}, tone);
    EXPECT_FALSE(PartOf(Wide(covered)).Found()) << tone;
  }
}

TEST(PartialRules, IsNoneWhenTheMissingRowMayBeAtEitherEnd) {
  // Both beyond the border: of the 11 rows the first or the last is missing.
  const cv::Mat flat = unit::FlatGrid(unit::GRID);
  EXPECT_FALSE(PartOf(flat.rowRange(Before(0), After(9))).Found());
  EXPECT_FALSE(PartOf(flat.rowRange(Before(1), After(9))).Found());
  // One behind something, one beyond the border.
  cv::Mat covered = flat.clone();
  Cover(covered, FIRST_ROW, 130);
  const cv::Mat wide = Wide(covered);
  EXPECT_FALSE(PartOf(wide.rowRange(0, 60 + After(10))).Found());
}

void CoverDisc(cv::Mat& image, const cv::Point& gridIndex, int tone) {
  Cover(image, {gridIndex.x - 0.45, gridIndex.y - 0.45, 0.9, 0.9}, tone);
}

TEST(PartialRules, IsNoneWhenOneSpotDecidesWhichRowIsMissing) {
  cv::Mat covered = unit::FlatGrid(unit::GRID);
  for (const int x : {0, 2, 4}) CoverDisc(covered, {x, 10}, 130);
  const cv::Mat wide = Wide(covered);
  EXPECT_EQ(PartOf(wide).Seen(), 41);
  // Without the last disc of the last row these may be the last ten, and the first beyond the border.
  EXPECT_FALSE(PartOf(wide.rowRange(60 + Before(0), wide.rows)).Found());
}

TEST(PartialRules, IsNoneOfALatticeThatMayGoOnBeyondTheBorder) {
  cv::Mat covered = unit::FlatGrid(unit::GRID);
  CoverDisc(covered, {4, 4}, 130);
  EXPECT_EQ(PartOf(covered).Seen(), 43);
  const cv::Mat seen = covered.rowRange(Before(0), After(10));
  EXPECT_FALSE(PartOf(seen).Found()) << "more rows";
  EXPECT_FALSE(PartOf(covered.colRange(Before(0), After(7))).Found()) << "more columns";
  EXPECT_EQ(PartOf(covered.colRange(Before(0), covered.cols)).Seen(), 43) << "one side tells";
}

TEST(PartialRules, LeavesOutADiscThatIsPartlyHidden) {
  cv::Mat image = Wide(unit::FlatGrid(unit::GRID));
  const cv::Point gridIndex = finder::PatternIndices(unit::GRID)[21];
  const cv::Point2d at(60.0 + STEP * (2 + gridIndex.x), 60.0 + STEP * (2 + gridIndex.y));
  image(cv::Rect(cvRound(at.x), cvRound(at.y) - 12, 12, 24)).setTo(PAPER);
  PartialGrid part;
  EXPECT_EQ(SearchGridRobust(image, unit::GRID, part).fault, GridFault::PartlyHidden);
  ASSERT_TRUE(part.Found());
  for (size_t k = 0; k < 44; ++k) EXPECT_EQ(part.weights[k] == 1.0, k != 21) << k;
  EXPECT_LT(cv::norm(part.points[21] - at), 0.1);
}

TEST(PartialRules, OfLightDiscsOnADarkGroundIsFoundToo) {
  const cv::Mat flat = Wide(unit::FlatGrid(unit::GRID));
  const cv::Mat light = 255 - flat.rowRange(0, 60 + After(9));
  EXPECT_EQ(PartOf(light).Seen(), 40);
}

TEST(PartialRules, OfOtherSizesIsFoundFromThreeQuartersOn) {
  for (const cv::Size& grid : {cv::Size(3, 9), cv::Size(5, 5), cv::Size(7, 13), cv::Size(4, 7)}) {
    const cv::Mat flat = Wide(unit::FlatGrid(grid));
    const PartialGrid part = PartOf(flat.rowRange(0, 60 + After(grid.height - 2)), grid);
    ASSERT_TRUE(part.Found()) << grid;
    EXPECT_EQ(part.points.size(), static_cast<size_t>(grid.area())) << grid;
    EXPECT_EQ(part.Seen(), grid.area() - grid.width) << grid;
  }
  const cv::Mat flat = Wide(unit::FlatGrid(unit::GRID));
  EXPECT_FALSE(PartOf(flat.rowRange(0, 60 + After(7))).Found()) << "32 of 44";
}

TEST(PartialRules, IsEmptyForAFrameThatCannotBeUsed) {
  for (const cv::Mat& frame : {cv::Mat(), cv::Mat(cv::Mat::zeros(480, 640, CV_16UC1))}) {
    PartialGrid part;
    part.points.resize(2);
    EXPECT_NO_THROW(SearchGridRobust(frame, unit::GRID, part));
    EXPECT_FALSE(part.Found());
  }
  EXPECT_FALSE(PartOf(unit::FlatGrid({4, 10}), {4, 10}).Found()) << "no size with one order";
}

}  // namespace
