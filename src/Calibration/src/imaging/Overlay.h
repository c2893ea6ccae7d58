/// The information overlay of the live image.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace velmora {

/// What the overlay tells.
struct OverlayState {
  int snapshots = 0;
  int goal = -1;  ///< poses of the assistant; shown when greater than 5
  cv::Size frameSize;
  int status = 0;        ///< one of the STATUS_ codes
  double elapsed = 0.0;  ///< seconds of the last detection
};

struct OverlayText {
  std::string text;
  cv::Point origin;
  cv::Scalar colour;  ///< BGR
};

/// The texts in drawing order.
std::vector<OverlayText> OverlayTexts(const OverlayState& state);

/// Draws the texts in the top-left corner.
void DrawOverlay(const OverlayState& state, cv::Mat& frame);

/// Draws found or projected centres as a chain in the order of the grid.
void DrawGrid(const std::vector<cv::Point2d>& points, const cv::Size& patternSize, cv::Mat& frame);

/// The same of those with a weight above zero alone. Weights are of all points; none: all are drawn.
void DrawSeenGrid(const std::vector<cv::Point2d>& points, const std::vector<double>& weights,
                  const cv::Size& patternSize, cv::Mat& frame);

}  // namespace velmora
