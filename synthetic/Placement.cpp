/// Places the grid by its appearance.
#include "Placement.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/calib3d.hpp>

#include "Seed.h"

namespace world {

namespace {

constexpr std::uint64_t VIEW_SEQUENCE = 0x76696577;
constexpr std::array<int, 6> BASES = {2, 3, 5, 7, 11, 13};

cv::Matx33d RotationMatrix(double x, double y, double z) {
  cv::Matx33d R;
  cv::Rodrigues(cv::Vec3d(x, y, z) * (CV_PI / 180.0), R);
  return R;
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

double Clamped(double value, int pixels) {
  return std::min(std::max(value, 0.0), pixels - 1.0);
}

/// From where to where a box may be moved along an axis, and the middle of that.
struct Room {
  double from;
  double to;

  double At(double place) const { return 0.5 * (from + to) + 0.5 * place * std::max(0.0, to - from); }
};

Room RoomOf(double low, double high, int pixels, double margin) {
  return {margin - low, pixels - 1 - margin - high};
}

/// What a place of the grid looks like in all images: the largest span, and the moves, in the first image,
/// that keep it inside all of them.
struct Impression {
  double span = 0.0;
  Room x = {};
  Room y = {};
};

/// False when some rims are not imaged.
bool Look(const std::vector<Viewer>& viewers, const Sheet& sheet, const Pose& pose, Impression& impression) {
  impression = Impression();
  for (const Viewer& viewer : viewers) {
    const Camera& camera = viewer.camera;
    cv::Point2d low;
    cv::Point2d high;
    if (!RimBox(camera, sheet, PoseFor(viewer.camera, pose), low, high)) return false;
    impression.span = std::max(
        {impression.span, (high.x - low.x) / camera.size.width, (high.y - low.y) / camera.size.height});
    const Room x = RoomOf(low.x, high.x, camera.size.width, viewer.margin);
    const Room y = RoomOf(low.y, high.y, camera.size.height, viewer.margin);
    if (&viewer == &viewers.front()) {
      impression.x = x;
      impression.y = y;
      continue;
    }
    const cv::Matx33d& first = viewers.front().camera.lens.K();
    const double alongX = first(0, 0) / camera.lens.K()(0, 0);
    const double alongY = first(1, 1) / camera.lens.K()(1, 1);
    impression.x = {std::max(impression.x.from, alongX * x.from), std::min(impression.x.to, alongX * x.to)};
    impression.y = {std::max(impression.y.from, alongY * y.from), std::min(impression.y.to, alongY * y.to)};
  }
  return true;
}

/// The angle between the paper's normal and the line of sight to the point where it is largest, degrees.
double LargestAngleFromNormal(const std::vector<cv::Point3d>& points, const Pose& pose) {
  cv::Matx33d R;
  cv::Rodrigues(pose.rvec, R);
  double least = 1.0;
  for (const cv::Point3d& p : ToCamera(points, pose)) {
    least = std::min(least, (R(0, 2) * p.x + R(1, 2) * p.y + R(2, 2) * p.z) / cv::norm(p));
  }
  return std::acos(least) * 180.0 / CV_PI;
}

/// A shift for each of the dimensions of a sequence.
std::vector<double> RandomShift(std::uint64_t seed) {
  cv::RNG random(MixSeeds(seed, VIEW_SEQUENCE));
  std::vector<double> shift;
  for (std::size_t d = 0; d < BASES.size(); ++d) shift.push_back(random.uniform(0.0, 1.0));
  return shift;
}

/// Element `number` of the sequence with this shift, from 0 to 1 in all dimensions.
std::array<double, BASES.size()> SpreadNumbers(int number, const std::vector<double>& shift) {
  std::array<double, BASES.size()> u = {};
  for (std::size_t d = 0; d < u.size(); ++d) u[d] = std::fmod(Halton(number, BASES[d]) + shift[d], 1.0);
  return u;
}

bool AllInside(const std::vector<Viewer>& viewers, const Sheet& sheet, const Pose& pose) {
  return std::all_of(viewers.begin(), viewers.end(), [&](const Viewer& viewer) {
    return DiscsInside(viewer.camera, sheet, PoseFor(viewer.camera, pose), viewer.margin - 0.5);
  });
}

}  // namespace

cv::Matx33d RotationFor(const Appearance& appearance) {
  const cv::Matx33d upright(0, -1, 0, 1, 0, 0, 0, 0, 1);
  return RotationMatrix(0, 0, appearance.roll) * RotationMatrix(appearance.tiltX, 0, 0) *
         RotationMatrix(0, appearance.tiltY, 0) * upright;
}

cv::Matx33d RotationToward(const cv::Vec3d& direction) {
  const cv::Vec3d axis(-direction[1], direction[0], 0.0);
  const double length = cv::norm(axis);
  const double angle = std::atan2(length, direction[2]);
  cv::Matx33d R;
  cv::Rodrigues(length > 0.0 ? axis * (angle / length) : cv::Vec3d(0.0, angle, 0.0), R);
  return R;
}

bool PoseAt(const Lens& lens, const Sheet& sheet, const cv::Matx33d& rotation, const cv::Point2d& pixel,
            double depth, Pose& pose) {
  cv::Point3d seen;
  if (!lens.Unproject(pixel, seen)) return false;
  const cv::Vec3d direction(seen.x, seen.y, seen.z);
  const cv::Matx33d turned = lens.IsFisheye() ? RotationToward(direction) * rotation : rotation;
  const cv::Point3d middle = sheet.GridMiddle();
  cv::Rodrigues(turned, pose.rvec);
  pose.tvec = direction * depth - turned * cv::Vec3d(middle.x, middle.y, middle.z);
  return true;
}

bool Place(const std::vector<Viewer>& viewers, const Sheet& sheet, const cv::Matx33d& rotation,
           const Appearance& appearance, Pose& pose) {
  const Camera& camera = viewers.front().camera;
  cv::Point2d pixel(0.5 * (camera.size.width - 1), 0.5 * (camera.size.height - 1));
  double depth = 40.0 * sheet.Unit() * std::max(1, sheet.Grid().height) / 11.0;
  Pose candidate;
  for (int step = 0; step < 150; ++step) {
    // Full steps converge at once, except near the border of wide cameras.
    const double stride = step < 20 ? 1.0 : 0.3;
    if (!PoseAt(camera.lens, sheet, rotation, pixel, depth, candidate)) return false;
    Impression impression;
    if (!Look(viewers, sheet, candidate, impression)) {
      depth *= 1.5;
      continue;
    }
    const cv::Point2d move(impression.x.At(appearance.x), impression.y.At(appearance.y));
    if (std::abs(impression.span / appearance.span - 1.0) < 1e-3 && cv::norm(move) < 0.25) {
      if (!AllInside(viewers, sheet, candidate)) return false;
      pose = candidate;
      return true;
    }
    depth *= std::pow(std::min(1.5, std::max(0.67, impression.span / appearance.span)), stride);
    pixel += stride * move;
    pixel = {Clamped(pixel.x, camera.size.width), Clamped(pixel.y, camera.size.height)};
  }
  return false;
}

double Obliqueness(const Sheet& sheet, const Pose& pose) {
  return LargestAngleFromNormal({sheet.GridMiddle()}, pose);
}

double LargestObliqueness(const Sheet& sheet, const Pose& pose) {
  return LargestAngleFromNormal(sheet.GridPoints(), pose);
}

double Halton(int k, int base) {
  double value = 0.0;
  double weight = 1.0;
  for (; k > 0; k /= base) {
    weight /= base;
    value += weight * (k % base);
  }
  return value;
}

RandomAppearances::RandomAppearances(std::uint64_t seed) : shift_(RandomShift(seed)) {
}

Appearance RandomAppearances::Next() {
  const auto u = SpreadNumbers(++number_, shift_);
  Appearance appearance;
  appearance.x = 2.0 * u[0] - 1.0;
  appearance.y = 2.0 * u[1] - 1.0;
  appearance.span = 0.355 + 0.49 * u[2];
  appearance.tiltX = 80.0 * u[3] - 40.0;
  appearance.tiltY = 80.0 * u[4] - 40.0;
  appearance.roll = 50.0 * u[5] - 25.0;
  return appearance;
}

RandomFisheyeViews::RandomFisheyeViews(const Camera& camera, const Sheet& sheet, std::uint64_t seed)
    : camera_(camera), sheet_(sheet), shift_(RandomShift(seed)) {
}

bool RandomFisheyeViews::Next(Pose& pose) {
  const auto u = SpreadNumbers(++number_, shift_);
  Appearance appearance;
  appearance.tiltX = 80.0 * u[3] - 40.0;
  appearance.tiltY = 80.0 * u[4] - 40.0;
  appearance.roll = 360.0 * u[5];
  const cv::Point2d pixel(u[0] * (camera_.size.width - 1), u[1] * (camera_.size.height - 1));
  const double length = sheet_.Unit() * std::max(1, sheet_.Grid().height - 1);
  return PoseAt(camera_.lens, sheet_, RotationFor(appearance), pixel, (0.5 + 1.5 * u[2]) * length, pose);
}

Appearance SpreadAppearance(int k, double halfWidth) {
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
  const double ease = std::min(1.0, std::tan(CV_PI / 6.0) / halfWidth);
  Appearance appearance = LIST[static_cast<std::size_t>(k) % LIST.size()];
  appearance.span *= std::pow(0.95, k / static_cast<int>(LIST.size()));
  appearance.tiltX *= ease;
  appearance.tiltY *= ease;
  return appearance;
}

double SpanShare(const Camera& camera) {
  if (!camera.lens.IsFisheye()) return 1.0;
  constexpr double USUAL = CV_PI / 3.0;
  const double edge = 0.5 * camera.size.width / camera.lens.K()(0, 0);
  double angle = camera.lens.Curve()->WidestAngle();
  camera.lens.Curve()->AngleAt(edge, angle);
  return std::min(1.0, USUAL / (2.0 * angle));
}

double HalfWidth(const Camera& camera) {
  return 0.5 * camera.size.width * SpanShare(camera) / camera.lens.K()(0, 0);
}

void MoveAside(bool around, const Sheet& sheet, Pose& pose) {
  if (!around) {
    pose.tvec[0] += 5.0 * sheet.Unit();
    return;
  }
  constexpr double STRIDE = 5.0 * CV_PI / 180.0;
  const cv::Point3d point = ToCamera({sheet.GridMiddle()}, pose).front();
  const cv::Vec3d middle(point.x, point.y, point.z);
  const cv::Vec3d axis(-middle[1], middle[0], 0.0);
  const double length = cv::norm(axis);
  const bool isBehind = std::atan2(length, middle[2]) > CV_PI - STRIDE;
  const cv::Vec3d about = length > 0.0 ? axis / length : cv::Vec3d(0.0, 1.0, 0.0);
  cv::Matx33d aside;
  cv::Rodrigues(isBehind ? cv::Vec3d() : about * STRIDE, aside);
  cv::Matx33d R;
  cv::Rodrigues(pose.rvec, R);
  cv::Rodrigues(aside * R, pose.rvec);
  pose.tvec = aside * (pose.tvec + 0.05 * middle);
}

}  // namespace world
