/// Laying the pattern onto lattices.
#include "finder/Labelling.h"

#include <gtest/gtest.h>

#include <numeric>

#include "finder/Pattern.h"

using namespace velmora;

namespace {

using finder::Labelling;
using finder::Lattice;
using finder::SearchBudget;

const cv::Size GRID(4, 11);

/// A base of a lattice, in the pattern's own one.
struct Base {
  int a, b, c, d;

  cv::Point Of(const cv::Point& p) const { return {a * p.x + b * p.y, c * p.x + d * p.y}; }
  /// The pattern's own base turns against the clock.
  bool Clockwise() const { return a * d - b * c < 0; }
};

/// The lattice of these grid indices in a base, from somewhere on; candidates are numbered as the indices
/// are.
Lattice InBase(const std::vector<cv::Point>& gridIndices, const Base& base, const cv::Point& from = {}) {
  Lattice lattice;
  lattice.clockwise = base.Clockwise();
  for (const cv::Point& gridIndex : gridIndices) {
    lattice.points.push_back(
        {base.Of(finder::LatticeIndex(gridIndex)) + from, static_cast<int>(lattice.points.size())});
  }
  return lattice;
}

Labelling Labelled(const Lattice& lattice, const cv::Size& grid = GRID, int lacking = 2) {
  SearchBudget budget{10000000};
  return finder::LabelPattern(lattice, grid, lacking, budget);
}

std::vector<int> InOrder() {
  std::vector<int> order(static_cast<size_t>(GRID.area()));
  std::iota(order.begin(), order.end(), 0);
  return order;
}

TEST(Labelling, PutsEveryDiscWhereItBelongsInAnyBase) {
  for (const Base& base : {Base{1, 0, 0, 1}, Base{0, 1, 1, 0}, Base{-1, 0, 0, -1}, Base{0, -1, 1, 0},
                           Base{1, 1, 0, 1}, Base{1, 0, -1, -1}, Base{1, -1, 2, -1}}) {
    const Labelling labelling = Labelled(InBase(finder::PatternIndices(GRID), base, {-7, 12}));
    EXPECT_EQ(labelling.discs, InOrder()) << base.a << base.b << base.c << base.d;
    EXPECT_EQ(labelling.covered, 44);
    EXPECT_EQ(labelling.secondBest, 40);
  }
}

TEST(Labelling, NeverLaysThePatternOnItsMirrorImage) {
  Lattice lattice = InBase(finder::PatternIndices(GRID), {1, 0, 0, 1});
  lattice.clockwise = !lattice.clockwise;
  EXPECT_NE(Labelled(lattice).discs, InOrder());
}

/// Every size that the search takes has one best way only.
TEST(Labelling, IsUniqueForAllSizesOfOneOrder) {
  for (int columns = 2; columns <= 8; ++columns) {
    for (int rows = 3; rows <= 15; rows += 2) {
      const cv::Size grid(columns, rows);
      if (!finder::HasOneOrder(grid)) continue;
      const Labelling labelling = Labelled(InBase(finder::PatternIndices(grid), {1, 0, 0, 1}), grid);
      EXPECT_EQ(labelling.covered, grid.area());
      EXPECT_LE(labelling.secondBest + 2, grid.area()) << grid;
    }
  }
}

TEST(Labelling, LeavesOutWhatIsMissingAndWhatIsBeside) {
  std::vector<cv::Point> gridIndices = finder::PatternIndices(GRID);
  gridIndices.erase(gridIndices.begin() + 17);
  gridIndices.emplace_back(9, 5);
  std::vector<int> expected = InOrder();
  expected[17] = -1;
  for (size_t k = 18; k < expected.size(); ++k) --expected[k];
  const Labelling labelling = Labelled(InBase(gridIndices, {1, 0, 0, 1}));
  EXPECT_EQ(labelling.discs, expected);
  EXPECT_EQ(labelling.covered, 43);
}

TEST(Labelling, IsInDoubtOnALargerPattern) {
  const Labelling labelling = Labelled(InBase(finder::PatternIndices({4, 13}), {1, 0, 0, 1}));
  EXPECT_EQ(labelling.covered, 44);
  EXPECT_EQ(labelling.secondBest, 44);
}

TEST(Labelling, IsNoneOnLatticesThatLackMoreThanAllowed) {
  // Without its last four rows the pattern lacks indices in both directions of its base.
  const Lattice part = InBase(finder::PatternIndices({4, 7}), {1, 0, 0, 1});
  EXPECT_EQ(Labelled(part, GRID, 0).covered, 0);
  EXPECT_EQ(Labelled(part, GRID, 15).covered, 28);
}

/// Both ways of the lattice count alike.
TEST(Labelling, MayLackAsManyRowsOfTheLatticeAsAllowed) {
  for (const bool across : {false, true}) {
    Lattice lattice = InBase(finder::PatternIndices(GRID), {1, 0, 0, 1});
    std::vector<int> expected = InOrder();
    std::vector<finder::LatticePoint> rest;
    for (const finder::LatticePoint& point : lattice.points) {
      const bool last = across ? point.gridIndex.x >= 7 : point.gridIndex.y <= -4;
      if (last) {
        expected[static_cast<size_t>(point.candidate)] = -1;
      } else {
        rest.push_back(point);
      }
    }
    ASSERT_LT(rest.size(), 44U);
    lattice.points = rest;
    EXPECT_EQ(Labelled(lattice, GRID, 2).discs, expected) << across;
    EXPECT_NE(Labelled(lattice, GRID, 0).discs, expected) << across;
  }
}

TEST(Labelling, OfNothingOrASpentBudgetIsNone) {
  EXPECT_EQ(Labelled({}).covered, 0);
  EXPECT_TRUE(Labelled({}).discs.empty());
  SearchBudget budget{0};
  const Lattice lattice = InBase(finder::PatternIndices(GRID), {1, 0, 0, 1});
  EXPECT_EQ(finder::LabelPattern(lattice, GRID, 2, budget).covered, 0);
  budget.left = 100;
  EXPECT_EQ(finder::LabelPattern(lattice, GRID, 2, budget).covered, 0) << "spent on the way";
  EXPECT_TRUE(budget.Spent());
}

TEST(Labelling, GivesAllWaysThatAreNearlyAsGood) {
  SearchBudget budget{10000000};
  // Ten of the eleven rows: the last one or, after half a turn, the first one is missing.
  const Lattice part = InBase(finder::PatternIndices({4, 10}), {1, 0, -1, -1}, {3, -5});
  const std::vector<finder::Way> ways = finder::WaysToLabel(part, GRID, 15, 33, 1, budget);
  ASSERT_EQ(ways.size(), 2U);
  for (const finder::Way& way : ways) EXPECT_EQ(way.covered, 40);
  EXPECT_GT(finder::WaysToLabel(part, GRID, 15, 33, 5, budget).size(), 2U);
  EXPECT_TRUE(finder::WaysToLabel(part, GRID, 15, 41, 5, budget).empty());
}

TEST(Labelling, LeadsFromThePatternToTheLatticeAndBackInEachWay) {
  SearchBudget budget{10000000};
  const Base base = {1, 0, -1, -1};
  const cv::Point from(3, -5);
  const Lattice part = InBase(finder::PatternIndices({4, 10}), base, from);
  for (const finder::Way& way : finder::WaysToLabel(part, GRID, 15, 33, 1, budget)) {
    const bool turned = way.OnLattice({0, 0}) != from + base.Of({0, 0});
    for (const cv::Point& gridIndex : finder::PatternIndices(GRID)) {
      const cv::Point there = turned ? cv::Point(7 - gridIndex.x, 9 - gridIndex.y) : gridIndex;
      EXPECT_EQ(way.OnLattice(gridIndex), from + base.Of(finder::LatticeIndex(there)));
      EXPECT_EQ(way.OnPattern(way.OnLattice(gridIndex)), gridIndex);
    }
  }
}

TEST(Labelling, HasNoWaysWithASpentSearchBudget) {
  SearchBudget budget{100};
  const Lattice part = InBase(finder::PatternIndices({4, 10}), {1, 0, 0, 1});
  EXPECT_TRUE(finder::WaysToLabel(part, GRID, 15, 33, 1, budget).empty());
  EXPECT_TRUE(finder::WaysToLabel({}, GRID, 15, 33, 1, budget).empty());
}

TEST(Labelling, MakesDiscsOfCandidates) {
  std::vector<finder::DiscCandidate> candidates;
  for (int k = 0; k < GRID.area(); ++k) candidates.push_back({{10.0 * k, 5.0 * k}, 1.0 + k, 5});
  Labelling labelling;
  labelling.discs = InOrder();
  std::swap(labelling.discs[3], labelling.discs[4]);
  labelling.discs[7] = -1;
  const finder::CandidateIndex index(candidates, {640, 480});
  const finder::LabelledDiscs discs = finder::DiscsOf(labelling, GRID, index);
  EXPECT_EQ(discs.grid, GRID);
  EXPECT_EQ(discs.gridIndices, finder::PatternIndices(GRID));
  EXPECT_EQ(discs.centres[3], cv::Point2d(40.0, 20.0));
  EXPECT_EQ(discs.radii[4], 4.0);
  EXPECT_FALSE(discs.Has(7));
  EXPECT_EQ(discs.Missing(), 1);
}

}  // namespace
