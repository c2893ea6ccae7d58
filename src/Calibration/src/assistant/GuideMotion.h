/// How the grid moved in the last frames.
#pragma once

#include <deque>
#include <opencv2/core.hpp>
#include <vector>

namespace velmora {

/// Remembers where the grid was for a while.
class GuideMotion {
 public:
  explicit GuideMotion(const cv::Size& frame)
      : side_(frame.width > frame.height ? frame.width : frame.height) {}

  /// Frames whose times go back are of another sequence: those before are forgotten.
  void Add(double time, const std::vector<cv::Point2d>& centres);
  void Forget() { past_.clear(); }

  /// Where the grid was last; null when that is long ago.
  const std::vector<cv::Point2d>* Last(double time) const;
  /// Whether the grid moves at that time: since the frame before, faster than a hand that holds still.
  bool IsMoving(double time, const std::vector<cv::Point2d>& centres) const;
  /// Whether it has been where it is for long enough.
  bool IsStill(double time, const std::vector<cv::Point2d>& centres) const;

 private:
  struct Moment {
    double time;
    std::vector<cv::Point2d> centres;
  };

  double side_;  ///< the frame's longer one, pixels
  std::deque<Moment> past_;
};

}  // namespace velmora
