/// Whether a part of the 4 x 11 grid can be of one set of its discs only.
#pragma once

#include <functional>
#include <opencv2/core.hpp>
#include <vector>

namespace unit {

/// Whether only the grid's own grid indices explain the discs that are seen: after all other turns by
/// quarters and shifts two discs or more would be left out, or would be where `blank` says that none is. The
/// image must show an end of the grid along and across too.
bool Tells(const std::vector<bool>& seen, const std::function<bool(const cv::Point& gridIndex)>& blank);

}  // namespace unit
