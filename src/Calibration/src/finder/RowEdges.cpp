/// Where the dark runs of an image's rows begin and end, at several grey levels at once.
#include "finder/RowEdges.h"

#include <algorithm>
#include <opencv2/core/hal/intrin.hpp>

namespace velmora::finder {

namespace {

/// The number of pixels that are compared at once.
constexpr int BLOCK = 16;
/// Most edges cross this many levels or less.
constexpr unsigned FEW = 4;

/// The number of pixels among which those of a set are looked up at once.
constexpr int LOOKED_UP = 8;

/// Of each set of pixels where they are, and how many they are.
struct PlacesOfSet {
  std::array<std::array<int, LOOKED_UP>, 1U << LOOKED_UP> places = {};
  std::array<int, 1U << LOOKED_UP> counts = {};

  PlacesOfSet() {
    for (size_t set = 0; set < places.size(); ++set) {
      for (int place = 0; place < LOOKED_UP; ++place) {
        if ((set >> place & 1U) != 0) places[set][static_cast<size_t>(counts[set]++)] = place;
      }
    }
  }
};

}  // namespace

RowEdges::RowEdges(int width, const std::vector<int>& levels)
    : levels_(static_cast<int>(levels.size())),
      // Blocks read one pixel before the first one, and run past the last one.
      row_(static_cast<size_t>(width) + 3 * BLOCK),
      lower_(row_.size()),
      upper_(row_.size()),
      changes_(static_cast<size_t>(width) + 2 * BLOCK),
      stride_(static_cast<size_t>(width) + 2),
      edges_((levels.size() + FEW) * stride_),
      ends_(levels.size() + FEW) {
  for (int value = 0; value < 256; ++value) {
    const auto reached = std::upper_bound(levels.begin(), levels.end(), value) - levels.begin();
    steps_[static_cast<size_t>(value)] = static_cast<unsigned char>(reached);
  }
}

void RowEdges::Take(const unsigned char* pixels, const cv::Range& columns) {
  unsigned char* const q = row_.data() + BLOCK;
  const auto bright = static_cast<unsigned char>(levels_);
  q[columns.start - 1] = bright;
  for (int x = columns.start; x < columns.end; ++x) q[x] = steps_[pixels[x]];
  std::fill_n(q + columns.end, BLOCK, bright);
  for (size_t level = 0; level < ends_.size(); ++level) ends_[level] = edges_.data() + level * stride_;
  MarkChanges(columns);
}

/// Within a block, writes without asking whether there is something to write, and which of two pixels is the
/// brighter one: what noise changes cannot be foreseen.
void RowEdges::MarkChanges(const cv::Range& columns) {
  static const PlacesOfSet PLACES;
  const unsigned char* const q = row_.data() + BLOCK;
  int* change = changes_.data();
  for (int x = columns.start; x <= columns.end; x += BLOCK) {
    const cv::v_uint8x16 here = cv::v_load(q + x);
    const cv::v_uint8x16 before = cv::v_load(q + x - 1);
    auto left = static_cast<unsigned>(cv::v_signmask(here != before));
    if (left == 0) continue;
    cv::v_store(lower_.data() + x, cv::v_min(here, before));
    cv::v_store(upper_.data() + x, cv::v_max(here, before));
    for (int from = x; left != 0; left >>= LOOKED_UP, from += LOOKED_UP) {
      const size_t set = left % PLACES.places.size();
      for (size_t k = 0; k < LOOKED_UP; ++k) change[k] = from + PLACES.places[set][k];
      change += PLACES.counts[set];
    }
  }
  int** const ends = ends_.data();
  for (const int* at = changes_.data(); at != change; ++at) {
    const int x = *at;
    const unsigned low = lower_[static_cast<size_t>(x)];
    const unsigned high = upper_[static_cast<size_t>(x)];
    // What is written beyond the last level of these is overwritten, or never read.
    for (unsigned level = low; level < low + FEW; ++level) {
      *ends[level] = x;
      ends[level] += level < high ? 1 : 0;
    }
    for (unsigned level = low + FEW; level < high; ++level) *ends[level]++ = x;
  }
}

int CountRuns(const unsigned char* pixels, int width, int level) {
  // Of so few pixels that a byte can count the runs: compilers count sixteen at a time then.
  constexpr int CHUNK = 240;
  if (width == 0 || level <= 0) return 0;
  const auto last = static_cast<unsigned char>(std::min(level, 256) - 1);
  int runs = pixels[0] <= last ? 1 : 0;
  for (int from = 1; from < width; from += CHUNK) {
    const int to = std::min(width, from + CHUNK);
    unsigned char begun = 0;
    for (int x = from; x < to; ++x) {
      const bool begins = (pixels[x] <= last) & (pixels[x - 1] > last);
      begun = static_cast<unsigned char>(begun + (begins ? 1 : 0));
    }
    runs += begun;
  }
  return runs;
}

}  // namespace velmora::finder
