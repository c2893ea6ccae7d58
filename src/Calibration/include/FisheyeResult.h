/// A fisheye, as a calibration found it.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "Export.h"

/// The lens of Kannala and Brandt: a point whose ray is at the angle theta from the axis is seen at the
/// distance theta (1 + k1 theta^2 + k2 theta^4 + k3 theta^6 + k4 theta^8) from the principal point, in focal
/// lengths; beside and behind the camera, too. OpenCV's cv::fisheye has the same numbers. Pixels are those of
/// the processing size.
struct VELMORA_API FisheyeResult {
  cv::Mat K;             ///< 3 x 3; empty: there is no result of a fisheye
  cv::Mat coefficients;  ///< 1 x 4: k1 to k4
  cv::Mat stdDevs;       ///< 8 x 1, standard deviations: fx, fy, cx, cy, k1 to k4
  cv::Size imageSize;
  double rms = -1.0;         ///< reprojection error
  double widestAngle = 0.0;  ///< of the rays to the points that were used, from the axis, degrees

  bool IsEmpty() const { return K.empty(); }

  /// The text of a fisheye's result file: an object of `sensor`, `error`, `imgWidth`, `imgHeight`,
  /// `cameraMatrix` as in other result files, `lensModel` ("kannala-brandt"), `fisheyeCoefs` and
  /// `widestAngle`. It has no `distCoefs`, so that no reader takes k1 to k4 for others.
  std::string ToJson() const;
  /// What ToJson wrote, without standard deviations. Raises std::invalid_argument for other texts.
  static FisheyeResult FromJson(const std::string& text);
};
