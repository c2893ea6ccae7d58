/// Rotations with translations, named by direction: camera_from_rig takes a point of the rig's frame to the
/// camera's.
#pragma once

#include <opencv2/core.hpp>

namespace velmora {

/// Rotation about the three axes and translation, as a step of a transform has them.
constexpr int POSE_PARAMETERS = 6;

struct RigidTransform {
  cv::Matx33d R = cv::Matx33d::eye();
  cv::Vec3d t;

  cv::Vec3d operator*(const cv::Point3d& point) const { return R * cv::Vec3d(point.x, point.y, point.z) + t; }
};

/// a_from_b * b_from_c is a_from_c.
RigidTransform operator*(const RigidTransform& a, const RigidTransform& b);

RigidTransform Inverse(const RigidTransform& transform);

/// The rotation of a rotation vector.
cv::Matx33d RotationOf(const cv::Vec3d& vector);

/// The transform after a step of six numbers: a small rotation about the axes of the frame that it leads to,
/// and a translation in that frame.
RigidTransform Retract(const RigidTransform& transform, const double* step);

}  // namespace velmora
