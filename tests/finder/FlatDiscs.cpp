/// The discs of the flat image of the 4 x 11 grid, as a search would have labelled them.
#include "finder/FlatDiscs.h"

#include <gtest/gtest.h>

#include "finder/Pattern.h"

using namespace velmora;

namespace unit {

using finder::LabelledDiscs;

cv::Point2d InFlatGrid(const cv::Point& gridIndex) {
  return {FLAT_STEP * (2.0 + gridIndex.x), FLAT_STEP * (2.0 + gridIndex.y)};
}

LabelledDiscs FlatDiscs() {
  LabelledDiscs discs;
  discs.grid = FLAT_GRID;
  discs.gridIndices = finder::PatternIndices(FLAT_GRID);
  for (const cv::Point& gridIndex : discs.gridIndices) discs.centres.push_back(InFlatGrid(gridIndex));
  discs.radii.assign(discs.gridIndices.size(), FLAT_RADIUS);
  return discs;
}

LabelledDiscs BentDiscs() {
  LabelledDiscs discs = FlatDiscs();
  const cv::Point2d middle(5.0 * FLAT_STEP, 7.0 * FLAT_STEP);
  for (cv::Point2d& centre : discs.centres) {
    const cv::Point2d ray = (centre - middle) / (7.0 * FLAT_STEP);
    centre = middle + 7.0 * FLAT_STEP * (1.0 - 0.2 * ray.dot(ray)) * ray;
  }
  return discs;
}

LabelledDiscs DiscsProjectedBy(const cv::Matx33d& H, const cv::Size& grid, double radius) {
  LabelledDiscs discs;
  discs.grid = grid;
  discs.gridIndices = finder::PatternIndices(grid);
  const double determinant = std::abs(cv::determinant(H));
  for (const cv::Point& gridIndex : discs.gridIndices) {
    const cv::Vec3d p = H * cv::Vec3d(gridIndex.x, gridIndex.y, 1.0);
    discs.centres.emplace_back(p[0] / p[2], p[1] / p[2]);
    discs.radii.push_back(radius * std::sqrt(determinant / std::abs(p[2] * p[2] * p[2])));
  }
  return discs;
}

finder::GridProjection PlaneOf(const LabelledDiscs& discs) {
  finder::GridProjection projection;
  EXPECT_TRUE(projection.Fit(discs));
  return projection;
}

}  // namespace unit
