/// Guides, poses and rendered frames for the tests of the guide.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "Camera.h"
#include "Sheet.h"
#include "velmora/Guide.h"

namespace unit {

/// The sizes of frames that webcams have.
const std::vector<cv::Size> FRAME_SIZES = {{640, 480}, {1280, 720}, {1920, 1080}};

/// A guide for the 4 x 11 grid with the shipped poses as its targets.
velmora::Guide GuideWithPoses(const cv::Size& frame, bool mirrored = false);

/// A frame without an image.
velmora::GuideFrame FrameOf(const std::vector<cv::Point2d>& centres, double time);

/// The answer to a view that stays for a second, from that time on.
velmora::GuideAnswer AnswerTo(velmora::Guide& guide, const velmora::GuideFrame& frame, double& time);

/// A camera of 60 degrees, and the sheet before it.
world::Camera UsualCamera(const cv::Size& frame);
world::Sheet UsualSheet();

/// Where the sheet is when the target is reached as exactly as can be, and the true centres of a pose.
world::Pose PoseAtTarget(const velmora::Guide& guide, const world::Camera& camera);
std::vector<cv::Point2d> CentresAt(const world::Camera& camera, const world::Pose& pose);

/// A rendered image of the sheet with the noise of a webcam (4 grey levels) and that blur (pixels).
cv::Mat RenderedAt(const world::Camera& camera, const world::Pose& pose, double blur, double noise = 4.0);
/// The mean of images while the sheet moves by those metres: what an exposure makes of them.
cv::Mat SmearedAt(const world::Camera& camera, const world::Pose& pose, const cv::Vec3d& way);

}  // namespace unit
