/// The grid indices of the pattern.
#include "finder/Pattern.h"

#include <gtest/gtest.h>

#include <set>

using namespace velmora;

namespace {

TEST(Pattern, HasItsIndicesRowByRow) {
  EXPECT_EQ(finder::PatternIndices({2, 3}),
            (std::vector<cv::Point>{{0, 0}, {2, 0}, {1, 1}, {3, 1}, {0, 2}, {2, 2}}));
}

TEST(Pattern, HasOneOrderWithAnOddNumberOfRows) {
  for (const cv::Size& grid : {cv::Size(4, 11), cv::Size(3, 9), cv::Size(5, 5), cv::Size(7, 13)}) {
    EXPECT_TRUE(finder::HasOneOrder(grid)) << grid;
  }
  for (const cv::Size& grid :
       {cv::Size(4, 10), cv::Size(1, 13), cv::Size(4, 1), cv::Size(2, 3), cv::Size(8, 3), cv::Size(99, 99),
        cv::Size(-4, 11), cv::Size(1 << 30, 1 << 30)}) {
    EXPECT_FALSE(finder::HasOneOrder(grid)) << grid;
  }
}

/// Whether half a turn and a shift by a step lead the pattern onto itself is what HasOneOrder() is about.
TEST(Pattern, OfOneOrderIsNotItselfAfterHalfATurn) {
  for (int columns = 2; columns <= 6; ++columns) {
    for (int rows = 5; rows <= 12; ++rows) {
      std::set<std::pair<int, int>> gridIndices;
      int right = 0;
      for (const cv::Point& gridIndex : finder::PatternIndices({columns, rows})) {
        gridIndices.insert({gridIndex.x, gridIndex.y});
        right = std::max(right, gridIndex.x);
      }
      // All shifts of the turned pattern by up to a step.
      int most = 0;
      for (int x = -1; x <= 1; ++x) {
        int covered = 0;
        for (const auto& [column, row] : gridIndices)
          covered += static_cast<int>(gridIndices.count({right - column + x, rows - 1 - row}));
        most = std::max(most, covered);
      }
      const bool ambiguous = most == columns * rows;
      EXPECT_EQ(ambiguous, rows % 2 == 0) << columns << " x " << rows;
      if (columns * rows >= 12) {
        EXPECT_EQ(finder::HasOneOrder({columns, rows}), !ambiguous) << columns << " x " << rows;
      }
    }
  }
}

TEST(Pattern, IndicesAreWholeStepsOfItsOwnBase) {
  std::set<std::pair<int, int>> seen;
  for (const cv::Point& gridIndex : finder::PatternIndices({5, 9})) {
    const cv::Point p = finder::LatticeIndex(gridIndex);
    EXPECT_EQ(cv::Point(1, 1) * p.x + cv::Point(1, -1) * p.y, gridIndex);
    EXPECT_TRUE(seen.insert({p.x, p.y}).second) << gridIndex;
  }
}

TEST(Pattern, MayLackAFewDiscsAtFirst) {
  EXPECT_EQ(finder::MissingAllowed({4, 11}), 6);
  EXPECT_EQ(finder::MissingAllowed({3, 5}), 2);
  EXPECT_EQ(finder::MissingAllowed({20, 29}), 6);
}

}  // namespace
