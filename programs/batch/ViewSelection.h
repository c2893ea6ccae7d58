/// Chooses few views that tell as much as many.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace batch {

/// The indexes, ascending, of at most `count` views (each the centres of a whole grid, row by row) so that
/// the grid's positions in the frame, distances and tilts are spread: the time of a computation grows with
/// the cube of the views, and near copies of a view add nothing. Deterministic.
std::vector<size_t> SelectSpreadViews(const std::vector<std::vector<cv::Point2d>>& views,
                                      const cv::Size& grid, const cv::Size& frame, size_t count);

/// Selects views of several cameras: for each camera and each view its centres, none where it does not see
/// the grid. Views are as far apart as their images are, all cameras taken together, and as the cameras
/// differ that see them. Unless `count` is too small for that, views that link cameras which no others do are
/// always among the chosen ones, and five views of each camera that has five or more.
std::vector<size_t> SelectSpreadViews(const std::vector<std::vector<std::vector<cv::Point2d>>>& cameras,
                                      const cv::Size& grid, const std::vector<cv::Size>& frames,
                                      size_t count);

}  // namespace batch
