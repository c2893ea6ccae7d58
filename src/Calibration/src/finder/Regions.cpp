/// Dark connected regions of a picture, at several grey levels in one pass over it.
#include "finder/Regions.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace finder {

namespace {

/// Sums over the pixels of a region that still grows.
struct Sums {
  std::int64_t n = 0, x = 0, y = 0, xx = 0, xy = 0, yy = 0;
  int left = 0, right = 0, top = 0, bottom = 0;

  void AddRun(int from, int to, int row) {
    const std::int64_t count = to - from;
    const std::int64_t sum = count * (from + to - 1) / 2;
    const auto squares = [](std::int64_t k) { return (k - 1) * k * (2 * k - 1) / 6; };
    if (n == 0) {
      left = from;
      right = to;
      top = row;
    }
    left = std::min(left, from);
    right = std::max(right, to);
    bottom = row + 1;
    n += count;
    x += sum;
    y += count * row;
    xx += squares(to) - squares(from);
    xy += sum * row;
    yy += count * row * row;
  }

  void Add(const Sums& other) {
    n += other.n;
    x += other.x;
    y += other.y;
    xx += other.xx;
    xy += other.xy;
    yy += other.yy;
    left = std::min(left, other.left);
    right = std::max(right, other.right);
    top = std::min(top, other.top);
    bottom = std::max(bottom, other.bottom);
  }
};

Region RegionOf(const Sums& sums, int level) {
  Region region;
  const double n = static_cast<double>(sums.n);
  region.level = level;
  region.area = n;
  region.centroid = {static_cast<double>(sums.x) / n, static_cast<double>(sums.y) / n};
  const cv::Point2d& c = region.centroid;
  region.xx = static_cast<double>(sums.xx) / n - c.x * c.x;
  region.xy = static_cast<double>(sums.xy) / n - c.x * c.y;
  region.yy = static_cast<double>(sums.yy) / n - c.y * c.y;
  region.box = cv::Rect(sums.left, sums.top, sums.right - sums.left, sums.bottom - sums.top);
  return region;
}

/// Joins the runs of one level row by row. Only regions that reach the last row are kept, so that what it
/// works on stays small.
class LevelJoiner {
 public:
  LevelJoiner(int level, cv::Size size, const RegionLimits& limits, std::vector<Region>& found)
      : level_(level), size_(size), limits_(limits), found_(found) {}

  bool GivenUp() const { return runs_ > limits_.maxRunsPerLevel; }

  /// `edges`: where runs begin and end, in turn.
  void AddRow(int row, const int* edges, int count) {
    current_.clear();
    size_t above = 0;
    for (int k = 0; k + 1 < count; k += 2) Join(row, edges[k], edges[k + 1], above);
    for (Run& run : current_) run.slot = Root(run.slot);
    for (const Run& run : previous_) Finish(Root(run.slot), row);
    free_.insert(free_.end(), merged_.begin(), merged_.end());
    merged_.clear();
    previous_.swap(current_);
    runs_ += count / 2;
  }

  void End() {
    for (const Run& run : previous_) Finish(run.slot, size_.height);
  }

 private:
  struct Run {
    int from, to, slot;
  };

  int Root(int slot) const {
    while (into_[static_cast<size_t>(slot)] != slot) slot = into_[static_cast<size_t>(slot)];
    return slot;
  }

  int NewSlot() {
    if (free_.empty()) {
      free_.push_back(static_cast<int>(sums_.size()));
      sums_.emplace_back();
      into_.push_back(0);
    }
    const int slot = free_.back();
    free_.pop_back();
    sums_[static_cast<size_t>(slot)] = Sums();
    into_[static_cast<size_t>(slot)] = slot;
    return slot;
  }

  void Join(int row, int from, int to, size_t& above) {
    while (above < previous_.size() && previous_[above].to <= from) ++above;
    int slot = -1;
    for (size_t k = above; k < previous_.size() && previous_[k].from < to; ++k) {
      const int touched = Root(previous_[k].slot);
      if (slot < 0) slot = touched;
      if (slot == touched) continue;
      sums_[static_cast<size_t>(slot)].Add(sums_[static_cast<size_t>(touched)]);
      into_[static_cast<size_t>(touched)] = slot;
      merged_.push_back(touched);
    }
    if (slot < 0) slot = NewSlot();
    sums_[static_cast<size_t>(slot)].AddRun(from, to, row);
    current_.push_back({from, to, slot});
  }

