/// Poses in which the target could be shown next.
#include "quality/PoseCandidates.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "quality/ProjectionUncertainty.h"

namespace velmora {

namespace {

/// Somebody who misses a pose by some degrees still shows a grid that a search finds.
constexpr double MOST_TILT = 40.0;
constexpr double MOST_ROLL = 25.0;
constexpr double LEAST_SPAN = 0.3;
constexpr double LARGEST_SPAN = 0.85;
constexpr double MARGIN = 0.02;  // of the smaller side of the image

double Radians(double degrees) {
  return degrees * (CV_PI / 180.0);
}

/// Element k of the sequence of evenly spread fractions in a base; k from 1.
double Halton(int k, int base) {
  double fraction = 0.0;
  double digit = 1.0;
  for (; k > 0; k /= base) {
    digit /= base;
    fraction += digit * (k % base);
  }
  return fraction;
}

/// How the target is to appear in the image.
struct Appearance {
  double x, y;  ///< -1 to 1 in the room that is left
  double span;  ///< of the image's width or height, whichever it takes more of
  cv::Matx33d R;
};

/// The rotation in which rows of the target run down the image and follow each other to the left.
cv::Matx33d Upright() {
  return {0.0, -1.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0, 1.0};
}

Appearance AppearanceOf(int number) {
  const auto within = [number](int base, double most) { return most * (2.0 * Halton(number, base) - 1.0); };
  Appearance appearance;
  // Beyond the room and back to its end: the rim of the image is where a camera's distortion is hardest to
  // know.
  appearance.x = std::clamp(within(2, 1.3), -1.0, 1.0);
  appearance.y = std::clamp(within(3, 1.3), -1.0, 1.0);
  appearance.span = LEAST_SPAN + (LARGEST_SPAN - LEAST_SPAN) * Halton(number, 5);
  appearance.R = RotationOf({Radians(within(7, MOST_TILT)), 0.0, 0.0}) *
                 RotationOf({0.0, Radians(within(11, MOST_TILT)), 0.0}) *
                 RotationOf({0.0, 0.0, Radians(within(13, MOST_ROLL))}) * Upright();
  return appearance;
}

/// The rotation of the axis to a ray of length one, the shortest way.
cv::Matx33d TurnTo(const cv::Vec3d& ray) {
  const cv::Vec3d about = cv::Vec3d(0.0, 0.0, 1.0).cross(ray);
  const double sine = cv::norm(about);
  if (sine == 0.0) return cv::Matx33d::eye();
  return RotationOf(about * (std::atan2(sine, ray[2]) / sine));
}

/// Places a target before a camera so that it has a given appearance.
class Placing {
 public:
  Placing(const Intrinsics& intrinsics, const std::vector<cv::Point3d>& object, const cv::Size& imageSize)
      : intrinsics_(intrinsics), projection_(intrinsics), size_(imageSize), outline_(OutlineOf(object)) {}

  bool Place(const Appearance& appearance, RigidTransform& pose) const {
    const double margin = MARGIN * std::min(size_.width, size_.height);
    const cv::Point2d middle(0.5 * (size_.width - 1), 0.5 * (size_.height - 1));
    cv::Point2d aim = middle;
    double depth = FirstDepth(appearance.span);
    constexpr int ROUNDS = 5;
    for (int i = 0; i < ROUNDS; ++i) {
      cv::Vec3d ray;
      if (!RayOf(projection_, intrinsics_, aim, ray)) return false;
      // Far from the axis of a fisheye nobody sees a sheet that is held across the axis.
      pose.R = intrinsics_.IsFisheye() ? TurnTo(ray) * appearance.R : appearance.R;
      pose.t = ray * depth;
      cv::Rect2d box;
      if (!BoxOf(pose, box)) return false;
      const cv::Point2d room(std::max(0.0, 0.5 * (size_.width - 1 - box.width) - margin),
                             std::max(0.0, 0.5 * (size_.height - 1 - box.height) - margin));
      const cv::Point2d wanted = middle + cv::Point2d(appearance.x * room.x, appearance.y * room.y);
      aim += wanted - (box.tl() + box.br()) * 0.5;
      depth *= std::max(box.width / size_.width, box.height / size_.height) / appearance.span;
    }
    return IsFair(pose, margin);
  }

