/// Draws the pose to reach.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace velmora {

/// What a drawing of the target needs to know.
struct TargetDrawing {
  const std::vector<cv::Point2f>& circles;  ///< on the sheet, row by row
  const std::vector<cv::Point2f>& outline;  ///< on the sheet: four corners, then the ends of the cut
  cv::Mat homography;                       ///< sheet to frame
  int columns;                              ///< circles per row
  float scale;                              ///< of the model to the frame
  float score;                              ///< of the last comparison
  cv::Size frameSize;                       ///< the assistant's
  double age;                               ///< seconds since the assistant's creation: the pulse's clock
};

/// Room for the second layer of a drawing, and where its paper is, kept for the next one.
struct DrawingLayers {
  cv::Mat sheet;
  std::vector<cv::Point> polygon;  ///< the paper that the spans are of, and its frame's size
  cv::Size frame;
  std::vector<cv::Range> spans;  ///< columns of the paper in each row of the frame
};

/// Draws the sheet in its target pose, pulsing, and the score bar, in place.
void DrawTarget(const TargetDrawing& drawing, cv::Mat& frame, DrawingLayers& layers);

}  // namespace velmora
