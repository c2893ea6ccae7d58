/// The discs of the flat picture of the 4 x 11 grid, as a search would have placed them.
#include "finder/FlatDiscs.h"

#include <gtest/gtest.h>

#include "finder/Pattern.h"

using namespace velmora;

namespace unit {

using finder::PlacedDiscs;

cv::Point2d InFlatGrid(const cv::Point& place) {
  return {FLAT_STEP * (2.0 + place.x), FLAT_STEP * (2.0 + place.y)};
}

PlacedDiscs FlatDiscs() {
  PlacedDiscs discs;
  discs.grid = FLAT_GRID;
  discs.places = finder::PatternPlaces(FLAT_GRID);
  for (const cv::Point& place : discs.places) discs.centres.push_back(InFlatGrid(place));
  discs.radii.assign(discs.places.size(), FLAT_RADIUS);
  return discs;
}

PlacedDiscs BentDiscs() {
  PlacedDiscs discs = FlatDiscs();
  const cv::Point2d middle(5.0 * FLAT_STEP, 7.0 * FLAT_STEP);
  for (cv::Point2d& centre : discs.centres) {
    const cv::Point2d ray = (centre - middle) / (7.0 * FLAT_STEP);
    centre = middle + 7.0 * FLAT_STEP * (1.0 - 0.2 * ray.dot(ray)) * ray;
  }
  return discs;
}

PlacedDiscs DiscsProjectedBy(const cv::Matx33d& H, const cv::Size& grid, double radius) {
  PlacedDiscs discs;
  discs.grid = grid;
  discs.places = finder::PatternPlaces(grid);
  const double determinant = std::abs(cv::determinant(H));
  for (const cv::Point& place : discs.places) {
    const cv::Vec3d p = H * cv::Vec3d(place.x, place.y, 1.0);
    discs.centres.emplace_back(p[0] / p[2], p[1] / p[2]);
    discs.radii.push_back(radius * std::sqrt(determinant / std::abs(p[2] * p[2] * p[2])));
  }
  return discs;
}

finder::SheetPlane PlaneOf(const PlacedDiscs& discs) {
  finder::SheetPlane plane;
  EXPECT_TRUE(plane.Fit(discs));
  return plane;
}

}  // namespace unit
