/// Places the grid by its appearance, and makes lists of such poses.
#include "Views.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <stdexcept>

#include "Seed.h"

namespace world {

namespace {

constexpr std::uint64_t VIEW_SEQUENCE = 0x76696577;

cv::Matx33d Turn(double x, double y, double z) {
  cv::Matx33d R;
  cv::Rodrigues(cv::Vec3d(x, y, z) * (CV_PI / 180.0), R);
  return R;
}

cv::Matx33d RotationFor(const Appearance& appearance) {
  const cv::Matx33d upright(0, -1, 0, 1, 0, 0, 0, 0, 1);
  return Turn(0, 0, appearance.roll) * Turn(appearance.tiltX, 0, 0) * Turn(0, appearance.tiltY, 0) * upright;
}

/// The bounding box of the discs' rims; false when some are not imaged.
bool RimBox(const Camera& camera, const Sheet& sheet, const Pose& pose, cv::Point2d& low, cv::Point2d& high) {
  const std::vector<cv::Point2d> rims = ProjectPoints(camera.lens, sheet.RimPoints(16), pose);
  low = high = rims.front();
  for (const cv::Point2d& p : rims) {
    if (!std::isfinite(p.x) || !std::isfinite(p.y)) return false;
    low = {std::min(low.x, p.x), std::min(low.y, p.y)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y)};
  }
  return true;
}

/// The middle of the room of a box of size `extent` along an axis of `pixels`, moved by `place`.
double Destination(double place, double extent, int pixels, double margin) {
  const double room = pixels - 1 - 2.0 * margin - extent;
  return 0.5 * (pixels - 1) + 0.5 * place * room;
}

double Clamped(double value, int pixels) {
  return std::min(std::max(value, 0.0), pixels - 1.0);
}

/// The angle between the line of sight to the grid's middle and the paper's normal, degrees.
double Obliqueness(const Sheet& sheet, const Pose& pose) {
  cv::Matx33d R;
  cv::Rodrigues(pose.rvec, R);
  const cv::Point3d middle = ToCamera({sheet.GridMiddle()}, pose).front();
  const double along = (R(0, 2) * middle.x + R(1, 2) * middle.y + R(2, 2) * middle.z) / cv::norm(middle);
  return std::acos(std::min(1.0, along)) * 180.0 / CV_PI;
}

/// Element k of the sequence of fractions in a base; k from 1.
double Halton(int k, int base) {
  double value = 0.0;
  double weight = 1.0;
  for (; k > 0; k /= base) {
    weight /= base;
    value += weight * (k % base);
  }
  return value;
}

Pose Placed(const Camera& camera, const Sheet& sheet, Appearance appearance) {
  Pose pose;
  for (int attempt = 0; attempt < 12; ++attempt) {
    if (PlaceGrid(camera, sheet, appearance, ViewMargin(camera), pose)) return pose;
    appearance.span *= 0.92;
  }
  throw std::runtime_error("the camera cannot see the whole grid in one of the listed views");
}

}  // namespace

bool PlaceGrid(const Camera& camera, const Sheet& sheet, const Appearance& appearance, double margin,
               Pose& pose) {
  const cv::Matx33d R = RotationFor(appearance);
  const cv::Point3d middle = sheet.GridMiddle();
  const cv::Vec3d turned = R * cv::Vec3d(middle.x, middle.y, middle.z);
  cv::Point2d pixel(0.5 * (camera.size.width - 1), 0.5 * (camera.size.height - 1));
  double depth = 40.0 * sheet.Unit() * std::max(1, sheet.Grid().height) / 11.0;
  Pose candidate;
  cv::Rodrigues(R, candidate.rvec);
  for (int step = 0; step < 150; ++step) {
    // Full steps converge at once, except near the border of wide cameras.
    const double stride = step < 20 ? 1.0 : 0.3;
    cv::Point2d ray;
    if (!camera.lens.Unproject(pixel, ray)) return false;
    candidate.tvec = cv::Vec3d(ray.x, ray.y, 1.0) * depth - turned;
    cv::Point2d low;
    cv::Point2d high;
    if (!RimBox(camera, sheet, candidate, low, high)) {
      depth *= 1.5;
      continue;
    }
    const cv::Point2d extent = high - low;
    const double span = std::max(extent.x / camera.size.width, extent.y / camera.size.height);
    const cv::Point2d destination(Destination(appearance.x, extent.x, camera.size.width, margin),
                                  Destination(appearance.y, extent.y, camera.size.height, margin));
    const cv::Point2d move = destination - 0.5 * (low + high);
    if (std::abs(span / appearance.span - 1.0) < 1e-3 && cv::norm(move) < 0.25) {
      if (!DiscsInside(camera, sheet, candidate, margin - 0.5)) return false;
      pose = candidate;
      return true;
    }
    depth *= std::pow(std::min(1.5, std::max(0.67, span / appearance.span)), stride);
    pixel += stride * move;
    pixel = {Clamped(pixel.x, camera.size.width), Clamped(pixel.y, camera.size.height)};
  }
  return false;
}

double ViewMargin(const Camera& camera) {
  return 0.015 * std::min(camera.size.width, camera.size.height);
}

