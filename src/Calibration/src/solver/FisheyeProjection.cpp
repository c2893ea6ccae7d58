/// The projection of fisheyes by Kannala and Brandt.
#include "solver/FisheyeProjection.h"

#include <algorithm>
#include <cmath>

namespace velmora::solver {

namespace {

/// Rays so near to the axis, as a share of their length, are on it: the angle is their distance from it.
constexpr double ON_AXIS = 1e-9;
constexpr int SCANNED = 512;

}  // namespace

FisheyeProjection::FisheyeProjection(const Intrinsics& intrinsics)
    : intrinsics_(intrinsics), largest_(CV_PI) {
  double before = 0.0;
  for (int i = 1; i <= SCANNED; ++i) {
    double angle = CV_PI * i / SCANNED;
    if (Slope(angle) > 0.0) {
      before = angle;
      continue;
    }
    for (int halved = 0; halved < 40; ++halved) {
      const double middle = 0.5 * (before + angle);
      (Slope(middle) > 0.0 ? before : angle) = middle;
    }
    largest_ = before;
    break;
  }
}

double FisheyeProjection::Distance(double angle) const {
  const double* const k = intrinsics_.values.data() + FISHEYE_K;
  const double a2 = angle * angle;
  return angle * (1.0 + a2 * (k[0] + a2 * (k[1] + a2 * (k[2] + a2 * k[3]))));
}

double FisheyeProjection::Slope(double angle) const {
  const double* const k = intrinsics_.values.data() + FISHEYE_K;
  const double a2 = angle * angle;
  return 1.0 + a2 * (3.0 * k[0] + a2 * (5.0 * k[1] + a2 * (7.0 * k[2] + a2 * 9.0 * k[3])));
}

bool FisheyeProjection::Project(const cv::Vec3d& point, cv::Point2d& pixel) const {
  const double away = std::hypot(point[0], point[1]);
  const double angle = std::atan2(away, point[2]);
  if (!(angle < largest_) || !(cv::norm(point) > 0.0)) return false;
  const double share = away > ON_AXIS * point[2] ? Distance(angle) / away : 1.0 / point[2];
  pixel = {intrinsics_.values[FX] * share * point[0] + intrinsics_.values[CX],
           intrinsics_.values[FY] * share * point[1] + intrinsics_.values[CY]};
  return std::isfinite(pixel.x) && std::isfinite(pixel.y);
}

bool FisheyeProjection::Differentiate(const cv::Vec3d& point, Coordinate& u, Coordinate& v) const {
  const double away = std::hypot(point[0], point[1]);
  const double angle = std::atan2(away, point[2]);
  if (!(angle < largest_) || !(cv::norm(point) > 0.0)) return false;
  const auto& p = intrinsics_.values;
  const bool onAxis = !(away > ON_AXIS * point[2]);
  // Along the two axes of the image: where the ray is turned to, and the image's distance along it.
  const double x = onAxis ? 0.0 : point[0] / away;
  const double y = onAxis ? 0.0 : point[1] / away;
  const double distance = Distance(angle);
  const double across = onAxis ? 1.0 / point[2] : distance / away;
  const double along = Slope(angle) / point.dot(point);
  // By the point: along the radius the angle grows, across it the image turns.
  const double radial = onAxis ? across : along * point[2];
  const double byDepth = -along * away;
  u.value = p[FX] * across * point[0] + p[CX];
  v.value = p[FY] * across * point[1] + p[CY];
  u.byPoint =
      p[FX] * cv::Vec3d(radial * x * x + across * (1.0 - x * x), (radial - across) * x * y, byDepth * x);
  v.byPoint =
      p[FY] * cv::Vec3d((radial - across) * x * y, radial * y * y + across * (1.0 - y * y), byDepth * y);
  u.byIntrinsics = {};
  v.byIntrinsics = {};
  u.byIntrinsics[FX] = across * point[0];
  v.byIntrinsics[FY] = across * point[1];
  u.byIntrinsics[CX] = v.byIntrinsics[CY] = 1.0;
  double power = angle * angle * angle;
  for (size_t i = FISHEYE_K; i < FISHEYE_K + FISHEYE_COEFFICIENTS; ++i, power *= angle * angle) {
    u.byIntrinsics[i] = p[FX] * x * power;
    v.byIntrinsics[i] = p[FY] * y * power;
  }
  return std::isfinite(u.value) && std::isfinite(v.value);
}

bool FisheyeProjection::RayOf(const cv::Point2d& pixel, cv::Vec3d& ray) const {
  const double x = (pixel.x - intrinsics_.values[CX]) / intrinsics_.values[FX];
  const double y = (pixel.y - intrinsics_.values[CY]) / intrinsics_.values[FY];
  const double distance = std::hypot(x, y);
  if (!(distance < Distance(largest_))) return false;
  if (distance == 0.0) {
    ray = {0.0, 0.0, 1.0};
    return true;
  }
  // The distance grows with the angle: Newton's steps, kept between what is too small and too large.
  double low = 0.0;
  double high = largest_;
  double angle = std::min(distance, 0.5 * largest_);
  for (int i = 0; i < 60; ++i) {
    const double off = Distance(angle) - distance;
    (off > 0.0 ? high : low) = angle;
    const double next = angle - off / Slope(angle);
    const double before = angle;
    angle = next > low && next < high ? next : 0.5 * (low + high);
    if (std::abs(angle - before) < 1e-15) break;
  }
  const double share = std::sin(angle) / distance;
  ray = {share * x, share * y, std::cos(angle)};
  return true;
}

}  // namespace velmora::solver
