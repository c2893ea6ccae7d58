/// Images of the review after a computation: a snapshot with the grid reprojected through the model.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace velmora {

/// One snapshot of a review.
struct ReviewView {
  cv::Mat snapshot;
  cv::Size blankSize;  ///< shown in place of a snapshot without an image
  int number = 0;      ///< from 1
  int total = 0;
  cv::Size patternSize;
  std::vector<double> weights;  ///< 0 for points that were not seen, which are not drawn; empty: all were
};

/// What a computation says of one snapshot.
struct ReviewResult {
  std::vector<cv::Point2d> projected;  ///< where the result has the points; none: no grid is drawn
  double error = 0.0;                  ///< of the view, pixels
  float rms = 0.0F;                    ///< of all views, pixels
};

/// The image to show. Without a result it holds no error figure and no grid.
cv::Mat DrawReview(const ReviewView& view, const ReviewResult* result);

/// The texts in drawing order.
std::vector<std::string> ReviewTexts(const ReviewView& view, const ReviewResult* result);

}  // namespace velmora
