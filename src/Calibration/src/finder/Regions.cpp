/// Dark connected regions of an image, at several grey levels in one pass over it.
#include "finder/Regions.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "finder/RowEdges.h"

namespace velmora::finder {

namespace {

/// The sums of the squares of all numbers below each number.
using SquareSums = std::vector<std::int64_t>;

SquareSums SquareSumsTo(int last) {
  SquareSums sums(static_cast<size_t>(last) + 1);
  for (size_t k = 1; k < sums.size(); ++k) {
    const auto before = static_cast<std::int64_t>(k) - 1;
    sums[k] = sums[k - 1] + before * before;
  }
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

/// The runs of a row at one level.
struct RowRuns {
  int row = 0;
  const int* edges = nullptr;  ///< where they begin and end, in turn
  int count = 0;               ///< of edges
  cv::Range whole;             ///< what is not within these columns is cut
};

/// Where the regions of all levels go.
struct Findings {
  const RegionLimits& limits;
  const SquareSums squareSums;
  std::vector<Region> regions;
  SmallRegions small;

  bool IsSpeck(double area) const { return area < limits.minArea; }
  void CountSpeck(double area) {
    if (area >= small.leastArea && area <= limits.maxArea) ++small.count;
  }

  void Add(const Sums& sums, int level) {
    const double area = static_cast<double>(sums.n);
    if (sums.dropped || area > limits.maxArea) return;
    if (IsSpeck(area)) return CountSpeck(area);
    const Region region = RegionOf(sums, level);
    if (limits.wanted == nullptr || limits.wanted(region)) regions.push_back(region);
  }
};

/// Joins the runs of one level row by row. Only regions that reach the last row are kept, so that what it
/// works on stays small.
class LevelJoiner {
 public:
  LevelJoiner(int level, Findings& found) : level_(level), found_(found) {
    const std::vector<int>& ends = found.limits.endOfLevel;
    if (!ends.empty()) end_ = ends[static_cast<size_t>(level)];
  }

  bool IsGivenUpAt(int row) const { return runs_ > found_.limits.maxRunsPerLevel || row >= end_; }

  void AddRow(const RowRuns& runs) {
    if (runs.count == 0 && previous_.empty()) return;
    current_.resize(static_cast<size_t>(runs.count / 2));
    Run* above = previous_.data();  // the one that may be touched next
    Run* const end = above + previous_.size();
    bool continued = false;  // whether it is touched
    const int* edge = runs.edges;
    for (Run& run : current_) {
      run.from = *edge++;
      run.to = *edge++;
      for (; above != end && above->to <= run.from; ++above, continued = false) {
        if (!continued) Leave(*above);
      }
      const bool cut = run.from < runs.whole.start || run.to > runs.whole.end;
      if (above == end || above->from >= run.to) {
        run.slot = cut ? ALONE_AND_CUT : ALONE;
        continue;
      }
      continued = true;
      run.slot = SlotOf(*above, runs.row - 1);
      // The last one that it touches may reach the next run too.
      for (; above + 1 != end && above[1].from < run.to; ++above)
        Merge(run.slot, SlotOf(above[1], runs.row - 1));
      Sums& sums = sums_[static_cast<size_t>(run.slot)];
      sums.dropped = sums.dropped || cut;
      sums.bottom = runs.row + 1;
      if (!sums.dropped) sums.AddRun(run.from, run.to, runs.row, found_.squareSums);
    }
    for (; above != end; ++above, continued = false) {
      if (!continued) Leave(*above);
    }
    for (const Run& run : left_) Finish(run, runs.row);
    left_.clear();
    FreeMerged();
    previous_.swap(current_);
    runs_ += runs.count / 2;
  }

  void End(int bottom) {
    for (const Run& run : previous_) Finish(run, bottom);
  }

 private:
  /// `slot` is that of the sums of the run's region. A region of one run has none, as most specks of noise
  /// never do.
  struct Run {
    int from, to, slot;
  };
  static constexpr int ALONE = -1;
  static constexpr int ALONE_AND_CUT = -2;

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

  /// For a run that none of the next row continues; its region may go on elsewhere. Specks of noise end here.
  void Leave(const Run& run) {
    if (run.slot >= 0 || !found_.IsSpeck(run.to - run.from)) {
      left_.push_back(run);
    } else if (run.slot == ALONE) {
      found_.CountSpeck(run.to - run.from);
    }
  }

  Sums SumsOf(const Run& alone, int row) const {
    Sums sums(alone.from, alone.to, row);
    sums.bottom = row + 1;
    sums.dropped = alone.slot == ALONE_AND_CUT;
    if (!sums.dropped) sums.AddRun(alone.from, alone.to, row, found_.squareSums);
    return sums;
  }

  /// The slot of the region that a run belongs to, which gets one if it has none.
  int SlotOf(Run& run, int row) {
    if (run.slot < 0) run.slot = NewSlot(SumsOf(run, row));
    return Root(run.slot);
  }

  void Merge(int slot, int touched) {
    if (touched == slot) return;
    sums_[static_cast<size_t>(slot)].Add(sums_[static_cast<size_t>(touched)]);
    into_[static_cast<size_t>(touched)] = slot;
    merged_.push_back(touched);
  }

  /// What was merged into others in the last row is at nobody's disposal until all of its runs know.
  void FreeMerged() {
    if (merged_.empty()) return;
    for (Run& run : current_) {
      if (run.slot >= 0) run.slot = Root(run.slot);
    }
    free_.insert(free_.end(), merged_.begin(), merged_.end());
    merged_.clear();
  }

  /// Hands the region of a run of the row above over if it did not reach `row`.
  void Finish(const Run& run, int row) {
    if (run.slot < 0) {
      if (run.slot == ALONE) found_.Add(SumsOf(run, row - 1), level_);
      return;
    }
    const int slot = Root(run.slot);
    Sums& sums = sums_[static_cast<size_t>(slot)];
    if (sums.bottom > row || sums.bottom == FINISHED) return;
    found_.Add(sums, level_);
    sums.bottom = FINISHED;
    free_.push_back(slot);
  }

  static constexpr int FINISHED = -1;

  const int level_;
  Findings& found_;
  int end_ = 1 << 30;  ///< the row before which the level is given up
  std::vector<Run> previous_, current_;
  std::vector<Run> left_;  ///< the runs above that none continues
  std::vector<Sums> sums_;
  std::vector<int> into_;  ///< the slot that a slot was merged into, or itself
  std::vector<int> free_, merged_;
  int runs_ = 0;
};

/// The columns of a row of the part whose pixels have all their neighbours in the part too.
cv::Range WholeColumns(const ImagePart& part, size_t row) {
  if (row == 0 || row + 1 == part.rows.size()) return {std::numeric_limits<int>::max(), 0};
  cv::Range whole(part.rows[row].start + 1, part.rows[row].end - 1);
  for (const size_t beside : {row - 1, row + 1}) {
    whole.start = std::max(whole.start, part.rows[beside].start);
    whole.end = std::min(whole.end, part.rows[beside].end);
  }
  return whole;
}

}  // namespace

ImagePart ImagePart::Whole(const cv::Size& size) {
  ImagePart part;
  if (size.width > 0) part.rows.assign(static_cast<size_t>(size.height), cv::Range(0, size.width));
  return part;
}

std::vector<Region> FindDarkRegions(const cv::Mat& grey, const std::vector<int>& levels,
                                    const RegionLimits& limits) {
  return FindDarkRegions(grey, ImagePart::Whole(grey.size()), levels, limits);
}

std::vector<Region> FindDarkRegions(const cv::Mat& grey, const ImagePart& part,
                                    const std::vector<int>& levels, const RegionLimits& limits,
                                    SmallRegions* small) {
  Findings found{limits, SquareSumsTo(grey.cols), {}, {}};
  found.small.leastArea = small != nullptr ? small->leastArea : limits.minArea;
  found.regions.reserve(1024);
  std::vector<LevelJoiner> joiners;
  joiners.reserve(levels.size());
  for (size_t level = 0; level < levels.size(); ++level) {
    joiners.emplace_back(static_cast<int>(level), found);
  }
  RowEdges edges(grey.cols, levels);
  RowRuns runs;
  for (size_t k = 0; k < part.rows.size(); ++k) {
    runs.row = part.top + static_cast<int>(k);
    runs.whole = limits.skipCut ? WholeColumns(part, k) : cv::Range::all();
    edges.Take(grey.ptr(runs.row), part.rows[k]);
    for (size_t level = 0; level < levels.size(); ++level) {
      LevelJoiner& joiner = joiners[level];
      if (joiner.IsGivenUpAt(runs.row)) continue;
      runs.edges = edges.Of(level);
      runs.count = edges.Count(level);
      joiner.AddRow(runs);
    }
  }
  for (LevelJoiner& joiner : joiners) {
    if (!joiner.IsGivenUpAt(part.Bottom() - 1)) joiner.End(part.Bottom());
  }
  if (small != nullptr) small->count = found.small.count;
  return std::move(found.regions);
}

}  // namespace velmora::finder
