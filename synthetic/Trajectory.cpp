/// Interpolates key poses with ease in and ease out.
#include "Trajectory.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <stdexcept>
#include <utility>

#include "Views.h"

namespace world {

namespace {

/// 0 to 1 with zero speed and acceleration at both ends.
double Eased(double t) {
  return t * t * t * (t * (6.0 * t - 15.0) + 10.0);
}

Pose Between(const Pose& a, const Pose& b, double share) {
  cv::Matx33d from;
  cv::Matx33d to;
  cv::Rodrigues(a.rvec, from);
  cv::Rodrigues(b.rvec, to);
  cv::Vec3d rotation;
  cv::Rodrigues(to * from.t(), rotation);
  cv::Matx33d part;
  cv::Rodrigues(rotation * share, part);
  Pose pose;
  cv::Rodrigues(part * from, pose.rvec);
  pose.tvec = a.tvec + (b.tvec - a.tvec) * share;
  return pose;
}

}  // namespace

Trajectory::Trajectory(std::vector<Pose> keys, double seconds) : keys_(std::move(keys)), seconds_(seconds) {
  if (keys_.empty() || !(seconds > 0.0)) {
    throw std::invalid_argument("a trajectory needs a key pose and a positive duration");
  }
}

double Trajectory::TimeOf(std::size_t key) const {
  return keys_.size() < 2 ? 0.0 : seconds_ * static_cast<double>(key) / static_cast<double>(keys_.size() - 1);
}

Pose Trajectory::At(double seconds) const {
  const double last = static_cast<double>(keys_.size() - 1);
  const double position = std::min(std::max(seconds / seconds_, 0.0), 1.0) * last;
  const std::size_t key = static_cast<std::size_t>(position);
  const double rest = position - static_cast<double>(key);
  if (key + 1 >= keys_.size() || rest <= 0.0) return keys_[key];
  return Between(keys_[key], keys_[key + 1], Eased(rest));
}

Trajectory ThroughViews(const std::vector<Pose>& views, double seconds, int awayEvery,
                        const std::function<Pose(const Pose&)>& away) {
  std::vector<Pose> keys;
  for (std::size_t k = 0; k < views.size(); ++k) {
    keys.push_back(views[k]);
    const bool due = awayEvery > 0 && (k + 1) % static_cast<std::size_t>(awayEvery) == 0;
    if (due && k + 1 < views.size()) keys.push_back(away(views[k]));
  }
  return Trajectory(std::move(keys), seconds);
}

Trajectory ThroughViews(const Camera& camera, const Sheet& sheet, const std::vector<Pose>& views,
                        double seconds, int awayEvery) {
  return ThroughViews(views, seconds, awayEvery,
                      [&](const Pose& view) { return AwayPose(camera, sheet, view); });
}

}  // namespace world
