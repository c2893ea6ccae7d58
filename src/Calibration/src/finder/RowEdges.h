/// Where the dark runs of an image's rows begin and end, at several grey levels at once.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <vector>

namespace velmora::finder {

/// The runs of one row after the other. For one thread.
class RowEdges {
 public:
  /// For rows of `width` columns at most. The levels ascend; a pixel is dark at those above its value.
  RowEdges(int width, const std::vector<int>& levels);

  /// Takes these columns of a row; beyond them everything counts as bright.
  void Take(const unsigned char* pixels, const cv::Range& columns);

  /// Where runs of the last row begin and end at a level, in turn.
  const int* Of(size_t level) const { return edges_.data() + level * stride_; }
  int Count(size_t level) const { return static_cast<int>(ends_[level] - Of(level)); }

 private:
  void MarkChanges(const cv::Range& columns);

  const int levels_;
  std::vector<unsigned char> row_;  ///< how many levels each pixel reaches
  /// Where the number changes, the one of a pixel and the one before that is less, and the other.
  std::vector<unsigned char> lower_, upper_;
  std::array<unsigned char, 256> steps_ = {};  ///< of a value, how many levels it reaches
  std::vector<int> changes_;                   ///< the columns of a row where the number changes
  const size_t stride_;
  std::vector<int> edges_;  ///< level after level, and room for some more
  std::vector<int*> ends_;  ///< of each level's edges so far
};

/// The number of dark runs of a row at one level, in less time.
int CountRuns(const unsigned char* pixels, int width, int level);

}  // namespace velmora::finder
