/// Grids that the frame shows a part of.
#include "finder/PartialGrid.h"

#include <gtest/gtest.h>

#include <iostream>
#include <opencv2/imgproc.hpp>

#include "finder/FinderScenes.h"
#include "finder/PartialScenes.h"
#include "finder/Pattern.h"
#include "finder/RobustFinder.h"
#include "unit/Collection.h"

using namespace velmora;
using unit::Lack;

namespace {

PartialGrid PartOf(const cv::Mat& image, const cv::Size& grid = unit::GRID) {
  PartialGrid part;
  SearchGridRobust(image, grid, part);
  return part;
}

/// What was found of many frames, and how far off.
struct Tally {
  int telling = 0;
  int found = 0;  ///< of those
  double squares = 0.0;
  double worst = 0.0;
  int points = 0;

  void Compare(const cv::Point2d& found_, const cv::Point2d& truth) {
    const cv::Point2d off = found_ - truth;
    squares += off.dot(off);
    worst = std::max(worst, std::sqrt(off.dot(off)));
    ++points;
  }
  double Rms() const { return std::sqrt(squares / std::max(1, points)); }
};

Tally TallyWhole(int frames) {
  Tally tally;
  for (int number = 0; number < frames; ++number) {
    const unit::PartialFrame frame = unit::RandomPartialFrame(Lack::Nothing, number);
    const GridFinding finding = SearchGridRobust(frame.image, unit::GRID);
    if (!finding.Found()) continue;
    for (size_t k = 0; k < 44; ++k) tally.Compare(finding.centres[k], frame.middles[k]);
  }
  return tally;
}

void ExpectInShape(const PartialGrid& part, size_t discs) {
  ASSERT_EQ(part.points.size(), discs);
  ASSERT_EQ(part.radii.size(), discs);
  ASSERT_EQ(part.weights.size(), discs);
  for (size_t k = 0; k < discs; ++k) {
    EXPECT_TRUE(std::isfinite(part.points[k].x) && std::isfinite(part.points[k].y)) << k;
    EXPECT_TRUE(part.weights[k] == 0.0 || part.weights[k] == 1.0) << k;
    EXPECT_EQ(part.weights[k] == 1.0, part.radii[k] > 0.0) << k;
  }
}

class PartialGrids : public testing::TestWithParam<Lack> {};

TEST_P(PartialGrids, AreFoundNearlyAlwaysInOrderAndAsNearTheTruthAsWholeOnes) {
  constexpr int FRAMES = 40;
  Tally tally;
  for (int number = 0; number < FRAMES; ++number) {
    SCOPED_TRACE(number);
    const unit::PartialFrame frame = unit::RandomPartialFrame(GetParam(), number);
    tally.telling += frame.telling ? 1 : 0;
    PartialGrid part;
    // A disc whose rim is hardly touched counts as seen by both.
    const GridFinding finding = SearchGridRobust(frame.image, unit::GRID, part);
    if (frame.telling && (finding.Found() || part.Found())) ++tally.found;
    if (!part.Found()) continue;
    ExpectInShape(part, 44);
    EXPECT_GE(part.Seen(), 33);
    EXPECT_TRUE(unit::InOrder(part.points, frame.centres));
    for (size_t k = 0; k < 44; ++k) {
      if (part.weights[k] == 0.0) continue;
      EXPECT_FALSE(frame.cut[k]) << k;
      tally.Compare(part.points[k], frame.middles[k]);
    }
  }
  const Tally whole = TallyWhole(FRAMES);
  std::cout << unit::NameOf(GetParam())
            << cv::format(": %d of %d found; %.4f px rms, %.3f at most (whole grids: %.4f, %.3f)",
                          tally.found, tally.telling, tally.Rms(), tally.worst, whole.Rms(), whole.worst)
            << std::endl;
  EXPECT_GE(tally.telling, FRAMES * 9 / 10);
  EXPECT_GE(tally.found, 0.95 * tally.telling);
  EXPECT_LT(tally.Rms(), 1.2 * whole.Rms() + 0.002);
  EXPECT_LT(tally.worst, 0.3);
}

INSTANTIATE_TEST_SUITE_P(Lacking, PartialGrids,
                         testing::Values(Lack::OneRow, Lack::TwoRows, Lack::OneColumn, Lack::Corner,
                                         Lack::Bite),
                         [](const auto& lack) { return unit::NameOf(lack.param); });

TEST(PartialGrid, IsNoneOfAWholeGridWhichIsFoundAsEver) {
  for (int number = 0; number < 40; ++number) {
    const cv::Mat image = unit::RandomFinderFrame(number).image;
    PartialGrid part;
    part.points.resize(3);
    const GridFinding with = SearchGridRobust(image, unit::GRID, part);
    const GridFinding without = SearchGridRobust(image, unit::GRID);
    EXPECT_EQ(with.centres, without.centres) << number;
    EXPECT_EQ(with.radii, without.radii) << number;
    EXPECT_EQ(with.fault, without.fault) << number;
    if (with.Found()) {
      EXPECT_FALSE(part.Found()) << number;
    }
  }
}

TEST(PartialGrid, IsNoneInPicturesOfOtherThings) {
  for (int number = 0; number < 150; ++number) {
    EXPECT_FALSE(PartOf(unit::RandomForeignFrame(number)).Found()) << number;
  }
}

TEST(PartialGrid, IsNoneOfAnotherSheetWhollyInView) {
  for (const cv::Size& grid : {cv::Size(4, 10), cv::Size(5, 11), cv::Size(4, 12), cv::Size(4, 9),
                               cv::Size(3, 11), cv::Size(5, 8), cv::Size(4, 13), cv::Size(5, 9)}) {
    for (int number = 0; number < 12; ++number) {
      EXPECT_FALSE(PartOf(unit::RandomOtherSheet(grid, false, number).image).Found()) << grid << number;
    }
  }
}

/// The pattern's grid indices are the other sheet's, turned by quarters and shifted.
bool IsMovedOnly(const std::vector<cv::Point>& from, const std::vector<cv::Point>& to) {
  for (int quarters = 0; quarters < 4; ++quarters) {
    bool all = true;
    cv::Point shift;
    for (size_t k = 0; k < from.size(); ++k) {
      cv::Point turned = from[k];
      for (int q = 0; q < quarters; ++q) turned = {-turned.y, turned.x};
      if (k == 0) shift = to[0] - turned;
      all = all && turned + shift == to[k];
    }
    if (all) return true;
  }
  return false;
}

TEST(PartialGrid, OfALargerSheetThatTheBorderCutsIsThatSheetMoved) {
  int found = 0;
  for (const cv::Size& grid : {cv::Size(4, 10), cv::Size(5, 11), cv::Size(4, 12), cv::Size(4, 13)}) {
    for (int number = 0; number < 20; ++number) {
      const unit::OtherSheet sheet = unit::RandomOtherSheet(grid, true, number);
      const PartialGrid part = PartOf(sheet.image);
      if (!part.Found()) continue;
      ++found;
      std::vector<cv::Point> from;
      std::vector<cv::Point> to;
      for (size_t k = 0; k < 44; ++k) {
        if (part.weights[k] == 0.0) continue;
        size_t nearest = 0;
        for (size_t other = 1; other < sheet.middles.size(); ++other) {
          if (cv::norm(part.points[k] - sheet.middles[other]) <
              cv::norm(part.points[k] - sheet.middles[nearest]))
            nearest = other;
        }
        EXPECT_LT(cv::norm(part.points[k] - sheet.middles[nearest]), 0.3) << grid << number;
        from.push_back(finder::PatternIndices(unit::GRID)[k]);
        to.push_back(sheet.gridIndices[nearest]);
      }
      EXPECT_TRUE(IsMovedOnly(from, to)) << grid << number;
    }
  }
  EXPECT_GT(found, 0);
}

}  // namespace
