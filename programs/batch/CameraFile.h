/// The result files of a pair's or a rig's cameras that a user gives.
#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace batch {

/// Raises InputError, which names the file and the fault, for a camera matrix or coefficients of a shape that
/// no camera has: that should be known before images are looked at. Whatever cannot be read at all is left
/// to the engine to report.
void CheckCameraFile(const std::string& path);

/// What a result file holds of its camera.
struct CameraFile {
  std::string path;
  cv::Size frame;  ///< to which it refers
  cv::Mat K;       ///< 3 x 3
  cv::Mat D;       ///< 1 x n, n up to 14; 1 x 4 of a fisheye
  bool fisheye = false;
};

/// Raises InputError, which names the file and the fault, for what is no result of one camera; that of a
/// fisheye is one.
CameraFile ReadCameraFile(const std::string& path);

}  // namespace batch
