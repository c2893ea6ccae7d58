/// The grid indices of the asymmetric circles grid, and which sizes of it have one order only.
#include "finder/Pattern.h"

namespace velmora::finder {

namespace {

/// Half a turn of three rows covers all discs but one.
constexpr int LEAST_ROWS = 5;
constexpr int FEWEST_DISCS = 12;
constexpr int MOST_DISCS = 600;

}  // namespace

std::vector<cv::Point> PatternIndices(const cv::Size& grid) {
  std::vector<cv::Point> gridIndices;
  for (int row = 0; row < grid.height; ++row) {
    for (int k = 0; k < grid.width; ++k) gridIndices.emplace_back(2 * k + row % 2, row);
  }
  return gridIndices;
}

cv::Point LatticeIndex(const cv::Point& gridIndex) {
  return {(gridIndex.x + gridIndex.y) / 2, (gridIndex.x - gridIndex.y) / 2};
}

int MissingAllowed(const cv::Size& grid) {
  return std::min(6, grid.area() / 7);
}

bool HasOneOrder(const cv::Size& grid) {
  if (grid.width < 2 || grid.height < LEAST_ROWS || grid.height % 2 == 0) return false;
  if (grid.width > MOST_DISCS || grid.height > MOST_DISCS) return false;
  return grid.area() >= FEWEST_DISCS && grid.area() <= MOST_DISCS;
}

}  // namespace velmora::finder
