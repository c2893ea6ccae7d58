/// What may be discs of the grid: round dark spots that several grey levels agree on.
#include "finder/Candidates.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace velmora::finder {

namespace {

constexpr int LEVELS = 18;
constexpr int LEAST_CONTRAST = 8;
constexpr double SMALLEST_AREA = 4.0;
/// Spots of fewer pixels are faint in most images.
constexpr double SMALL_AREA = 20.0;
constexpr double SPECK_AREA = 2.0;
constexpr int CELL = 16;

/// Faint discs are looked for at levels that are so near to each other, in a picture that is smaller by so
/// much: fewer pixels pay for more levels, and have less noise.
constexpr int FAINT_STEP = 3;
constexpr int SHRUNK = 2;
/// Pixels of the smaller picture: below, noise makes spots of its own.
constexpr double SMALLEST_FAINT_AREA = 12.0;
/// What more of the near levels see, the ordinary ones see well.
constexpr int MOST_FAINT_LEVELS = 15;

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

/// One candidate for each spot that two levels at least see, one for small spots, as its middle level sees
/// it.
std::vector<DiscCandidate> Merge(const std::vector<Region>& regions, const cv::Size& size) {
  SpotMap map(size);
  std::vector<int> spotOf;
  spotOf.reserve(regions.size());
  for (const Region& region : regions) spotOf.push_back(map.Add(region));
  std::vector<int> timesFound(map.Spots().size(), 0);
  std::vector<DiscCandidate> merged;
  for (size_t k = 0; k < regions.size(); ++k) {
    const size_t spot = static_cast<size_t>(spotOf[k]);
    const int levels = map.Spots()[spot].levels;
    const bool enough = levels >= 2 || regions[k].area < SMALL_AREA;
    if (!enough || timesFound[spot]++ != levels / 2) continue;
    merged.push_back({regions[k].centroid, std::sqrt(regions[k].area / CV_PI), levels});
  }
  return merged;
}

/// From the darkest to the brightest grey of an image, but for a few pixels.
cv::Range RangeOf(const cv::Mat& grey) {
  std::array<int, 256> histogram = {};
  int total = 0;
  for (int row = 1; row < grey.rows; row += 3) {
    const unsigned char* pixels = grey.ptr(row);
    for (int x = 1; x < grey.cols; x += 3, ++total) ++histogram[pixels[x]];
  }
  // Few enough not to miss a small grid on a plain ground.
  const int tail = total / 4000;
  int low = 0;
  int high = 255;
  for (int sum = 0; low < 255 && (sum += histogram[static_cast<size_t>(low)]) <= tail;) ++low;
  for (int sum = 0; high > 0 && (sum += histogram[static_cast<size_t>(high)]) <= tail;) --high;
  return {low, high};
}

}  // namespace

std::vector<int> ChooseLevels(const cv::Mat& grey) {
  const cv::Range range = RangeOf(grey);
  std::vector<int> levels;
  if (range.size() < LEAST_CONTRAST) return levels;
  for (int k = 0; k < LEVELS; ++k) {
    const int level = range.start + cvRound(range.size() * (k + 0.5) / LEVELS);
    if (levels.empty() || level > levels.back()) levels.push_back(level);
  }
  return levels;
}

bool IsRound(const Region& region) {
  // The area of the ellipse with these moments; the pixels' own extent adds 1/12 to each, which counts in the
  // smallest ones.
  const double xx = region.xx + 1.0 / 12.0;
  const double yy = region.yy + 1.0 / 12.0;
  const double determinant = xx * yy - region.xy * region.xy;
  if (!(determinant > 0.0)) return false;
  const double fill = region.area / (4.0 * CV_PI * std::sqrt(determinant));
  const bool small = region.area < 60.0;
  if (fill < (small ? 0.8 : 0.87) || fill > (small ? 1.2 : 1.1)) return false;
  const double half = 0.5 * (xx + yy);
  const double spread = std::sqrt(std::max(0.0, half * half - determinant));
  return half - spread > 0.025 * (half + spread);
}

Candidates FindCandidates(const cv::Mat& grey, int discs) {
  const double pixels = static_cast<double>(grey.size().area());
  const double largest = 1.5 * pixels / discs;
  RegionLimits limits;
  limits.minArea = SPECK_AREA;
  limits.maxArea = 0.25 * pixels;
  limits.maxRunsPerLevel = 1000 + grey.size().area() / 25;
  std::vector<Region> regions = FindDarkRegions(grey, ChooseLevels(grey), limits);

  Candidates candidates;
  std::vector<Region> round;
  int specks = 0;
  int blots = 0;
  for (const Region& region : regions) {
    if (region.area < SMALLEST_AREA) {
      ++specks;
    } else if (IsRound(region)) {
      if (region.area > largest) ++blots;
      if (region.area <= largest) round.push_back(region);
    }
  }
  std::stable_sort(round.begin(), round.end(),
                   [](const Region& a, const Region& b) { return a.level < b.level; });
  candidates.discs = Merge(round, grey.size());
  std::stable_sort(candidates.discs.begin(), candidates.discs.end(),
                   [](const DiscCandidate& a, const DiscCandidate& b) { return a.levels > b.levels; });
  if (candidates.discs.size() > MAX_CANDIDATES) candidates.discs.resize(MAX_CANDIDATES);
  // Each is seen at several levels.
  candidates.tooSmall = specks / 3;
  candidates.tooLarge = (blots + 2) / 3;
  return candidates;
}

std::vector<DiscCandidate> FindFaintCandidates(const cv::Mat& grey, int discs) {
  const cv::Range range = RangeOf(grey);
  // Else the ordinary levels are as near to each other.
  if (range.size() <= FAINT_STEP * LEVELS) return {};
  const cv::Size size(grey.cols / SHRUNK, grey.rows / SHRUNK);
  cv::Mat smaller;
  cv::resize(grey(cv::Rect(0, 0, SHRUNK * size.width, SHRUNK * size.height)), smaller, size, 0.0, 0.0,
             cv::INTER_AREA);
  std::vector<int> levels;
  for (int level = range.start + 1; level < range.end; level += FAINT_STEP) levels.push_back(level);
  RegionLimits limits;
  limits.minArea = SMALLEST_FAINT_AREA;
  limits.maxArea = 1.5 * size.area() / discs;
  limits.maxRunsPerLevel = 1000 + size.area() / 25;
  std::vector<Region> round;
  for (const Region& region : FindDarkRegions(smaller, levels, limits)) {
    if (IsRound(region)) round.push_back(region);
  }
  std::stable_sort(round.begin(), round.end(),
                   [](const Region& a, const Region& b) { return a.level < b.level; });
  std::vector<DiscCandidate> faint;
  for (DiscCandidate disc : Merge(round, size)) {
    if (disc.levels < 2 || disc.levels > MOST_FAINT_LEVELS || faint.size() == MAX_CANDIDATES) continue;
    // Pixels have their middles at whole numbers.
    disc.centre = SHRUNK * (disc.centre + cv::Point2d(0.5, 0.5)) - cv::Point2d(0.5, 0.5);
    disc.radius *= SHRUNK;
    faint.push_back(disc);
  }
  return faint;
}

}  // namespace velmora::finder
