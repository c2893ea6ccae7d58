/// The result of a calibration of one camera, as its file has it.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "Export.h"

namespace velmora {

/// A lens with the size of its images: of a plain one (K and D as OpenCV's calibration has them) or of a
/// fisheye (FisheyeResult's K and coefficients).
struct VELMORA_API CameraResult {
  cv::Mat K;  ///< 3 x 3, CV_64F, pixels of images of that size
  cv::Mat D;  ///< 1 x 4, 5, 8, 12 or 14, OpenCV's order; of a fisheye 1 x 4: k1 to k4
  bool fisheye = false;
  cv::Size imageSize;
  double rms = -1.0;  ///< reprojection error of the calibration, pixels; negative: not known

  /// That of a result file's text, of a plain camera or of a fisheye. Raises std::invalid_argument, in words
  /// that go on after the file's name ("is the result of a pair ..."), for all others. Thread-safe.
  static CameraResult FromJson(const std::string& text);

  /// Raises std::invalid_argument where these are no matrices of a camera, or the size is none.
  void Check() const;
};

}  // namespace velmora
