/// The window of a disc whose centre is looked for: it moves, and most of its pixels stay the same.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <opencv2/core.hpp>

#include "finder/DiscWindow.h"

namespace velmora::finder {

/// Counts pixels that come into the window or leave it, and no others. The image must outlive it.
class MovedWindow {
 public:
  explicit MovedWindow(const cv::Mat& grey) : grey_(grey) {}

  /// Moves to a window. False when paper and ink cannot be told apart there.
  bool MoveTo(const DiscWindow& window);

  /// Of the window that it was moved to last: the middle of the darkness, and the area that has as much of it
  /// when it is all ink, pixels. False without any. To be asked for once after a move.
  bool FindMiddle(cv::Point2d& middle, double& area);

 private:
  /// Sums over pixels; whole numbers, which do not depend on the order.
  struct Moments {
    std::int64_t weight = 0, x = 0, y = 0;
  };

  void CountPixels();
  void CountChanges();
  /// How many pixels of the window have a value.
  int Count(size_t value) const { return paper_.Of(value) + hole_.Of(value); }
  int Darkest() const { return std::min(paper_.Darkest(), hole_.Darkest()); }
  /// Finds shares and weights from a value on, up to those that are known.
  void WeighFrom(int darkest);
  void AddMoments(const Span& span, std::int64_t sign);

  const cv::Mat& grey_;
  WindowSpans spans_, before_;
  Histogram paper_, hole_, core_;  ///< `paper_` has the pixels that are in no hole
  Tones tones_;
  bool weighed_ = false;
  bool unasked_ = false;            ///< since the last move
  Tones weighedTones_;              ///< those of the weights and moments
  int known_ = 0;                   ///< the least value with a known share and weight
  std::array<double, 256> shares_;  ///< of ink in a value
  std::array<int, 256> weights_;
  Moments moments_;
};

}  // namespace velmora::finder