 private:
  /// Points around the target and its rims.
  static std::vector<cv::Point3d> OutlineOf(const std::vector<cv::Point3d>& object) {
    cv::Point2d low(object.front().x, object.front().y);
    cv::Point2d high = low;
    double nearest = std::numeric_limits<double>::infinity();
    for (const cv::Point3d& point : object) {
      low = {std::min(low.x, point.x), std::min(low.y, point.y)};
      high = {std::max(high.x, point.x), std::max(high.y, point.y)};
      if (&point != &object.front()) nearest = std::min(nearest, cv::norm(point - object.front()));
    }
    const double rim = 0.3 * nearest;  // neighbours' discs do not touch
    std::vector<cv::Point3d> outline;
    constexpr int STEPS = 4;
    for (int i = 0; i < STEPS; ++i) {
      const double s = static_cast<double>(i) / STEPS;
      const double x0 = low.x - rim;
      const double x1 = high.x + rim;
      const double y0 = low.y - rim;
      const double y1 = high.y + rim;
      outline.emplace_back(x0 + s * (x1 - x0), y0, 0.0);
      outline.emplace_back(x1, y0 + s * (y1 - y0), 0.0);
      outline.emplace_back(x1 - s * (x1 - x0), y1, 0.0);
      outline.emplace_back(x0, y1 - s * (y1 - y0), 0.0);
    }
    return outline;
  }

  double FirstDepth(double span) const {
    double reach = 0.0;
    for (const cv::Point3d& point : outline_) reach = std::max(reach, cv::norm(point));
    return intrinsics_.values[0] * 2.0 * reach / (span * size_.width);
  }

  /// Around the outline's image. False where the camera has none, or a mirrored one from past a fold of its
  /// distortion.
  bool BoxOf(const RigidTransform& pose, cv::Rect2d& box) const {
    cv::Point2d low(std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity());
    cv::Point2d high = -low;
    solver::Coordinate u;
    solver::Coordinate v;
    for (const cv::Point3d& point : outline_) {
      const cv::Vec3d inCamera = pose.R * cv::Vec3d(point.x, point.y, point.z) + pose.t;
      if (!projection_.Differentiate(inCamera, u, v)) return false;
      if (!intrinsics_.IsFisheye() && !(u.byPoint[0] * v.byPoint[1] - u.byPoint[1] * v.byPoint[0] > 0.0))
        return false;
      low = {std::min(low.x, u.value), std::min(low.y, v.value)};
      high = {std::max(high.x, u.value), std::max(high.y, v.value)};
    }
    box = {low, high};
    return true;
  }

  bool IsFair(const RigidTransform& pose, double margin) const {
    cv::Rect2d box;
    if (!BoxOf(pose, box)) return false;
    const double least = std::cos(Radians(MOST_TILT));
    const cv::Vec3d normal(pose.R(0, 2), pose.R(1, 2), pose.R(2, 2));
    // Half of the margin is left to the steps of the placement.
    return (intrinsics_.IsFisheye() || normal[2] >= least) &&
           normal.dot(pose.t) >= least * cv::norm(pose.t) && std::min(box.x, box.y) >= 0.5 * margin &&
           box.br().x <= size_.width - 1 - 0.5 * margin && box.br().y <= size_.height - 1 - 0.5 * margin &&
           std::max(box.width / size_.width, box.height / size_.height) >= 0.9 * LEAST_SPAN;
  }

  const Intrinsics intrinsics_;
  const solver::Projection projection_;
  const cv::Size size_;
  const std::vector<cv::Point3d> outline_;
};

bool Observe(const solver::Projection& projection, const std::vector<cv::Point3d>& object,
             PoseCandidate& candidate) {
  candidate.view.object = object;
  for (const cv::Point3d& point : object) {
    cv::Point2d pixel;
    const cv::Vec3d inCamera = candidate.pose.R * cv::Vec3d(point.x, point.y, point.z) + candidate.pose.t;
    if (!projection.Project(inCamera, pixel)) return false;
    candidate.view.image.push_back(pixel);
  }
  return true;
}

/// Between neighbours in a row.
double LargestSpacing(const Observation& view) {
  double largest = 0.0;
  for (size_t i = 1; i < view.object.size(); ++i) {
    if (view.object[i].y != view.object[i - 1].y) continue;
    largest = std::max(largest, cv::norm(view.image[i] - view.image[i - 1]));
  }
  return largest;
}

}  // namespace

std::vector<PoseCandidate> CandidatesFor(const Intrinsics& intrinsics, const std::vector<cv::Point3d>& object,
                                         const cv::Size& imageSize, int count, double mostSpacing) {
  constexpr int TRIES = 4;  // for each
  const Placing placing(intrinsics, object, imageSize);
  const solver::Projection projection(intrinsics);
  std::vector<PoseCandidate> candidates;
  for (int i = 1; i <= TRIES * count && candidates.size() < static_cast<size_t>(count); ++i) {
    PoseCandidate candidate;
    if (placing.Place(AppearanceOf(i), candidate.pose) && Observe(projection, object, candidate) &&
        LargestSpacing(candidate.view) <= mostSpacing) {
      candidates.push_back(std::move(candidate));
    }
  }
  return candidates;
}

}  // namespace velmora
