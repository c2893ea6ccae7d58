/// Rendered frames for the robust search, with their truth.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace unit {

struct FinderFrame {
  cv::Mat image;
  std::vector<cv::Point2d> centres;  ///< the truth
  double obliqueness = 0.0;          ///< degrees between the line of sight and the paper's normal
};

/// A 640 x 480 frame with all discs inside: any roll, tilt to 75 degrees, |k1| to 0.4, clutter to 200, blur
/// to 2 pixels, noise to sigma 10. The same number gives the same frame.
FinderFrame RandomFinderFrame(int number);

/// A frame without the 4 x 11 grid: clutter, noise, text, chessboards or dots in other patterns, in turn.
cv::Mat RandomForeignFrame(int number);

/// Triangles, squares or pentagons at the points of the 4 x 11 grid, seen from somewhere.
struct CorneredFrame {
  cv::Mat image;
  int corners = 0;
  double least = 0.0;  ///< pixels across one of them, where it is narrowest
};
CorneredFrame RandomCorneredFrame(int number);

/// A flat image of dark discs in staggered rows.
cv::Mat FlatGrid(const cv::Size& grid, double radius = 0.4, double step = 24.0);

/// True when each centre is nearer to its own true one than to all others.
bool InOrder(const std::vector<cv::Point2d>& found, const std::vector<cv::Point2d>& truth);

}  // namespace unit
