/// The robust search of the grid, on rendered images with known centres and on images of other things.
#include "finder/RobustFinder.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>
#include <set>

#include "finder/FinderScenes.h"
#include "finder/Pattern.h"
#include "finder/StandardFinder.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

double Rms(const std::vector<cv::Point2d>& found, const std::vector<cv::Point2d>& truth) {
  return cv::norm(found, truth, cv::NORM_L2) / std::sqrt(static_cast<double>(truth.size()));
}

TEST(RobustFinder, FindsTheCentresOfEachViewInTheOrderOfTheDefaultSearchAndAsNearTheTruth) {
  const unit::RenderedViews& views = unit::Rendered();
  double squaredErrors = 0.0;
  double squaredErrorsOfDefault = 0.0;
  for (size_t view = 0; view < views.images.size(); ++view) {
    SCOPED_TRACE(view);
    const GridFinding finding = SearchGridRobust(views.images[view], unit::GRID);
    ASSERT_TRUE(finding.Found()) << DescribeFault(finding.fault);
    std::vector<cv::Point2d> expected;
    ASSERT_TRUE(FindGridStandard(views.images[view], unit::GRID, expected));
    ASSERT_EQ(finding.centres.size(), 44U);
    for (size_t i = 0; i < 44; ++i) EXPECT_LT(cv::norm(finding.centres[i] - expected[i]), 0.6);
    squaredErrors += std::pow(Rms(finding.centres, views.centres[view]), 2);
    squaredErrorsOfDefault += std::pow(Rms(expected, views.centres[view]), 2);
  }
  EXPECT_LT(squaredErrors, 1.02 * squaredErrorsOfDefault);
}

TEST(RobustFinder, FindsNearlyAllWholeGridsAndNoneInAWrongOrder) {
  int oblique = 0;
  int whole = 0;
  int found = 0;
  for (int number = 0; number < 150; ++number) {
    SCOPED_TRACE(number);
    const unit::FinderFrame frame = unit::RandomFinderFrame(number);
    const GridFinding finding = SearchGridRobust(frame.image, unit::GRID);
    if (finding.Found()) {
      EXPECT_TRUE(unit::InOrder(finding.centres, frame.centres));
    }
    if (frame.obliqueness > 60.0) ++oblique;
    if (frame.obliqueness > 60.0) continue;
    ++whole;
    found += finding.Found() ? 1 : 0;
  }
  EXPECT_GT(oblique, 5);
  EXPECT_GE(found, 0.95 * whole) << found << " of " << whole;
}

TEST(RobustFinder, FindsNothingInPicturesOfOtherThings) {
  for (int number = 0; number < 200; ++number) {
    EXPECT_FALSE(SearchGridRobust(unit::RandomForeignFrame(number), unit::GRID).Found()) << number;
  }
}

TEST(RobustFinder, TakesNoTrianglesOrSquaresForDiscs) {
  int tellable = 0;
  for (int number = 0; number < 150; ++number) {
    const unit::CorneredFrame frame = unit::RandomCorneredFrame(number);
    // The fewest pixels across that corners can be told at; five of them look round.
    if (frame.corners > 4 || frame.least < 8.0) continue;
    ++tellable;
    EXPECT_FALSE(SearchGridRobust(frame.image, unit::GRID).Found()) << number;
  }
  EXPECT_GT(tellable, 50);
}

TEST(RobustFinder, GivesTheRadiiOfTheDiscs) {
  const double step = 30.0;
  const GridFinding finding = SearchGridRobust(unit::FlatGrid(unit::GRID, 0.4, step), unit::GRID);
  ASSERT_TRUE(finding.Found());
  ASSERT_EQ(finding.radii.size(), 44U);
  for (const double radius : finding.radii) EXPECT_NEAR(radius, 0.4 * step, 0.5);
}

TEST(RobustFinder, FindsLightDiscsOnADarkGroundToo) {
  const unit::FinderFrame frame = unit::RandomFinderFrame(3);
  const cv::Mat inverted = cv::Scalar::all(255) - frame.image;
  const GridFinding finding = SearchGridRobust(inverted, unit::GRID);
  ASSERT_TRUE(finding.Found()) << DescribeFault(finding.fault);
  EXPECT_TRUE(unit::InOrder(finding.centres, frame.centres));
}

TEST(RobustFinder, FindsFaintDiscs) {
  cv::Mat faint;
  unit::ImageWithGrid().convertTo(faint, CV_8U, 0.08, 110.0);
  const GridFinding finding = SearchGridRobust(faint, unit::GRID);
  ASSERT_TRUE(finding.Found()) << DescribeFault(finding.fault);
  EXPECT_TRUE(unit::InOrder(finding.centres, unit::Rendered().centres.front()));
}

TEST(RobustFinder, FindsOtherSizesOfTheGridAndNoneOfThemAsAnother) {
  for (const cv::Size& grid : {cv::Size(3, 9), cv::Size(5, 5), cv::Size(7, 13), cv::Size(4, 5)}) {
    const cv::Mat image = unit::FlatGrid(grid);
    EXPECT_TRUE(SearchGridRobust(image, grid).Found()) << grid;
    EXPECT_FALSE(SearchGridRobust(image, unit::GRID).Found()) << grid;
    EXPECT_FALSE(SearchGridRobust(unit::FlatGrid(unit::GRID), grid).Found()) << grid;
  }
}

