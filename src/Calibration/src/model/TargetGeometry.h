/// The printed grid's points in its own frame.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace velmora {

/// Point j of row i is (unit * (2j + i mod 2), unit * i, 0), row by row: the order in which the grid search
/// returns the centres.
std::vector<cv::Point3d> MakeObjectTemplate(const cv::Size& patternSize, float unit);

}  // namespace velmora
