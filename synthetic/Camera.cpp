/// Cameras, poses and the projections of a sheet.
#include "Camera.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/calib3d.hpp>
#include <stdexcept>

namespace world {

namespace {

cv::Matx33d RotationOf(const Pose& pose) {
  cv::Matx33d R;
  cv::Rodrigues(pose.rvec, R);
  return R;
}

}  // namespace

Pose PoseFor(const RigCamera& camera, const Pose& rigPose) {
  Pose pose;
  cv::Rodrigues(camera.R * RotationOf(rigPose), pose.rvec);
  pose.tvec = camera.R * rigPose.tvec + camera.T;
  return pose;
}

Pose RigPoseFrom(const RigCamera& camera, const Pose& cameraPose) {
  Pose pose;
  cv::Rodrigues(camera.R.t() * RotationOf(cameraPose), pose.rvec);
  pose.tvec = camera.R.t() * (cameraPose.tvec - camera.T);
  return pose;
}

Camera CameraFromFieldOfView(cv::Size size, double degrees, const std::vector<double>& D) {
  if (size.width < 1 || size.height < 1 || !(degrees > 0.0) || !(degrees < 180.0)) {
    throw std::invalid_argument("a camera has a positive size and a field of view between 0 and 180 degrees");
  }
  const double f = 0.5 * size.width / std::tan(0.5 * degrees * CV_PI / 180.0);
  const cv::Matx33d K(f, 0.0, 0.5 * (size.width - 1), 0.0, f, 0.5 * (size.height - 1), 0.0, 0.0, 1.0);
  return {size, Lens(K, D)};
}

Camera FisheyeFromFieldOfView(cv::Size size, double degrees, const FisheyeCurve::Coefficients& k) {
  const FisheyeCurve curve(k);
  const double edge = 0.5 * degrees * CV_PI / 180.0;
  if (size.width < 1 || size.height < 1 || !(degrees > 0.0) || !(edge < curve.WidestAngle())) {
    throw std::invalid_argument("a fisheye has a positive size, and a field of view that its curve reaches");
  }
  const double f = 0.5 * size.width / curve.Distance(edge);
  const cv::Matx33d K(f, 0.0, 0.5 * (size.width - 1), 0.0, f, 0.5 * (size.height - 1), 0.0, 0.0, 1.0);
  return {size, Lens(K, curve)};
}

std::vector<cv::Point3d> ToCamera(const std::vector<cv::Point3d>& points, const Pose& pose) {
  const cv::Matx33d R = RotationOf(pose);
  std::vector<cv::Point3d> moved;
  moved.reserve(points.size());
  for (const cv::Point3d& point : points) {
    const cv::Vec3d p = R * cv::Vec3d(point.x, point.y, point.z) + pose.tvec;
    moved.emplace_back(p[0], p[1], p[2]);
  }
  return moved;
}

std::vector<cv::Point2d> ProjectPoints(const Lens& lens, const std::vector<cv::Point3d>& points,
                                       const Pose& pose) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  std::vector<cv::Point2d> pixels;
  pixels.reserve(points.size());
  for (const cv::Point3d& p : ToCamera(points, pose)) {
    pixels.push_back(lens.Images(p) ? lens.Project(p) : cv::Point2d(none, none));
  }
  return pixels;
}

std::vector<cv::Point2d> TrueCentres(const Lens& lens, const Sheet& sheet, const Pose& pose) {
  return ProjectPoints(lens, sheet.GridPoints(), pose);
}

bool DiscsInside(const Camera& camera, const Sheet& sheet, const Pose& pose, double margin) {
  const std::vector<cv::Point2d> rims = ProjectPoints(camera.lens, sheet.RimPoints(16), pose);
  return std::all_of(rims.begin(), rims.end(), [&](const cv::Point2d& p) {
    return p.x >= margin && p.y >= margin && p.x <= camera.size.width - 1 - margin &&
           p.y <= camera.size.height - 1 - margin;
  });
}

bool FacesCamera(const Pose& pose) {
  const cv::Matx33d R = RotationOf(pose);
  return R(0, 2) * pose.tvec[0] + R(1, 2) * pose.tvec[1] + R(2, 2) * pose.tvec[2] > 0.0;
}

}  // namespace world
