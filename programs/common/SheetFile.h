/// The shape of a sheet that an earlier calibration measured.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace common {

/// Where the circles of a grid of that unit are on a flat sheet, metres, in the order of the search.
std::vector<cv::Point3d> GridPoints(const cv::Size& grid, float unit);

/// Where the circles of the sheet are by the verdict file of a camera, a pair or a rig, metres. Raises
/// std::invalid_argument, in words that go on after the file's name, where it cannot be read or has no shape.
std::vector<cv::Point3d> SheetPointsOf(const std::string& verdictFile);

/// Why the points are not the shape of a sheet with such a grid, in words that go on after the file's name;
/// empty when they are.
std::string FaultOfSheet(const std::vector<cv::Point3d>& points, const cv::Size& grid, float unit);

}  // namespace common
