/// Spots that several grey levels see.
#include "finder/Spots.h"

#include <algorithm>
#include <cmath>

namespace velmora::finder {

namespace {

/// Spots of fewer pixels are faint in most images.
constexpr double SMALL_AREA = 20.0;
constexpr int CELL = 16;

/// A spot followed through the levels.
struct Spot {
  cv::Point2d centre;  ///< at the last level that saw it
  double radius = 0.0;
  int lastLevel = 0;
  int levels = 0;
  int next = -1;  ///< the next one of its cell
};

/// Finds the spot that a region of a higher level continues.
class SpotMap {
 public:
  explicit SpotMap(const cv::Size& size) : columns_(size.width / CELL + 1), rows_(size.height / CELL + 1) {
    first_.assign(static_cast<size_t>(columns_ * rows_), -1);
  }

  /// The number of the spot that the region belongs to, which may be a new one.
  int Add(const Region& region) {
    const double radius = std::sqrt(region.area / CV_PI);
    int spot = Find(region, radius);
    if (spot < 0) {
      spot = static_cast<int>(spots_.size());
      int& first = first_[Cell(cvFloor(region.centroid.x) / CELL, cvFloor(region.centroid.y) / CELL)];
      spots_.push_back({region.centroid, radius, 0, 0, first});
      first = spot;
    }
    Spot& known = spots_[static_cast<size_t>(spot)];
    // The cell stays that of the first sight: a spot hardly moves, and neighbouring cells are looked at.
    known.centre = region.centroid;
    known.radius = radius;
    known.lastLevel = region.level;
    ++known.levels;
    return spot;
  }

  const std::vector<Spot>& Spots() const { return spots_; }

 private:
  size_t Cell(int column, int row) const { return static_cast<size_t>(row * columns_ + column); }

  int Find(const Region& region, double radius) const {
    const double reach = std::min(0.5 * radius + 0.7, static_cast<double>(CELL));
    const cv::Point2d& at = region.centroid;
    int best = -1;
    double least = 1e9;
    const int left = std::max(0, cvFloor(at.x - reach) / CELL);
    const int right = std::min(columns_ - 1, cvFloor(at.x + reach) / CELL);
    const int bottom = std::min(rows_ - 1, cvFloor(at.y + reach) / CELL);
    for (int row = std::max(0, cvFloor(at.y - reach) / CELL); row <= bottom; ++row) {
      for (int column = left; column <= right; ++column) {
        for (int k = first_[Cell(column, row)]; k >= 0; k = spots_[static_cast<size_t>(k)].next) {
          const Spot& spot = spots_[static_cast<size_t>(k)];
          const double distance = cv::norm(spot.centre - at);
          const double smaller = std::min(spot.radius, radius);
          const bool same = spot.lastLevel != region.level && distance < 0.5 * smaller + 0.7 &&
                            std::max(spot.radius, radius) < 2.0 * smaller;
          if (!same || distance >= least) continue;
          best = k;
          least = distance;
        }
      }
    }
    return best;
  }

  const int columns_;
  const int rows_;
  std::vector<int> first_;
  std::vector<Spot> spots_;
};

/// The regions of the lowest level first, those of each level as they come.
std::vector<const Region*> ByLevel(const std::vector<Region>& regions) {
  std::vector<size_t> ends;
  for (const Region& region : regions) {
    const size_t level = static_cast<size_t>(region.level);
    if (ends.size() < level + 2) ends.resize(level + 2, 0);
    ++ends[level + 1];
  }
  for (size_t level = 1; level < ends.size(); ++level) ends[level] += ends[level - 1];
  std::vector<const Region*> sorted(regions.size());
  for (const Region& region : regions) sorted[ends[static_cast<size_t>(region.level)]++] = &region;
  return sorted;
}

}  // namespace

std::vector<DiscCandidate> MergeSpots(const std::vector<Region>& found, const cv::Size& size) {
  const std::vector<const Region*> regions = ByLevel(found);
  SpotMap map(size);
  std::vector<int> spotOf;
  spotOf.reserve(regions.size());
  for (const Region* region : regions) spotOf.push_back(map.Add(*region));
  std::vector<int> timesFound(map.Spots().size(), 0);
  std::vector<DiscCandidate> merged;
  merged.reserve(map.Spots().size());
  for (size_t k = 0; k < regions.size(); ++k) {
    const Region& region = *regions[k];
    const size_t spot = static_cast<size_t>(spotOf[k]);
    const int levels = map.Spots()[spot].levels;
    const bool enough = levels >= 2 || region.area < SMALL_AREA;
    if (!enough || timesFound[spot]++ != levels / 2) continue;
    merged.push_back({region.centroid, std::sqrt(region.area / CV_PI), levels});
  }
  return merged;
}

}  // namespace velmora::finder
