/// Computes one camera's intrinsics from views of the grid.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace velmora {

struct IntrinsicsResult {
  double rms = -1.0;
  cv::Mat K, D;                                               ///< 3 x 3; 1 x 5 or 1 x 14
  cv::Mat rvecs, tvecs;                                       ///< N x 1 of three doubles
  cv::Mat stdDevIntrinsics, stdDevExtrinsics, perViewErrors;  ///< 18 x 1, 6N x 1, N x 1
};

/// Solves from scratch with OpenCV's calibration. D is as OpenCV returns it, never trimmed. Raises
/// cv::Exception when the solver does.
IntrinsicsResult SolveIntrinsics(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                 const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                 const cv::Size& imageSize, int model);

/// When OpenCV's solvers stop: at most 200 iterations, until nothing changes.
cv::TermCriteria OpenCvCriteria();

/// The records in the single precision that the solvers take.
std::vector<std::vector<cv::Point3f>> Narrowed(const std::vector<std::vector<cv::Point3d>>& records);
std::vector<std::vector<cv::Point2f>> Narrowed(const std::vector<std::vector<cv::Point2d>>& records);

}  // namespace velmora
