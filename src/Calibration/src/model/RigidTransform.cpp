/// Rotations with translations.
#include "model/RigidTransform.h"

#include <cmath>

namespace velmora {

RigidTransform operator*(const RigidTransform& a, const RigidTransform& b) {
  return {a.R * b.R, a.R * b.t + a.t};
}

RigidTransform Inverse(const RigidTransform& transform) {
  const cv::Matx33d back = transform.R.t();
  return {back, -(back * transform.t)};
}

cv::Matx33d RotationOf(const cv::Vec3d& vector) {
  const double angle = cv::norm(vector);
  const cv::Matx33d cross(0.0, -vector[2], vector[1], vector[2], 0.0, -vector[0], -vector[1], vector[0], 0.0);
  // Near zero, where the quotients are lost, their series.
  const double sine = angle < 1e-4 ? 1.0 - angle * angle / 6.0 : std::sin(angle) / angle;
  const double half = std::sin(0.5 * angle);
  const double cosine = angle < 1e-4 ? 0.5 - angle * angle / 24.0 : 2.0 * half * half / (angle * angle);
  return cv::Matx33d::eye() + sine * cross + cosine * (cross * cross);
}

RigidTransform Retract(const RigidTransform& transform, const double* step) {
  return {RotationOf({step[0], step[1], step[2]}) * transform.R,
          transform.t + cv::Vec3d(step[3], step[4], step[5])};
}

}  // namespace velmora
