/// The sheet in a camera's image: where it is to be, and what was found of it.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "guided/ImageView.h"

namespace guided {

/// The printed sheet as a camera shows it, pixels of the image.
struct SheetShape {
  std::vector<cv::Point2d> outline;             ///< of the paper, with the corner that is cut off
  std::vector<std::vector<cv::Point2d>> discs;  ///< their rims
};

/// The shape that goes with the centres of all circles, also where the lens bends it. Empty when these are
/// not as many as the grid has, are not finite, or lie on a line.
SheetShape ShapeOfSheet(const std::vector<cv::Point2d>& centres, const cv::Size& grid);

/// Draws the target into the part of the picture that is the view's place: bold, and its first circle filled
/// and marked with a 1; in another colour once it is reached. Centres that are no whole grid become circles
/// only.
void DrawTarget(const std::vector<cv::Point2d>& centres, const cv::Size& grid, const ImageView& view,
                bool reached, cv::Mat& part);

/// Draws what was found, lightly. Weights as in CameraPicture.
void DrawFound(const std::vector<cv::Point2d>& centres, const std::vector<double>& weights,
               const ImageView& view, cv::Mat& part);

/// Marks the first circle of what was found with a 1, if it was observed.
void MarkFirst(const std::vector<cv::Point2d>& centres, const std::vector<double>& weights,
               const ImageView& view, cv::Mat& part);

}  // namespace guided
