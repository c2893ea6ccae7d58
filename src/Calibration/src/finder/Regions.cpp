/// Dark connected regions of an image, at several grey levels in one pass over it.
#include "finder/Regions.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace velmora::finder {

namespace {

/// The sums of the squares of all numbers below each number.
using SquareSums = std::vector<std::int64_t>;

SquareSums SquareSumsTo(int last) {
  SquareSums sums = {0};
  for (std::int64_t k = 0; k < last; ++k) sums.push_back(sums.back() + k * k);
  return sums;
}

/// Sums over the pixels of a region that still grows.
struct Sums {
  std::int64_t n = 0, x = 0, y = 0, xx = 0, xy = 0, yy = 0;
  int left = 0, right = 0, top = 0, bottom = 0;
  bool dropped = false;  ///< nobody wants the region, nor the sums

  Sums() = default;
  Sums(int from, int to, int row) : left(from), right(to), top(row) {}

  void AddRun(int from, int to, int row, const SquareSums& squares) {
    const std::int64_t count = to - from;
    const std::int64_t sum = count * (from + to - 1) / 2;
    left = std::min(left, from);
    right = std::max(right, to);
    bottom = row + 1;
    n += count;
    x += sum;
    y += count * row;
    xx += squares[static_cast<size_t>(to)] - squares[static_cast<size_t>(from)];
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
    dropped = dropped || other.dropped;
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
  LevelJoiner(int level, cv::Size size, const RegionLimits& limits, const SquareSums& squares,
              std::vector<Region>& found)
      : level_(level), size_(size), limits_(limits), squares_(squares), found_(found) {}

  bool GivenUp() const { return runs_ > limits_.maxRunsPerLevel; }

  /// `edges`: where runs begin and end, in turn.
  void AddRow(int row, const int* edges, int count) {
    current_.clear();
    size_t above = 0;
    for (int k = 0; k + 1 < count; k += 2) Join(row, edges[k], edges[k + 1], above);
    for (const Run& run : previous_) {
      if (!run.continued) Finish(Root(run.slot), row);
    }
    if (!merged_.empty()) {
      for (Run& run : current_) run.slot = Root(run.slot);
      free_.insert(free_.end(), merged_.begin(), merged_.end());
      merged_.clear();
    }
    previous_.swap(current_);
    runs_ += count / 2;
  }

  void End() {
    for (const Run& run : previous_) Finish(run.slot, size_.height);
  }

 private:
  struct Run {
    int from, to, slot;
    bool continued;  ///< by one of the next row
  };

  int Root(int slot) const {
    while (into_[static_cast<size_t>(slot)] != slot) slot = into_[static_cast<size_t>(slot)];
    return slot;
  }

  int NewSlot(const Sums& sums) {
    if (free_.empty()) {
      free_.push_back(static_cast<int>(sums_.size()));
      sums_.emplace_back();
      into_.push_back(0);
    }
    const int slot = free_.back();
    free_.pop_back();
    sums_[static_cast<size_t>(slot)] = sums;
    into_[static_cast<size_t>(slot)] = slot;
    return slot;
  }

  void Join(int row, int from, int to, size_t& above) {
    while (above < previous_.size() && previous_[above].to <= from) ++above;
    int slot = -1;
    for (size_t k = above; k < previous_.size() && previous_[k].from < to; ++k) {
      previous_[k].continued = true;
      const int touched = Root(previous_[k].slot);
      if (slot < 0) slot = touched;
      if (slot != touched) Merge(slot, touched);
    }
    if (slot < 0) slot = NewSlot({from, to, row});
    Sums& sums = sums_[static_cast<size_t>(slot)];
    if (limits_.skipCut && (from == 0 || row == 0 || to == size_.width)) sums.dropped = true;
    sums.bottom = row + 1;
    if (!sums.dropped) sums.AddRun(from, to, row, squares_);
    current_.push_back({from, to, slot, false});
  }

  void Merge(int slot, int touched) {
    sums_[static_cast<size_t>(slot)].Add(sums_[static_cast<size_t>(touched)]);
    into_[static_cast<size_t>(touched)] = slot;
    merged_.push_back(touched);
  }

  /// Hands a region over that did not reach `row`.
  void Finish(int slot, int row) {
    Sums& sums = sums_[static_cast<size_t>(slot)];
    if (sums.bottom > row || sums.bottom == FINISHED) return;
    const double area = static_cast<double>(sums.n);
    const bool cut = sums.dropped || (limits_.skipCut && sums.bottom == size_.height);
    if (area >= limits_.minArea && area <= limits_.maxArea && !cut) found_.push_back(RegionOf(sums, level_));
    sums.bottom = FINISHED;
    free_.push_back(slot);
  }

  static constexpr int FINISHED = -1;

  const int level_;
  const cv::Size size_;
  const RegionLimits& limits_;
  const SquareSums& squares_;
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
        stride_(static_cast<size_t>(width) + 2),
        edges_(levels.size() * stride_),
        ends_(levels.size()) {
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
    for (size_t level = 0; level < ends_.size(); ++level) ends_[level] = edges_.data() + level * stride_;
    for (int x = 0; x <= width_; x += 8) {
      std::uint64_t here = 0;
      std::uint64_t before = 0;
      std::memcpy(&here, q + x, 8);
      std::memcpy(&before, q + x - 1, 8);
      // The lowest byte is the leftmost pixel.
      for (std::uint64_t changes = here ^ before; changes != 0;) {
        const int byte = __builtin_ctzll(changes) / 8;
        changes &= ~(std::uint64_t{0xFF} << (8 * byte));
        const unsigned char* const at = q + x + byte;
        Mark(x + byte, std::min(at[0], at[-1]), std::max(at[0], at[-1]));
      }
    }
  }

  const int* Of(size_t level) const { return edges_.data() + level * stride_; }
  int Count(size_t level) const { return static_cast<int>(ends_[level] - Of(level)); }

 private:
  void Mark(int x, unsigned low, unsigned high) {
    for (size_t level = low; level < high; ++level) *ends_[level]++ = x;
  }

  const int width_;
  const int levels_;
  std::vector<unsigned char> row_;
  std::array<unsigned char, 256> steps_ = {};
  const size_t stride_;
  std::vector<int> edges_;  ///< level after level
  std::vector<int*> ends_;  ///< of each level's edges so far
};

}  // namespace

std::vector<Region> FindDarkRegions(const cv::Mat& grey, const std::vector<int>& levels,
                                    const RegionLimits& limits) {
  std::vector<Region> found;
  const SquareSums squares = SquareSumsTo(grey.cols);
  std::vector<LevelJoiner> joiners;
  for (size_t level = 0; level < levels.size(); ++level) {
    joiners.emplace_back(static_cast<int>(level), grey.size(), limits, squares, found);
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

}  // namespace velmora::finder
