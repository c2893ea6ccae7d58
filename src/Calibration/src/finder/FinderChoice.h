/// Which search a calibrator uses, and what the last one said.
#pragma once

#include <array>
#include <atomic>
#include <mutex>
#include <opencv2/core.hpp>
#include <vector>

#include "finder/RobustFinder.h"

namespace velmora {

/// What a search found besides the centres of a whole grid.
struct GridDetails {
  std::vector<double> radii;  ///< of the discs of the whole grid, pixels; empty without one, and of a default
                              ///< search
  PartialGrid part;           ///< what is seen of a grid that is not found whole
};

/// Switchable at any time, from any thread; a search under way ends as it began.
class FinderChoice {
 public:
  /// False for a number that is no finder's; nothing changes then.
  bool Set(int finder);
  int Get() const { return finder_; }

  /// Whether the robust search may answer callers that take parts of grids with some. False at first.
  void SetPartial(bool partial) { partial_ = partial; }
  bool GetPartial() const { return partial_; }

  /// The chosen search. The robust one leaves sizes that it does not take to the default one.
  bool Find(const cv::Mat& frame, const cv::Size& grid, std::vector<cv::Point2d>& points);

  /// Find for frames that follow each other: the robust search looks first where the last frame had the grid
  /// (SearchGridRobust with a tracker). It also gives the details. A part is not found unless SetPartial
  /// allows it, and the robust search is chosen and takes the size. Neither result nor points nor fault
  /// depend on parts.
  bool Find(const cv::Mat& frame, const cv::Size& grid, std::vector<cv::Point2d>& points,
            GridDetails& details);

  /// Such a Find for two images at the same time, with a tracker for each; results and exceptions are as if
  /// the left one was searched first. True when both hold the grid.
  bool FindBoth(const cv::Mat& left, const cv::Mat& right, const cv::Size& grid,
                std::vector<cv::Point2d>& leftPoints, std::vector<cv::Point2d>& rightPoints,
                GridDetails& leftDetails, GridDetails& rightDetails);

  /// Why the last search that ended found nothing; None when it found the grid, and after a default one,
  /// which gives no reasons.
  GridFault Fault() const { return fault_; }

 private:
  /// What a search gives and takes beside the points; null for who wants none.
  struct Sequel {
    GridTracker* tracker = nullptr;
    GridDetails* details = nullptr;
    bool parts = false;  ///< whether the details may hold one
  };

  static GridFault Search(int finder, const cv::Mat& frame, const cv::Size& grid,
                          std::vector<cv::Point2d>& points, bool& found, const Sequel& sequel);

  std::array<GridTracker, 2> Trackers() const;
  void Keep(const std::array<GridTracker, 2>& trackers);

  std::atomic<int> finder_{0};
  std::atomic<bool> partial_{false};
  std::atomic<GridFault> fault_{GridFault::None};
  mutable std::mutex lock_;  ///< of the trackers, which searches work on copies of
  std::array<GridTracker, 2> trackers_;
};

}  // namespace velmora