TEST(RobustFinder, TakesNoSizeWhoseOrderIsAGuess) {
  const cv::Size grid(4, 10);
  EXPECT_FALSE(SearchGridRobust(unit::FlatGrid(grid), grid).Found());
}

TEST(RobustFinder, FindsTheSameInGreyAndInFourChannels) {
  const cv::Mat image = unit::ImageWithGrid();
  std::vector<cv::Point2d> expected;
  ASSERT_TRUE(FindGridRobust(image, unit::GRID, expected));
  for (const int conversion : {cv::COLOR_BGR2GRAY, cv::COLOR_BGR2BGRA}) {
    cv::Mat other;
    cv::cvtColor(image, other, conversion);
    std::vector<cv::Point2d> points;
    EXPECT_TRUE(FindGridRobust(other, unit::GRID, points));
    EXPECT_EQ(points, expected);
  }
}

TEST(RobustFinder, LeavesThePictureAlone) {
  const cv::Mat image = unit::ImageWithGrid();
  const cv::Mat before = image.clone();
  std::vector<cv::Point2d> points;
  FindGridRobust(image, unit::GRID, points);
  EXPECT_EQ(cv::norm(image, before, cv::NORM_INF), 0.0);
}

TEST(RobustFinder, NeverRaisesAnExceptionForAFrameThatItCannotUse) {
  std::vector<cv::Point2d> points = {{1.0, 2.0}};
  for (const cv::Mat& frame :
       {cv::Mat(), cv::Mat(cv::Mat::zeros(480, 640, CV_16UC1)), cv::Mat(cv::Mat::zeros(480, 640, CV_8UC2)),
        cv::Mat(cv::Mat::zeros(1, 5000, CV_8UC3))}) {
    EXPECT_NO_THROW(EXPECT_FALSE(FindGridRobust(frame, unit::GRID, points)));
    EXPECT_TRUE(points.empty());
  }
  for (const cv::Size& grid : {cv::Size(0, 0), cv::Size(-3, 11), cv::Size(100, 100), cv::Size(1 << 30, 3)}) {
    EXPECT_NO_THROW(EXPECT_FALSE(FindGridRobust(unit::ImageWithGrid(), grid, points)));
  }
}

GridFault FaultOf(const cv::Mat& image) {
  return SearchGridRobust(image, unit::GRID).fault;
}

TEST(RobustFinder, SaysWhyItFoundNothing) {
  const cv::Mat flat = unit::FlatGrid(unit::GRID);
  EXPECT_EQ(FaultOf(flat), GridFault::None);
  EXPECT_EQ(FaultOf(flat.rowRange(60, flat.rows)), GridFault::PartOutside);
  EXPECT_EQ(FaultOf(unit::FlatGrid({6, 13})), GridFault::BiggerLattice);
  cv::Mat smaller;
  cv::copyMakeBorder(unit::FlatGrid({3, 9}), smaller, 100, 100, 100, 100, cv::BORDER_REPLICATE);
  EXPECT_EQ(FaultOf(smaller), GridFault::WrongSize);
  cv::Mat hidden = flat.clone();
  cv::circle(hidden, {flat.cols / 2, flat.rows / 2}, 40, cv::Scalar(235), cv::FILLED);
  EXPECT_EQ(FaultOf(hidden), GridFault::WrongSize);
  EXPECT_EQ(FaultOf(cv::Mat::zeros(480, 640, CV_8UC3)), GridFault::TooFewCandidates);
}

TEST(RobustFinder, SaysThatCirclesAreTooSmall) {
  cv::Mat dots(480, 640, CV_8UC1, cv::Scalar(235));
  for (const cv::Point& gridIndex : finder::PatternIndices(unit::GRID)) {
    dots(cv::Rect(100 + 6 * gridIndex.x, 100 + 6 * gridIndex.y, 2, 1)).setTo(25);
  }
  EXPECT_EQ(FaultOf(dots), GridFault::CirclesTooSmall);
}

TEST(RobustFinder, SaysThatCirclesAreTooLarge) {
  cv::Mat large(480, 640, CV_8UC1, cv::Scalar(235));
  for (const int x : {160, 480}) cv::circle(large, {x, 240}, 110, cv::Scalar(25), cv::FILLED, cv::LINE_AA);
  EXPECT_EQ(FaultOf(large), GridFault::CirclesTooLarge);
}

TEST(RobustFinder, DescribesEveryFaultInWordsOfItsOwn) {
  std::set<std::string> words;
  for (int fault = 0; fault <= static_cast<int>(GridFault::NothingLikeIt); ++fault) {
    words.insert(DescribeFault(static_cast<GridFault>(fault)));
  }
  EXPECT_EQ(words.size(), static_cast<size_t>(GridFault::NothingLikeIt) + 1);
  EXPECT_EQ(DescribeFault(GridFault::None), "");
}

}  // namespace
