/// How blurred the discs of a grid are in an image.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace velmora {

/// Widths of the discs' edges, as standard deviations of the blur that makes them: pixels. A sharp image has
/// about 0.6, which is the pixels' own.
struct EdgeBlur {
  double least = 0.0;   ///< across the edges of the direction in which they are sharpest
  double most = 0.0;    ///< across those in which they are widest
  double radius = 0.0;  ///< of the discs, the median
  /// What a movement adds along its direction; the same blur all around adds nothing.
  double OneSided() const;
};

/// Measures the edges of the discs at these centres (row by row; `weights` as of GuideFrame) in an image of 8
/// bits, grey or BGR. False when there is too little contrast to tell.
bool MeasureEdgeBlur(const cv::Mat& image, const cv::Size& grid, const std::vector<cv::Point2d>& centres,
                     const std::vector<double>& weights, EdgeBlur& blur);

}  // namespace velmora
