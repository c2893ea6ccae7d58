/// What a camera's computation is given, and what it looks for.
#include "solver/Problem.h"

#include <cmath>

namespace velmora::solver {

cv::Matx33d TurnOf(const cv::Vec3d& rotation) {
  const double angle = cv::norm(rotation);
  const cv::Matx33d cross(0.0, -rotation[2], rotation[1], rotation[2], 0.0, -rotation[0], -rotation[1],
                          rotation[0], 0.0);
  // Near zero, where the quotients are lost, their series.
  const double sine = angle < 1e-4 ? 1.0 - angle * angle / 6.0 : std::sin(angle) / angle;
  const double half = std::sin(0.5 * angle);
  const double cosine = angle < 1e-4 ? 0.5 - angle * angle / 24.0 : 2.0 * half * half / (angle * angle);
  return cv::Matx33d::eye() + sine * cross + cosine * (cross * cross);
}

Pose Moved(const Pose& pose, const double* step) {
  return {TurnOf({step[0], step[1], step[2]}) * pose.R, pose.t + cv::Vec3d(step[3], step[4], step[5])};
}

}  // namespace velmora::solver
