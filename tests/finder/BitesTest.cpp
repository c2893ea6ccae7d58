/// Discs beside something that hides others.
#include "finder/Bites.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "finder/FinderScenes.h"
#include "finder/FlatDiscs.h"

using namespace velmora;

namespace {

using finder::LabelledDiscs;
using unit::FLAT_GRID;
using unit::FLAT_RADIUS;
using unit::FLAT_STEP;
using unit::InFlatGrid;

constexpr size_t GAP = 21;

/// The discs that stay when disc GAP is missing.
LabelledDiscs Left(const cv::Mat& grey, LabelledDiscs discs = unit::FlatDiscs()) {
  discs.radii[GAP] = 0.0;
  finder::DropBitten(unit::PlaneOf(discs), grey, discs);
  return discs;
}

/// Something over disc GAP that reaches `beyond` pixels past the middle between it and the next one.
cv::Mat Obstacle(double beyond, int tone) {
  cv::Mat image = unit::FlatGrid(FLAT_GRID);
  const LabelledDiscs discs = unit::FlatDiscs();
  const cv::Point2d at = discs.centres[GAP];
  const double half = FLAT_STEP * std::sqrt(0.5) + beyond;
  cv::circle(image, at, cvRound(half), cv::Scalar(tone), cv::FILLED, cv::LINE_AA);
  return image;
}

TEST(Bites, LeaveDiscsThatAreSeenByThemselves) {
  EXPECT_EQ(Left(unit::FlatGrid(FLAT_GRID)).Missing(), 1);
  EXPECT_EQ(Left(Obstacle(-6.0, 130)).Missing(), 1) << "hides the one that is missing only";
}

TEST(Bites, DropDiscsThatTheObstacleReaches) {
  for (const int tone : {25, 130, 200}) {
    const LabelledDiscs left = Left(Obstacle(6.0, tone));
    for (size_t k = 0; k < 44; ++k) {
      const cv::Point apart = left.gridIndices[k] - left.gridIndices[GAP];
      const bool next = apart.dot(apart) == 2;
      EXPECT_EQ(left.Has(k), k != GAP && !next) << k << ", " << tone;
    }
  }
}

TEST(Bites, DropDiscsBesideTheGapThatAreOffTheOthers) {
  LabelledDiscs discs = unit::FlatDiscs();
  discs.centres[GAP + 1] += cv::Point2d(0.3, 0.0);
  discs.centres[0] += cv::Point2d(0.3, 0.0);
  const LabelledDiscs left = Left(unit::FlatGrid(FLAT_GRID), discs);
  EXPECT_FALSE(left.Has(GAP + 1));
  EXPECT_TRUE(left.Has(0)) << "far from the gap it is the lens, or noise";
  EXPECT_EQ(left.Missing(), 2);
}

TEST(Bites, AreNoneWhereTheBorderCutsTheMissingOnes) {
  const cv::Mat flat = unit::FlatGrid(FLAT_GRID);
  const cv::Mat cut = flat.rowRange(0, cvRound(InFlatGrid({0, 9}).y) + 11);
  LabelledDiscs discs = unit::FlatDiscs();
  for (size_t k = 40; k < 44; ++k) discs.radii[k] = 0.0;
  discs.centres[37] += cv::Point2d(0.3, 0.0);
  finder::DropBitten(unit::PlaneOf(discs), cut, discs);
  EXPECT_EQ(discs.Missing(), 4);
}

}  // namespace
