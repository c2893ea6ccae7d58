/// The standard deviations of a camera's pose relative to another's.
#include "quality/PoseDeviations.h"

#include <algorithm>
#include <cmath>

namespace velmora {

namespace {

using Deviations = PairVerdict::Deviations;

constexpr double DEGREES = 180.0 / CV_PI;
constexpr double DISAGREEMENT = 2.5;  // jackknife over formal

bool IsDisagreement(double jackknife, double usual, double limit) {
  return jackknife > DISAGREEMENT * usual && jackknife > limit / 3.0;
}

/// What is no number stays so: it is known as little beside another one.
double LargerOf(double a, double b) {
  return std::isnan(a) ? a : std::isnan(b) ? b : std::max(a, b);
}

}  // namespace

Deviations DeviationsOf(const Eigen::MatrixXd& covariance, Eigen::Index pose, const cv::Vec3d& T) {
  if (covariance.size() == 0) return UNKNOWN_POSE;
  const Eigen::Matrix<double, 6, 6> own = covariance.block<6, 6>(pose, pose);
  const Eigen::Vector3d along = Eigen::Vector3d(T[0], T[1], T[2]).normalized();
  const double length = cv::norm(T);
  const Eigen::Matrix3d translation = own.bottomRightCorner<3, 3>();
  const double onAxis = along.dot(translation * along);
  return {std::sqrt(own.topLeftCorner<3, 3>().trace()) * DEGREES, std::sqrt(onAxis) / length,
          std::sqrt(std::max(translation.trace() - onAxis, 0.0)) / length * DEGREES};
}

bool Beyond(const Deviations& deviations, const Deviations& limits) {
  return !(deviations.rotation <= limits.rotation) || !(deviations.baseline <= limits.baseline) ||
         !(deviations.direction <= limits.direction);
}

Deviations Larger(const Deviations& a, const Deviations& b) {
  return {LargerOf(a.rotation, b.rotation), LargerOf(a.baseline, b.baseline),
          LargerOf(a.direction, b.direction)};
}

bool Disagrees(const Deviations& jackknife, const Deviations& usual) {
  return IsDisagreement(jackknife.rotation, usual.rotation, CAREFUL_POSE.rotation) ||
         IsDisagreement(jackknife.baseline, usual.baseline, CAREFUL_POSE.baseline) ||
         IsDisagreement(jackknife.direction, usual.direction, CAREFUL_POSE.direction);
}

}  // namespace velmora
