/// How far two camera models are apart, in pixels.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "Lens.h"

namespace world {

/// Whether the camera frames of the two models may be turned against each other before they are compared: an
/// error of the principal point that a rotation of all poses makes up for then hardly counts.
enum class Alignment { Raw, Rotated };

struct ProjectionDistance {
  double mean = 0.0;
  /// Root of the mean square.
  double rms = 0.0;
  double max = 0.0;
  /// Pixels that were compared.
  int count = 0;
};

/// Takes the true rays of a regular 40 x 30 grid of pixels, projects them with the estimate, and measures how
/// far from their pixels they come out. An empty region stands for the whole image, otherwise it is a convex
/// polygon. Pixels that the true lens does not image are left out. Throws std::runtime_error when none
/// remains.
ProjectionDistance MeanProjectionDistance(const Lens& truth, const Lens& estimate, cv::Size imageSize,
                                          const std::vector<cv::Point2f>& region = {},
                                          Alignment alignment = Alignment::Raw);

/// The mean distance for camera matrices and coefficients as OpenCV gives them (CV_64F).
ProjectionDistance MeanProjectionDistance(const cv::Mat& trueK, const cv::Mat& trueD,
                                          const cv::Mat& estimatedK, const cv::Mat& estimatedD,
                                          cv::Size imageSize, const std::vector<cv::Point2f>& region = {},
                                          Alignment alignment = Alignment::Raw);

/// A lens of a camera matrix and coefficients as OpenCV gives them.
Lens LensFrom(const cv::Mat& K, const cv::Mat& D);

/// The convex hull of all finite points: the area that views cover.
std::vector<cv::Point2f> CoveredRegion(const std::vector<std::vector<cv::Point2d>>& views);

/// The lens of the same camera for images resized from one size to another.
Lens Resized(const Lens& lens, cv::Size from, cv::Size to);

}  // namespace world
