/// The search of the grid among many other round things.
#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "finder/FinderScenes.h"
#include "finder/Lattice.h"
#include "finder/Pattern.h"
#include "finder/RobustFinder.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

TEST(SeedOrder, PutsTheInsideOfAPatternBeforeStrewnSpots) {
  cv::RNG random(4);
  std::vector<finder::DiscCandidate> candidates;
  for (int k = 0; k < 100; ++k) {
    candidates.push_back({{random.uniform(300.0, 635.0), random.uniform(5.0, 475.0)}, 5.0, 9});
  }
  for (const cv::Point& gridIndex : finder::PatternIndices(unit::GRID)) {
    candidates.push_back({{30.0 + 24.0 * gridIndex.x, 30.0 + 24.0 * gridIndex.y}, 9.0, 3});
  }
  const finder::CandidateIndex index(candidates, cv::Size(640, 480));
  finder::SearchBudget budget{100000};
  const std::vector<int> seeds = finder::SeedsInOrder(index, budget);
  ASSERT_EQ(seeds.size(), candidates.size());
  for (size_t k = 0; k < 10; ++k) EXPECT_GE(seeds[k], 100) << k;
}

/// Spots as dark as the discs and darker, as many as asked for less those that would lie on the sheet.
cv::Mat AmongSpots(int count, std::uint64_t seed) {
  const cv::Mat sheet = unit::FlatGrid(unit::GRID, 0.4, 20.0);
  cv::Mat image(480, 640, CV_8UC1, cv::Scalar(235));
  const cv::Rect gridIndex(200, 100, sheet.cols, sheet.rows);
  cv::RNG random(seed);
  for (int k = 0; k < count; ++k) {
    const cv::Point2d at(random.uniform(8.0, 632.0), random.uniform(8.0, 472.0));
    const double radius = random.uniform(2.0, 6.0);
    cv::circle(image, at * 16.0, cvRound(16.0 * radius), cv::Scalar(5), cv::FILLED, cv::LINE_AA, 4);
  }
  sheet.copyTo(image(gridIndex));
  cv::GaussianBlur(image, image, cv::Size(), 0.7);
  return image;
}

TEST(SeedOrder, LeadsToTheGridAmongHundredsOfSpots) {
  for (const int count : {50, 100, 200, 400}) {
    int found = 0;
    for (std::uint64_t seed = 1; seed <= 10; ++seed) {
      if (SearchGridRobust(AmongSpots(count, seed), unit::GRID).Found()) ++found;
    }
    EXPECT_GE(found, 9) << count;
  }
}

}  // namespace
