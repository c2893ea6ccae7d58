/// Discs that are not among the candidates.
#include "finder/MissingDiscs.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "finder/FinderScenes.h"
#include "finder/FlatDiscs.h"

using namespace velmora;

namespace {

using finder::GridProjection;
using finder::LabelledDiscs;
using unit::FLAT_GRID;
using unit::FLAT_RADIUS;
using unit::FLAT_STEP;
using unit::InFlatGrid;

constexpr size_t AT_3_3 = 13;
constexpr int PAPER = 235;

/// The flat grid, whose disc at (3, 3) is missing among the candidates and painted as a test wants it.
struct OneMissing {
  OneMissing() : image(unit::FlatGrid(FLAT_GRID, 0.4, FLAT_STEP)), discs(unit::FlatDiscs()) {
    discs.radii[AT_3_3] = 0.0;
    discs.centres[AT_3_3] = {};
    cv::circle(image, InFlatGrid({3, 3}), 12, cv::Scalar(PAPER), cv::FILLED);
  }

  void Paint(const cv::Point& moved, int radius, int tone) {
    cv::circle(image, cv::Point(InFlatGrid({3, 3})) + moved, radius, cv::Scalar(tone), cv::FILLED,
               cv::LINE_AA);
  }
  bool Recovers() {
    finder::RecoverMissing(unit::PlaneOf(discs), image, discs);
    return discs.Has(AT_3_3);
  }

