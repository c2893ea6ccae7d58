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

/// Takes the true directions of a regular 40 x 30 grid of pixels, projects them with the estimate, and
/// measures how far from their pixels they come out. An empty region stands for the whole image, otherwise it
/// is a convex polygon. Pixels that the true lens does not image are left out. Those whose direction the
/// estimate has no pixel for, as no pinhole has beyond 90 degrees, are infinitely far off. Throws
/// std::runtime_error when none remains.
ProjectionDistance MeanProjectionDistance(const Lens& truth, const Lens& estimate, cv::Size imageSize,
                                          const std::vector<cv::Point2f>& region = {},
                                          Alignment alignment = Alignment::Raw);

/// The distances where the true directions are between limits of their angle from the axis (degrees,
/// ascending): element k is of the angles from limits[k] to below limits[k + 1]; its count is zero where no
/// pixel is. What is turned is turned as a whole. Throws as MeanProjectionDistance does.
std::vector<ProjectionDistance> ProjectionDistancesByAngle(const Lens& truth, const Lens& estimate,
                                                           cv::Size imageSize,
                                                           const std::vector<double>& limits,
                                                           const std::vector<cv::Point2f>& region = {},
                                                           Alignment alignment = Alignment::Raw);

/// The mean distance for camera matrices and coefficients as OpenCV gives them (CV_64F).
ProjectionDistance MeanProjectionDistance(const cv::Mat& trueK, const cv::Mat& trueD,
                                          const cv::Mat& estimatedK, const cv::Mat& estimatedD,
                                          cv::Size imageSize, const std::vector<cv::Point2f>& region = {},
                                          Alignment alignment = Alignment::Raw);

/// A lens of a camera matrix and coefficients as OpenCV gives them.
Lens LensFrom(const cv::Mat& K, const cv::Mat& D);

/// A fisheye of a camera matrix and four coefficients as OpenCV gives them.
Lens FisheyeFrom(const cv::Mat& K, const cv::Mat& D);

/// The convex hull of all finite points: the area that views cover.
std::vector<cv::Point2f> CoveredRegion(const std::vector<std::vector<cv::Point2d>>& views);

/// The lens of the same camera for images resized from one size to another.
Lens Resized(const Lens& lens, cv::Size from, cv::Size to);

}  // namespace world
