/// Where in a camera's image views were kept, and where none was.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "guided/ImageView.h"

namespace guided {

/// The image in cells of nearly square shape: 8-bit, 255 where views covered less than a quarter of the cell.
/// Empty without views.
cv::Mat EmptyCells(const std::vector<std::vector<cv::Point2d>>& kept, const cv::Size& image);

/// Tints what the kept views covered, with a dot for each of their circles, and hatches the cells that are
/// still empty; so thinly that the sheet can be seen in them.
void DrawCoverage(const std::vector<std::vector<cv::Point2d>>& kept, const cv::Size& image,
                  const ImageView& view, cv::Mat& part);

}  // namespace guided
