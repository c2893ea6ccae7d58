/// An image size with a lens, and poses of the grid before it.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "Lens.h"
#include "Sheet.h"

namespace world {

struct Camera {
  cv::Size size;
  Lens lens;
};

/// Where the grid is: rotation vector and translation (metres) that lead from the grid frame to the camera's.
struct Pose {
  cv::Vec3d rvec;
  cv::Vec3d tvec;
};

/// A camera and where it is in a rig: a point x of the rig's frame is R x + T in the camera's, metres.
struct RigCamera : Camera {
  cv::Matx33d R = cv::Matx33d::eye();
  cv::Vec3d T = {};
};

/// Where the grid is for a camera of a rig when it has the pose for the rig.
Pose PoseFor(const RigCamera& camera, const Pose& rigPose);

/// Where the grid is for the rig when it has the pose for the camera.
Pose RigPoseFrom(const RigCamera& camera, const Pose& cameraPose);

/// A camera of a horizontal field of view (degrees, of the undistorted pinhole) with square pixels and its
/// principal point in the middle of the image.
Camera CameraFromFieldOfView(cv::Size size, double degrees, const std::vector<double>& D = {});

/// A fisheye of these coefficients whose field of view, from the left side of the image to the right one, has
/// that angle (degrees), with square pixels and its principal point in the middle. Throws
/// std::invalid_argument when there is none.
Camera FisheyeFromFieldOfView(cv::Size size, double degrees, const FisheyeCurve::Coefficients& k = {});

/// Points of the grid frame in the camera frame.
std::vector<cv::Point3d> ToCamera(const std::vector<cv::Point3d>& points, const Pose& pose);

/// The pixels of points of the grid frame; NaN for those that the lens does not image: behind the camera, or
/// past a fold.
std::vector<cv::Point2d> ProjectPoints(const Lens& lens, const std::vector<cv::Point3d>& points,
                                       const Pose& pose);

/// The true projections of the disc centres, row by row; NaN where there is none.
std::vector<cv::Point2d> TrueCentres(const Lens& lens, const Sheet& sheet, const Pose& pose);

/// True when every disc is imaged wholly, at least `margin` pixels inside the image's outermost pixel
/// centres.
bool DiscsInside(const Camera& camera, const Sheet& sheet, const Pose& pose, double margin = 0.0);

/// True when the camera is on the printed side of the sheet.
bool FacesCamera(const Pose& pose);

}  // namespace world
