/// Makes models of the assistant.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "Camera.h"
#include "JSON.h"
#include "Placement.h"

namespace poses {

/// The grid's discs (pixels, in the order of the grid search) in each pose, as the camera sees them. Raises
/// std::runtime_error that names the pose, from 1, in which not all of the grid is in the image.
std::vector<std::vector<cv::Point2d>> CentresOf(const std::vector<world::Appearance>& list,
                                                const world::Camera& camera);

/// The model of these poses, for frames of that size.
JSON ModelOf(const std::vector<std::vector<cv::Point2d>>& poses, const cv::Size& frame);

}  // namespace poses
