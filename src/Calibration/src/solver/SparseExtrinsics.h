/// Computes how the right camera of a pair stands to the left one, in milliseconds.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "engine/Extrinsics.h"

/// Like SolveExtrinsics, with the solver of this engine: the same minimum, of the same form. The target must
/// be plane, with its points at z = 0. Raises cv::Exception for lists that do not match and points that are
/// not finite.
ExtrinsicsResult SolveExtrinsicsSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                         const std::vector<std::vector<cv::Point2d>>& leftPoints,
                                         const std::vector<std::vector<cv::Point2d>>& rightPoints,
                                         const StereoIntrinsics& intrinsics, int model, int threads = 1);
