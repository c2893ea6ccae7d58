/// What is seen on grid indices without a disc.
#include "finder/Sights.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "finder/FinderScenes.h"
#include "finder/FlatDiscs.h"

using namespace velmora;

namespace {

using finder::GridProjection;
using finder::LabelledDiscs;
using finder::PointState;
using finder::Sights;
using unit::FLAT_GRID;
using unit::FLAT_RADIUS;
using unit::FLAT_STEP;
using unit::InFlatGrid;

PointState StateIn(const cv::Mat& grey, const cv::Point& gridIndex) {
  const LabelledDiscs discs = unit::FlatDiscs();
  const GridProjection projection = unit::PlaneOf(discs);
  return Sights(projection, discs, grey).At(gridIndex);
}

cv::Mat Covered(const cv::Point& gridIndex, double tone, double part = 1.0) {
  cv::Mat image = unit::FlatGrid(FLAT_GRID);
  const cv::Point2d at = InFlatGrid(gridIndex) - cv::Point2d(FLAT_RADIUS, FLAT_RADIUS);
  image(cv::Rect(cvRound(at.x), cvRound(at.y), cvRound(part * 2 * FLAT_RADIUS), cvRound(2 * FLAT_RADIUS)))
      .setTo(tone);
  return image;
}

TEST(Sights, TellBlankPaperFromAnythingElse) {
  const cv::Mat flat = unit::FlatGrid(FLAT_GRID);
  EXPECT_EQ(StateIn(flat, {1, 0}), PointState::Paper) << "between discs";
  EXPECT_EQ(StateIn(flat, {-1, 1}), PointState::Paper) << "beside them";
  EXPECT_EQ(StateIn(flat, {2, 2}), PointState::Other) << "a disc";
  EXPECT_EQ(StateIn(Covered({-1, 1}, 130.0), {-1, 1}), PointState::Other);
  EXPECT_EQ(StateIn(Covered({-1, 1}, 130.0, 0.5), {-1, 1}), PointState::Other) << "half of it";
  EXPECT_EQ(StateIn(Covered({-1, 1}, 225.0), {-1, 1}), PointState::Paper) << "a little darker";
}

TEST(Sights, TellBlankPaperInNoiseAndInALightThatFalls) {
  cv::Mat grey = unit::FlatGrid(FLAT_GRID);
  for (int y = 0; y < grey.rows; ++y) grey.row(y) = grey.row(y) * (1.0 - 0.4 * y / grey.rows);
  cv::Mat noise(grey.size(), CV_16SC1);
  cv::RNG random(3);
  random.fill(noise, cv::RNG::NORMAL, 0.0, 15.0);
  cv::add(grey, noise, grey, cv::noArray(), CV_8U);
  for (const cv::Point& gridIndex : {cv::Point(1, 0), cv::Point(1, -1), cv::Point(1, 11), cv::Point(8, 6)}) {
    EXPECT_EQ(StateIn(grey, gridIndex), PointState::Paper) << gridIndex;
  }
}

TEST(Sights, AreBeyondWhereTheBorderCutsADisc) {
  const cv::Mat flat = unit::FlatGrid(FLAT_GRID);
  EXPECT_EQ(StateIn(flat, {-2, 2}), PointState::Beyond) << "half of it";
  EXPECT_EQ(StateIn(flat, {-3, 3}), PointState::Beyond);
  EXPECT_EQ(StateIn(flat, {30, 30}), PointState::Beyond);
}

TEST(Sights, AreBlankWhereMoreThanHalfADiscWouldBeSeen) {
  // The middle of the grid index is just inside.
  const cv::Mat flat = unit::FlatGrid(FLAT_GRID);
  const int left = cvFloor(InFlatGrid({-1, 1}).x);
  const cv::Mat cut = flat.colRange(left - 3, flat.cols);
  LabelledDiscs discs = unit::FlatDiscs();
  for (cv::Point2d& centre : discs.centres) centre.x -= left - 3;
  const GridProjection projection = unit::PlaneOf(discs);
  const Sights sights(projection, discs, cut);
  EXPECT_EQ(sights.At({-1, 1}), PointState::Paper);
  EXPECT_FALSE(sights.IsBeyond({-1, 1}));
  cv::Mat dark = cut.clone();
  cv::circle(dark, {3, cvRound(InFlatGrid({-1, 1}).y)}, cvRound(FLAT_RADIUS), cv::Scalar(25), cv::FILLED);
  EXPECT_EQ(Sights(projection, discs, dark).At({-1, 1}), PointState::Beyond);
  EXPECT_TRUE(Sights(projection, discs, dark).IsBeyond({-1, 1}));
}

TEST(Sights, CutWhatIsNearerToTheBorderThanItsBlur) {
  const cv::Mat flat = unit::FlatGrid(FLAT_GRID);
  const LabelledDiscs discs = unit::FlatDiscs();
  const GridProjection projection = unit::PlaneOf(discs);
  const Sights sights(projection, discs, flat);
  const double y = flat.rows / 2.0;
  EXPECT_FALSE(sights.IsCut({FLAT_RADIUS + 2.1, y}, {0, 4}, 0.0));
  EXPECT_TRUE(sights.IsCut({FLAT_RADIUS + 1.9, y}, {0, 4}, 0.0));
  EXPECT_TRUE(sights.IsCut({FLAT_RADIUS + 2.1, y}, {0, 4}, 0.1));
  EXPECT_TRUE(sights.IsCut({flat.cols - 1 - FLAT_RADIUS - 1.9, y}, {0, 4}, 0.0));
  EXPECT_TRUE(sights.IsCut({std::numeric_limits<double>::quiet_NaN(), y}, {0, 4}, 0.0));
}

}  // namespace