  /// Hands a region over that did not reach `row`.
  void Finish(int slot, int row) {
    Sums& sums = sums_[static_cast<size_t>(slot)];
    if (sums.n == 0 || sums.bottom > row) return;
    const double area = static_cast<double>(sums.n);
    const bool cut =
        sums.left == 0 || sums.top == 0 || sums.right == size_.width || sums.bottom == size_.height;
    if (area >= limits_.minArea && area <= limits_.maxArea && !(cut && limits_.skipCut)) {
      found_.push_back(RegionOf(sums, level_));
    }
    sums.n = 0;
    free_.push_back(slot);
  }

  const int level_;
  const cv::Size size_;
  const RegionLimits& limits_;
  std::vector<Region>& found_;
  std::vector<Run> previous_, current_;
  std::vector<Sums> sums_;
  std::vector<int> into_;  ///< the slot that a slot was merged into, or itself
  std::vector<int> free_, merged_;
  int runs_ = 0;
};

/// Where the runs of a row begin and end, for each level.
class RowEdges {
 public:
  RowEdges(int width, const std::vector<int>& levels)
      : width_(width),
        levels_(static_cast<int>(levels.size())),
        row_(static_cast<size_t>(width) + 24),
        edges_(levels.size(), std::vector<int>(static_cast<size_t>(width) + 2)),
        counts_(levels.size()) {
    for (int value = 0; value < 256; ++value) {
      const auto reached = std::upper_bound(levels.begin(), levels.end(), value) - levels.begin();
      steps_[static_cast<size_t>(value)] = static_cast<unsigned char>(reached);
    }
  }

  void Take(const unsigned char* pixels) {
    // Beyond both ends everything is bright; the padding lets blocks of eight run past the end.
    std::fill(row_.begin(), row_.begin() + 8, static_cast<unsigned char>(levels_));
    std::fill(row_.end() - 16, row_.end(), static_cast<unsigned char>(levels_));
    unsigned char* const q = row_.data() + 8;
    for (int x = 0; x < width_; ++x) q[x] = steps_[pixels[x]];
    std::fill(counts_.begin(), counts_.end(), 0);
    for (int x = 0; x <= width_; x += 8) {
      std::uint64_t here = 0;
      std::uint64_t before = 0;
      std::memcpy(&here, q + x, 8);
      std::memcpy(&before, q + x - 1, 8);
      if (here == before) continue;
      for (int k = x; k < x + 8; ++k) {
        if (q[k] != q[k - 1]) Mark(k, std::min(q[k], q[k - 1]), std::max(q[k], q[k - 1]));
      }
    }
  }

  const int* Of(size_t level) const { return edges_[level].data(); }
  int Count(size_t level) const { return counts_[level]; }

 private:
  void Mark(int x, unsigned low, unsigned high) {
    for (size_t level = low; level < high; ++level) {
      edges_[level][static_cast<size_t>(counts_[level]++)] = x;
    }
  }

  const int width_;
  const int levels_;
  std::vector<unsigned char> row_;
  std::array<unsigned char, 256> steps_ = {};
  std::vector<std::vector<int>> edges_;
  std::vector<int> counts_;
};

}  // namespace

std::vector<Region> FindDarkRegions(const cv::Mat& grey, const std::vector<int>& levels,
                                    const RegionLimits& limits) {
  std::vector<Region> found;
  std::vector<LevelJoiner> joiners;
  for (size_t level = 0; level < levels.size(); ++level) {
    joiners.emplace_back(static_cast<int>(level), grey.size(), limits, found);
  }
  RowEdges edges(grey.cols, levels);
  for (int row = 0; row < grey.rows; ++row) {
    edges.Take(grey.ptr(row));
    for (size_t level = 0; level < levels.size(); ++level) {
      LevelJoiner& joiner = joiners[level];
      if (!joiner.GivenUp()) joiner.AddRow(row, edges.Of(level), edges.Count(level));
    }
  }
  for (LevelJoiner& joiner : joiners) {
    if (!joiner.GivenUp()) joiner.End();
  }
  return found;
}

}  // namespace finder
