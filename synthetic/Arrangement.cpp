/// Arranges the cameras of a rig.
#include "Arrangement.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <stdexcept>

#include "Placement.h"
#include "Seed.h"

namespace world {

namespace {

constexpr std::uint64_t CAMERA_SEQUENCE = 0x63616d65726173;
constexpr double FOCAL_SPREAD = 0.02;
constexpr double PRINCIPAL_SPREAD = 0.015;
constexpr double DISTORTION_SPREAD = 0.1;
constexpr double TURN_SPREAD = 3.0;
constexpr double PLACE_SPREAD = 0.05;

/// When the ends of a ring are this far apart (degrees), at least one of them sees a sheet too obliquely.
constexpr double WIDE_RING = 160.0;
constexpr double USUAL_ANGLE = 40.0;
constexpr double WHOLE_CIRCLE = 360.0;

cv::Matx33d RotationMatrix(const cv::Vec3d& degrees) {
  cv::Matx33d R;
  cv::Rodrigues(degrees * (CV_PI / 180.0), R);
  return R;
}

bool IsPositive(double value) {
  return value > 0.0 && std::isfinite(value);
}

void Check(bool fits, const char* what) {
  if (!fits) throw std::invalid_argument(what);
}

/// What makes one camera differ from the others.
class Differences {
 public:
  Differences(std::uint64_t seed, int camera)
      : random_(MixSeeds(MixSeeds(seed, CAMERA_SEQUENCE), static_cast<std::uint64_t>(camera))) {}

  Camera Vary(const Camera& camera) {
    cv::Matx33d K = camera.lens.K();
    const double scale = 1.0 + Within(FOCAL_SPREAD);
    K(0, 0) *= scale;
    K(1, 1) *= scale;
    K(0, 2) += Within(PRINCIPAL_SPREAD) * camera.size.width;
    K(1, 2) += Within(PRINCIPAL_SPREAD) * camera.size.height;
    if (camera.lens.IsFisheye()) {
      FisheyeCurve::Coefficients k = camera.lens.Curve()->D();
      for (double& coefficient : k) coefficient *= 1.0 + Within(DISTORTION_SPREAD);
      return {camera.size, Lens(K, FisheyeCurve(k))};
    }
    std::vector<double> D = camera.lens.D();
    for (double& coefficient : D) coefficient *= 1.0 + Within(DISTORTION_SPREAD);
    return {camera.size, Lens(K, D)};
  }

  cv::Matx33d Turned() { return RotationMatrix(Vector(TURN_SPREAD)); }
  cv::Vec3d Translation(double length) { return Vector(PLACE_SPREAD * length); }

 private:
  double Within(double spread) { return random_.uniform(-spread, spread); }

  cv::Vec3d Vector(double spread) {
    const double x = Within(spread);
    const double y = Within(spread);
    return {x, y, Within(spread)};
  }

  cv::RNG random_;
};

}  // namespace

Rig RowRig(const Camera& camera, int count, double baseline, std::uint64_t seed) {
  Check(count >= 2, "a rig has two cameras or more");
  Check(IsPositive(baseline), "a row of cameras has a positive baseline");
  Rig rig = {{RigCamera{camera}}};
  for (int k = 1; k < count; ++k) {
    Differences differences(seed, k);
    RigCamera next = {differences.Vary(camera)};
    next.R = differences.Turned();
    next.T = next.R * (cv::Vec3d(-k * baseline, 0.0, 0.0) + differences.Translation(baseline));
    rig.cameras.push_back(next);
  }
  return rig;
}

Rig RingRig(const Camera& camera, int count, double radius, double degrees, std::uint64_t seed) {
  Check(count >= 2, "a rig has two cameras or more");
  Check(IsPositive(radius) && IsPositive(degrees), "a ring of cameras has a positive radius and angle");
  Check(count * degrees < WHOLE_CIRCLE + 1e-9, "a ring of cameras goes around once at most");
  const cv::Vec3d middle(0.0, 0.0, radius);
  Rig rig = {{RigCamera{camera}}};
  for (int k = 1; k < count; ++k) {
    Differences differences(seed, k);
    RigCamera next = {differences.Vary(camera)};
    const cv::Matx33d around = RotationMatrix({0.0, k * degrees, 0.0});
    const cv::Matx33d turned = differences.Turned();
    next.R = turned * around;
    next.T = turned * (middle - around * middle + differences.Translation(radius));
    rig.cameras.push_back(next);
  }
  return rig;
}

double RingAngle(int count) {
  Check(count >= 2, "a rig has two cameras or more");
  if (count == 2) return USUAL_ANGLE;
  return std::min(std::max(USUAL_ANGLE, WIDE_RING / (count - 1)), WHOLE_CIRCLE / count);
}

double RingRadius(const Camera& camera, const Sheet& sheet) {
  const cv::Rect2d image(0.0, 0.0, 2.0 * HalfWidth(camera),
                         camera.size.height * SpanShare(camera) / camera.lens.K()(1, 1));
  const cv::Point3d middle = sheet.GridMiddle();
  // The upright grid has its Y along the image's x axis; its middle is half its size.
  constexpr double SPAN = 0.5;
  return std::max(2.0 * middle.y / image.width, 2.0 * middle.x / image.height) / SPAN;
}

}  // namespace world
