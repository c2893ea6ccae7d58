/// Growing lattices, and laying the pattern onto them.
#include "finder/Lattice.h"

#include <gtest/gtest.h>

#include <numeric>
#include <set>

#include "finder/Labelling.h"
#include "finder/Pattern.h"

using namespace velmora;

namespace {

using finder::CandidateIndex;
using finder::DiscCandidate;
using finder::Lattice;
using finder::SearchBudget;

const cv::Size GRID(4, 11);
const cv::Size FRAME_SIZE(640, 480);
const cv::Matx33d PERSPECTIVE(38.0, 6.0, 120.0, -9.0, 30.0, 100.0, 0.01, 0.012, 1.0);

/// Candidates where a view of the grid indices has them.
std::vector<DiscCandidate> Observed(const std::vector<cv::Point>& gridIndices,
                                    const cv::Matx33d& H = PERSPECTIVE) {
  std::vector<DiscCandidate> candidates;
  for (const cv::Point& gridIndex : gridIndices) {
    const cv::Vec3d p = H * cv::Vec3d(gridIndex.x, gridIndex.y, 1.0);
    candidates.push_back({{p[0] / p[2], p[1] / p[2]}, 9.0 / p[2], 5});
  }
  return candidates;
}

/// The first lattice of all candidates that a search offers.
Lattice Grown(const std::vector<DiscCandidate>& candidates) {
  const CandidateIndex index(candidates, FRAME_SIZE);
  SearchBudget budget{1000000};
  Lattice found;
  finder::SearchLattices(index, candidates.size(), 400, budget, [&](const Lattice& lattice) {
    found = lattice;
    return lattice.points.size() == candidates.size();
  });
  return found;
}

std::vector<int> InOrder() {
  std::vector<int> order(static_cast<size_t>(GRID.area()));
  std::iota(order.begin(), order.end(), 0);
  return order;
}

TEST(Lattice, GrowsOverAWholeGridInPerspective) {
  const Lattice lattice = Grown(Observed(finder::PatternIndices(GRID)));
  ASSERT_EQ(lattice.points.size(), 44U);
  std::set<std::pair<int, int>> gridIndices;
  for (const auto& point : lattice.points) gridIndices.insert({point.gridIndex.x, point.gridIndex.y});
  EXPECT_EQ(gridIndices.size(), 44U);
}

TEST(Lattice, OfPointsStrewnAtRandomIsNotRegular) {
  cv::RNG random(2);
  std::vector<DiscCandidate> candidates;
  for (int k = 0; k < 800; ++k) {
    candidates.push_back({{random.uniform(5.0, 635.0), random.uniform(5.0, 475.0)}, 5.0, 3});
  }
  const CandidateIndex index(candidates, FRAME_SIZE);
  SearchBudget budget{300000};
  int offered = 0;
  finder::SearchLattices(index, 38, 400, budget, [&](const Lattice&) {
    ++offered;
    return false;
  });
  EXPECT_EQ(offered, 0);
  const std::vector<DiscCandidate> grid = Observed(finder::PatternIndices(GRID));
  EXPECT_LT(finder::Irregularity(Grown(grid), CandidateIndex(grid, FRAME_SIZE)), 0.02);
}

TEST(Lattice, SearchEndsWhenItsBudgetIsSpent) {
  const CandidateIndex index(Observed(finder::PatternIndices(GRID)), FRAME_SIZE);
  SearchBudget budget{300};
  EXPECT_FALSE(finder::SearchLattices(index, 44, 400, budget, [](const Lattice&) { return true; }));
}

TEST(Lattice, GrownAtAnyAngleHasEveryDiscWhereItBelongs) {
  for (double angle = 0.0; angle < 6.0; angle += 0.5) {
    const cv::Matx33d rotation(28.0 * std::cos(angle), -28.0 * std::sin(angle), 320.0, 28.0 * std::sin(angle),
                               28.0 * std::cos(angle), 240.0, 0.0, 0.0, 1.0);
    const Lattice lattice = Grown(Observed(finder::PatternIndices(GRID), rotation));
    SearchBudget budget{1000000};
    const finder::Labelling labelling = finder::LabelPattern(lattice, GRID, 2, budget);
    EXPECT_EQ(labelling.discs, InOrder()) << angle;
    EXPECT_EQ(labelling.covered, 44);
    EXPECT_LE(labelling.secondBest, 42);
  }
}

/// A grid whose steps grow along its rows, more and more, as those of near and tilted sheets do.
std::vector<DiscCandidate> Stretched(double growth) {
  std::vector<DiscCandidate> candidates;
  for (const cv::Point& gridIndex : finder::PatternIndices(GRID)) {
    const double y = 60.0 + 16.0 * (std::pow(growth, gridIndex.y) - 1.0) / (growth - 1.0);
    candidates.push_back({{200.0 + 20.0 * gridIndex.x, y}, 6.0, 5});
  }
  return candidates;
}

TEST(Lattice, ThatALensMayHaveBentIsShownButNotOffered) {
  struct Shown {
    int offered = 0;
    int bent = 0;
  };
  const auto search = [](double growth) {
    const CandidateIndex index(Stretched(growth), {640, 900});
    SearchBudget budget{1000000};
    Shown shown;
    const bool found = finder::SearchLattices(
        index, 44, 400, budget,
        [&](const Lattice&) {
          ++shown.offered;
          return false;
        },
        [&](const Lattice& lattice) {
          EXPECT_EQ(lattice.points.size(), 44U);
          const double irregularity = finder::Irregularity(lattice, index);
          EXPECT_TRUE(irregularity >= 0.07 && irregularity < 0.1) << irregularity;
          ++shown.bent;
        });
    EXPECT_FALSE(found);
    return shown;
  };
  const Shown even = search(1.02);
  EXPECT_GT(even.offered, 0);
  EXPECT_EQ(even.bent, 0);
  EXPECT_GT(search(1.22).bent, 0);
}

}  // namespace
