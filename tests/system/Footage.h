/// Videos of the sheet for the system tests.
#pragma once

#include <string>
#include <vector>

#include "Renderer.h"
#include "Rig.h"

namespace system_test {

/// A camera of 640 x 480 pixels with a mild lens distortion.
world::Camera SmallCamera();

/// Pictures of the sheet in `count` well spread poses before the camera.
std::vector<cv::Mat> ViewsOf(const world::Camera& camera, int count);

/// The background without the sheet.
cv::Mat EmptyView(const world::Camera& camera);

/// Pictures side by side of the sheet in `count` well spread poses before a rig.
std::vector<cv::Mat> SideBySideViewsOf(const world::Pair& rig, int count);

/// Puts pictures of the same size side by side.
cv::Mat Beside(const cv::Mat& left, const cv::Mat& right);

/// Writes a video of 25 pictures per second in which each picture is shown `hold` times. Throws
/// std::runtime_error when it cannot be written.
void WriteVideo(const std::string& path, const std::vector<cv::Mat>& pictures, int hold);

}  // namespace system_test
