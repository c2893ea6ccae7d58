/// Which search a calibrator uses, and what the last one said.
#pragma once

#include <atomic>
#include <opencv2/core.hpp>
#include <vector>

#include "finder/RobustFinder.h"

namespace velmora {

/// Switchable at any time, from any thread; a search under way ends as it began.
class FinderChoice {
 public:
  /// False for a number that is no finder's; nothing changes then.
  bool Set(int finder);
  int Get() const { return finder_; }

  /// The chosen search. The robust one leaves sizes that it does not take to the default one.
  bool Find(const cv::Mat& frame, const cv::Size& grid, std::vector<cv::Point2d>& points);
  /// Searches two images at the same time; results and exceptions are as if the left one was searched first.
  /// True when both hold the grid.
  bool FindBoth(const cv::Mat& left, const cv::Mat& right, const cv::Size& grid,
                std::vector<cv::Point2d>& leftPoints, std::vector<cv::Point2d>& rightPoints);

  /// Why the last search that ended found nothing; None when it found the grid, and after a default one,
  /// which gives no reasons.
  GridFault Fault() const { return fault_; }

 private:
  std::atomic<int> finder_{0};
  std::atomic<GridFault> fault_{GridFault::None};
};

}  // namespace velmora
