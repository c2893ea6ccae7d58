/// Dark runs of rows.
#include "finder/RowEdges.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

using namespace velmora;

namespace {

/// Where runs of pixels below a level begin and end among these columns.
std::vector<int> EdgesByHand(const unsigned char* pixels, const cv::Range& columns, int level) {
  std::vector<int> edges;
  bool dark = false;
  for (int x = columns.start; x <= columns.end; ++x) {
    const bool here = x < columns.end && pixels[x] < level;
    if (here != dark) edges.push_back(x);
    dark = here;
  }
  return edges;
}

TEST(RowEdges, AreWhereRunsBeginAndEndAtEachLevel) {
  const std::vector<int> levels = {0, 1, 40, 41, 90, 128, 129, 130, 131, 132, 133, 200, 255, 256};
  cv::RNG random(7);
  for (const int width : {1, 2, 7, 8, 9, 16, 61, 250, 641}) {
    finder::RowEdges edges(width, levels);
    for (int trial = 0; trial < 40; ++trial) {
      cv::Mat row(1, width, CV_8UC1);
      // Noise, and flat rows with steps.
      if (trial % 2 == 0) random.fill(row, cv::RNG::UNIFORM, 0, 256);
      for (int x = 0; x < width && trial % 2 != 0; ++x) {
        row.data[x] = x == 0 || random.uniform(0, 5) == 0 ? static_cast<unsigned char>(random.uniform(0, 256))
                                                          : row.data[x - 1];
      }
      const int start = trial < 20 ? 0 : random.uniform(0, width);
      const cv::Range columns(start, trial < 20 ? width : random.uniform(start + 1, width + 1));
      edges.Take(row.data, columns);
      for (size_t level = 0; level < levels.size(); ++level) {
        const std::vector<int> found(edges.Of(level), edges.Of(level) + edges.Count(level));
        EXPECT_EQ(found, EdgesByHand(row.data, columns, levels[level])) << width << ", " << levels[level];
      }
    }
  }
}

TEST(RowEdges, AreTwiceAsManyAsRuns) {
  cv::RNG random(8);
  for (const int width : {0, 1, 2, 17, 240, 241, 242, 500, 1920}) {
    cv::Mat row(1, width + 1, CV_8UC1);
    random.fill(row, cv::RNG::UNIFORM, 0, 256);
    for (const int level : {-3, 0, 1, 100, 128, 255, 256, 300}) {
      const std::vector<int> edges = EdgesByHand(row.data, {0, width}, level);
      EXPECT_EQ(finder::CountRuns(row.data, width, level), static_cast<int>(edges.size() / 2)) << width;
    }
  }
  // As many as there can be.
  cv::Mat comb(1, 641, CV_8UC1);
  for (int x = 0; x < comb.cols; ++x) comb.data[x] = x % 2 == 0 ? 10 : 200;
  EXPECT_EQ(finder::CountRuns(comb.data, comb.cols, 100), 321);
}

}  // namespace