  cv::Mat image;
  LabelledDiscs discs;
};

TEST(MissingDiscs, AreRecoveredWhereTheyAreAndNowhereElse) {
  cv::Mat image = unit::FlatGrid(FLAT_GRID, 0.4, FLAT_STEP);
  cv::circle(image, InFlatGrid({3, 3}), 12, cv::Scalar(PAPER), cv::FILLED);
  LabelledDiscs discs = unit::FlatDiscs();
  const size_t shown = 20;
  ASSERT_EQ(discs.gridIndices[AT_3_3], cv::Point(3, 3));
  discs.radii[shown] = discs.radii[AT_3_3] = 0.0;
  const cv::Point2d truth = discs.centres[shown];
  discs.centres[shown] = {};
  const GridProjection projection = unit::PlaneOf(discs);
  finder::RecoverMissing(projection, image, discs);
  EXPECT_EQ(discs.Missing(), 1);
  EXPECT_FALSE(discs.Has(AT_3_3));
  EXPECT_LT(cv::norm(discs.centres[shown] - truth), 0.2);
  EXPECT_NEAR(discs.radii[shown], FLAT_RADIUS, 0.4);
  EXPECT_FALSE(finder::MissesOutside(projection, discs, image.size()));
  EXPECT_TRUE(finder::MissesOutside(projection, discs, {image.cols, cvRound(InFlatGrid({3, 3}).y)}));
}

TEST(MissingDiscs, AreRecoveredInTheWholePicturesPixels) {
  OneMissing one;
  one.Paint({3, -2}, 9, 25);
  ASSERT_TRUE(one.Recovers());
  EXPECT_LT(cv::norm(one.discs.centres[AT_3_3] - InFlatGrid({3, 3}) - cv::Point2d(3.0, -2.0)), 0.2);
}

TEST(MissingDiscs, AreNoSpotsOfAnotherSize) {
  for (const int radius : {3, 4}) {
    OneMissing one;
    one.Paint({0, 0}, radius, 25);
    EXPECT_FALSE(one.Recovers()) << radius;
  }
  OneMissing usual;
  usual.Paint({0, 0}, 7, 25);
  EXPECT_TRUE(usual.Recovers());
}

TEST(MissingDiscs, AreNoSpotsBesideTheirPositions) {
  OneMissing one;
  one.Paint({9, 0}, 6, 25);
  EXPECT_FALSE(one.Recovers());
}

TEST(MissingDiscs, AreNoFaintSpots) {
  // All of the window has to be faint: other discs' ink is none of this one's.
  OneMissing one;
  one.image(cv::Rect(96, 96, 49, 49)).setTo(PAPER);
  one.Paint({0, 0}, 9, PAPER - 15);
  EXPECT_FALSE(one.Recovers());
  one.Paint({0, 0}, 9, PAPER - 40);
  EXPECT_TRUE(one.Recovers());
}

TEST(MissingDiscs, StayMissingBeyondThePicture) {
  LabelledDiscs discs = unit::FlatDiscs();
  const cv::Mat whole = unit::FlatGrid(FLAT_GRID, 0.4, FLAT_STEP);
  for (const size_t disc : {size_t{40}, size_t{41}}) discs.radii[disc] = 0.0;
  const cv::Mat part = whole(cv::Rect(0, 0, whole.cols, cvRound(InFlatGrid({0, 10}).y) - 20)).clone();
  finder::RecoverMissing(unit::PlaneOf(discs), part, discs);
  EXPECT_EQ(discs.Missing(), 2);
}

TEST(MissingDiscs, AreOutsideAtEachOfTheEdges) {
  const GridProjection projection = unit::PlaneOf(unit::FlatDiscs());
  const cv::Size size(300, 360);
  EXPECT_FALSE(finder::MissesOutside(projection, unit::FlatDiscs(), size)) << "none is missing";
  const cv::Point2d first = InFlatGrid({0, 0});
  // Moves the whole grid to where its first disc is too near to an edge, or only just not.
  for (const auto& [at, outside] : {std::pair(cv::Point2d(FLAT_RADIUS + 0.5, 60.0), true),
                                    std::pair(cv::Point2d(FLAT_RADIUS + 1.5, 60.0), false),
                                    std::pair(cv::Point2d(60.0, FLAT_RADIUS + 0.5), true),
                                    std::pair(cv::Point2d(60.0, FLAT_RADIUS + 1.5), false),
                                    std::pair(cv::Point2d(298.5 - FLAT_RADIUS, 60.0), true),
                                    std::pair(cv::Point2d(297.5 - FLAT_RADIUS, 60.0), false),
                                    std::pair(cv::Point2d(60.0, 358.5 - FLAT_RADIUS), true),
                                    std::pair(cv::Point2d(60.0, 357.5 - FLAT_RADIUS), false)}) {
    LabelledDiscs discs = unit::FlatDiscs();
    for (cv::Point2d& centre : discs.centres) centre += at - first;
    discs.radii[0] = 0.0;
    EXPECT_EQ(finder::MissesOutside(unit::PlaneOf(discs), discs, size), outside) << at;
  }
}

TEST(MissingDiscs, MayBeARowBeyondTheEdge) {
  const LabelledDiscs discs = unit::FlatDiscs();
  const GridProjection projection = unit::PlaneOf(discs);
  // The flat image has two steps of room on all sides: 48 pixels, and a row takes 24 + 9.6.
  EXPECT_FALSE(finder::ReachesEdge(projection, discs, {265, 337}));
  EXPECT_FALSE(finder::ReachesEdge(projection, discs, {265 - 14, 337 - 14}));
  EXPECT_TRUE(finder::ReachesEdge(projection, discs, {265 - 16, 337}));
  EXPECT_TRUE(finder::ReachesEdge(projection, discs, {265, 337 - 16}));
  LabelledDiscs moved = discs;
  for (cv::Point2d& centre : moved.centres) centre.x -= 20.0;
  EXPECT_TRUE(finder::ReachesEdge(unit::PlaneOf(moved), moved, {300, 360}));
  // Discs that are missing do not reach anywhere.
  for (size_t k = 0; k < moved.gridIndices.size(); ++k) {
    if (moved.gridIndices[k].x == 0) moved.radii[k] = 0.0;
  }
  EXPECT_FALSE(finder::ReachesEdge(unit::PlaneOf(moved), moved, {300, 360}));
}

}  // namespace
