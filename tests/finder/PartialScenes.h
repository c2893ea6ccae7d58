/// Rendered frames that show a part of the grid, with their truth.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace unit {

struct PartialFrame {
  cv::Mat image;
  std::vector<cv::Point2d> centres;  ///< the truth, of all discs
  std::vector<cv::Point2d> middles;  ///< of the discs' images, which are not the images of their middles
  std::vector<bool> whole;           ///< which discs are seen wholly, pixels from the border
  std::vector<bool> cut;             ///< which discs the border cuts, or are beyond it
  /// Which discs are seen says by itself which discs of the grid they are: no other way of laying the pattern
  /// has them all and lacks only what is cut or hidden.
  bool telling = false;

  int Whole() const;
};

/// What cuts or hides discs.
enum class Lack {
  OneRow,     ///< of an end, beyond the border
  TwoRows,    ///< of an end, beyond the border
  OneColumn,  ///< of a side, staggered, beyond the border
  Corner,     ///< 1 to 11 discs, wherever the border runs
  Bite,       ///< 1 to 11 discs, behind something within the frame
  Nothing     ///< the whole grid, to compare with
};
std::string NameOf(Lack lack);

/// A 640 x 480 frame with three quarters of the discs at least, and less than all unless nothing lacks: any
/// roll for corners and bites, else rows along the border; tilt to 50 degrees, |k1| to 0.25, clutter, blur
/// to 1.5 pixels, noise to sigma 6. The same number gives the same frame.
PartialFrame RandomPartialFrame(Lack lack, int number);

/// A sheet of another size in such a frame: with room for another row and column all around, or cut by the
/// border.
struct OtherSheet {
  cv::Mat image;
  std::vector<cv::Point> gridIndices;  ///< of its discs, steps
  std::vector<cv::Point2d> middles;    ///< of their images
};
OtherSheet RandomOtherSheet(const cv::Size& grid, bool cut, int number);

}  // namespace unit
