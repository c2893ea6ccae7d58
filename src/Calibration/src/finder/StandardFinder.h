/// Searches for the asymmetric circles grid in a frame.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace velmora {

/// The default search: OpenCV's blob detector with its default parameters, then its circles-grid search. Dark
/// discs on a light ground. `frame` is of 8 bits and 1, 3 (BGR) or 4 channels. `points` receives the centres
/// row by row; when nothing is found, whatever the search left. Thread-safe.
bool FindGridStandard(const cv::Mat& frame, const cv::Size& patternSize, std::vector<cv::Point2d>& points);

}  // namespace velmora