std::vector<Pose> SampleViews(const Camera& camera, int n, std::uint64_t seed, const Sheet& sheet) {
  constexpr double FLATTEST = 55.0;
  constexpr std::array<int, 6> BASES = {2, 3, 5, 7, 11, 13};
  cv::RNG random(MixSeeds(seed, VIEW_SEQUENCE));
  std::array<double, 6> shift = {};
  for (double& value : shift) value = random.uniform(0.0, 1.0);
  std::vector<Pose> poses;
  for (int k = 1; static_cast<int>(poses.size()) < n; ++k) {
    if (k > 100 * (n + 10)) throw std::runtime_error("the camera cannot see the whole grid in random views");
    std::array<double, 6> u = {};
    for (std::size_t d = 0; d < u.size(); ++d) u[d] = std::fmod(Halton(k, BASES[d]) + shift[d], 1.0);
    Appearance appearance;
    appearance.x = 2.0 * u[0] - 1.0;
    appearance.y = 2.0 * u[1] - 1.0;
    appearance.span = 0.355 + 0.49 * u[2];
    appearance.tiltX = 80.0 * u[3] - 40.0;
    appearance.tiltY = 80.0 * u[4] - 40.0;
    appearance.roll = 50.0 * u[5] - 25.0;
    Pose pose;
    if (!PlaceGrid(camera, sheet, appearance, ViewMargin(camera), pose)) continue;
    if (Obliqueness(sheet, pose) < FLATTEST) poses.push_back(pose);
  }
  return poses;
}

std::vector<Pose> SpreadViews(const Camera& camera, int n, const Sheet& sheet) {
  // x, y, span, tiltY, tiltX, roll.
  static constexpr std::array<Appearance, 24> LIST = {{
      {0.0, 0.0, 0.80, 0, 0, 0},       {-1.0, -1.0, 0.55, -18, 14, 4},  {1.0, -1.0, 0.55, 18, 14, -5},
      {1.0, 1.0, 0.55, 18, -14, 6},    {-1.0, 1.0, 0.55, -18, -14, -4}, {0.0, 0.0, 0.72, 30, 0, 8},
      {0.0, 0.0, 0.72, -30, 4, -10},   {0.0, 0.0, 0.70, 3, 25, 5},      {0.0, 0.0, 0.70, -4, -25, -6},
      {0.3, -0.2, 0.85, 12, -10, 12},  {-0.4, 0.3, 0.48, -20, 20, 20},  {0.5, 0.6, 0.60, -22, -20, -18},
      {-1.0, 0.0, 0.58, 20, 10, -12},  {1.0, 0.0, 0.58, -20, -8, 14},   {0.0, -1.0, 0.60, 10, -18, 0},
      {0.0, 1.0, 0.60, -12, 18, -3},   {-0.8, -0.9, 0.62, 18, 6, 10},   {0.8, -0.9, 0.62, -18, 8, -8},
      {0.8, 0.9, 0.62, -16, -10, 5},   {-0.8, 0.9, 0.62, 16, -10, -5},  {0.2, 0.1, 0.76, 22, 14, 2},
      {-0.2, -0.1, 0.76, -22, -14, 0}, {0.0, 0.0, 0.56, 20, -22, 24},   {0.0, 0.2, 0.72, -15, 18, -22},
  }};
  // Wide cameras see the sheet from nearer, which makes more perspective of the same tilt.
  const double halfWidth = 0.5 * camera.size.width / camera.lens.K()(0, 0);
  const double ease = std::min(1.0, std::tan(CV_PI / 6.0) / halfWidth);
  std::vector<Pose> poses;
  for (int k = 0; k < n; ++k) {
    Appearance appearance = LIST[static_cast<std::size_t>(k) % LIST.size()];
    appearance.span *= std::pow(0.95, k / static_cast<int>(LIST.size()));
    appearance.tiltX *= ease;
    appearance.tiltY *= ease;
    poses.push_back(Placed(camera, sheet, appearance));
  }
  return poses;
}

std::vector<Pose> FrontalViews(const Camera& camera, int n, const Sheet& sheet) {
  std::vector<Pose> poses;
  for (int k = 0; k < n; ++k) {
    Appearance appearance;
    appearance.x = 1.6 * Halton(k + 1, 2) - 0.8;
    appearance.y = 1.6 * Halton(k + 1, 3) - 0.8;
    appearance.span = 0.45 + 0.35 * Halton(k + 1, 5);
    poses.push_back(Placed(camera, sheet, appearance));
  }
  return poses;
}

Pose AwayPose(const Camera& camera, const Sheet& sheet, const Pose& pose) {
  Pose away = pose;
  const double stride = 5.0 * sheet.Unit();
  for (int step = 0; step < 1000; ++step) {
    away.tvec[0] += stride;
    bool seen = false;
    std::vector<cv::Point3d> points = sheet.OutlinePoints();
    const std::vector<cv::Point3d> corners = points;
    for (std::size_t k = 0; k < corners.size(); ++k) {
      for (double t = 0.05; t < 1.0; t += 0.05) {
        points.push_back(corners[k] + t * (corners[(k + 1) % corners.size()] - corners[k]));
      }
    }
    for (const cv::Point2d& p : ProjectPoints(camera.lens, points, away)) {
      seen =
          seen || (p.x > -2.0 && p.y > -2.0 && p.x < camera.size.width + 1 && p.y < camera.size.height + 1);
    }
    if (!seen) return away;
  }
  throw std::runtime_error("the sheet cannot be moved out of the image");
}

}  // namespace world
