/// Projects points to pixels, with the derivatives of the pixels.
#include "solver/Projection.h"

#include <cmath>

#include "solver/ProjectionFormulas.h"

namespace velmora::solver {

namespace {

/// The part of the tilt that projects onto the sensor along the axis: it depends on the last column of the
/// rotation.
cv::Matx33d TowardSensor(const cv::Matx33d& rotation) {
  return {rotation(2, 2), 0.0, -rotation(0, 2), 0.0, rotation(2, 2), -rotation(1, 2), 0.0, 0.0, 0.0};
}

cv::Matx33d RotationAboutX(double c, double s, double axis) {
  return {axis, 0.0, 0.0, 0.0, c, s, 0.0, -s, c};
}

cv::Matx33d RotationAboutY(double c, double s, double axis) {
  return {c, 0.0, -s, 0.0, axis, 0.0, s, 0.0, c};
}

}  // namespace

Projection::Projection(const Intrinsics& intrinsics) {
  constants_.intrinsics = intrinsics;
  if (intrinsics.IsFisheye()) {
    fisheye_.emplace(intrinsics);
    return;
  }
  const double tauX = intrinsics.values[TAU_X];
  const double tauY = intrinsics.values[TAU_Y];
  constants_.tilted = intrinsics.estimated > TAU_X || tauX != 0.0 || tauY != 0.0;
  const cv::Matx33d aboutX = RotationAboutX(std::cos(tauX), std::sin(tauX), 1.0);
  const cv::Matx33d aboutY = RotationAboutY(std::cos(tauY), std::sin(tauY), 1.0);
  const cv::Matx33d rotation = aboutY * aboutX;
  const cv::Matx33d byX = aboutY * RotationAboutX(-std::sin(tauX), std::cos(tauX), 0.0);
  const cv::Matx33d byY = RotationAboutY(-std::sin(tauY), std::cos(tauY), 0.0) * aboutX;
  cv::Matx33d towardSensor = TowardSensor(rotation);
  towardSensor(2, 2) = 1.0;
  constants_.tilt = towardSensor * rotation;
  constants_.tiltByX = TowardSensor(byX) * rotation + towardSensor * byX;
  constants_.tiltByY = TowardSensor(byY) * rotation + towardSensor * byY;
}

bool Projection::Project(const cv::Vec3d& point, cv::Point2d& pixel) const {
  if (fisheye_) return fisheye_->Project(point, pixel);
  if (!(point[2] > 0.0)) return false;
  const double nearness = 1.0 / point[2];
  const ProjectionFormulas<double> formulas(constants_);
  formulas.Project(point[0] * nearness, point[1] * nearness, pixel.x, pixel.y);
  return std::isfinite(pixel.x) && std::isfinite(pixel.y);
}

bool Projection::Differentiate(const cv::Vec3d& point, Coordinate& u, Coordinate& v) const {
  if (fisheye_) return fisheye_->Differentiate(point, u, v);
  if (!(point[2] > 0.0)) return false;
  CoordinateOf<double> first;
  CoordinateOf<double> second;
  const double nearness = 1.0 / point[2];
  const ProjectionFormulas<double> formulas(constants_);
  formulas.Differentiate(point[0] * nearness, point[1] * nearness, nearness, first, second);
  u = {first.value, first.byIntrinsics, {first.byPoint[0], first.byPoint[1], first.byPoint[2]}};
  v = {second.value, second.byIntrinsics, {second.byPoint[0], second.byPoint[1], second.byPoint[2]}};
  return std::isfinite(u.value) && std::isfinite(v.value);
}

}  // namespace velmora::solver
