/// Makes cameras of given fields of view.
#include "Cameras.h"

#include <cmath>
#include <opencv2/calib3d.hpp>

namespace accuracy {

namespace {

const cv::Size FRAME(640, 480);
/// The corners' distance from the middle, in distances of the right edge; barrel distortion makes it longer.
constexpr double CORNER = 1.35;

/// Coefficients k1, k2, k3 that move a ray of length `corner` by shares of it.
std::vector<double> Polynomial(double corner, double first, double second, double third) {
  const double square = corner * corner;
  return {first / square, second / (square * square), 0.0008, -0.0006, third / (square * square * square)};
}

std::vector<double> CoefficientsOf(LensKind kind, double corner) {
  std::vector<double> D;
  switch (kind) {
    case LensKind::Light:
      return Polynomial(corner, -0.05, 0.01, 0.0);
    case LensKind::Strong:
      return Polynomial(corner, -0.35, 0.12, -0.02);
    case LensKind::WideAngle:
      // Nearly atan(r) / r.
      return {4.0 / 15.0, 0.0, 0.0008, -0.0006, 0.0, 3.0 / 5.0, 0.0, 0.0};
    case LensKind::Tilted:
      D = Polynomial(corner, -0.2, 0.05, 0.0);
      D.insert(D.end(), {0.0, 0.0, 0.0, 0.002, 0.0, -0.001, 0.0, 0.03, -0.02});
      return D;
  }
  return D;
}

}  // namespace

std::string NameOf(LensKind kind) {
  switch (kind) {
    case LensKind::Light:
      return "light";
    case LensKind::Strong:
      return "strong";
    case LensKind::WideAngle:
      return "wide-angle";
    case LensKind::Tilted:
      return "tilted";
  }
  return "";
}

world::Camera MakeCamera(LensKind kind, double degrees) {
  const double edge = std::tan(0.5 * degrees * CV_PI / 180.0);
  const std::vector<double> D = CoefficientsOf(kind, CORNER * edge);
  const double distorted = world::Lens(cv::Matx33d::eye(), D).Project({edge, 0.0}).x;
  const double f = 0.5 * FRAME.width / distorted;
  return {FRAME, world::Lens(cv::Matx33d(f, 0.0, 325.3, 0.0, 1.003 * f, 234.6, 0.0, 0.0, 1.0), D)};
}

world::Pair MakeRig(LensKind kind, double degrees, double baseline, double toeIn) {
  world::Pair rig =
      world::SideBySidePair(MakeCamera(kind, degrees), MakeCamera(kind, 0.98 * degrees), baseline, toeIn);
  cv::Matx33d rotation;
  cv::Rodrigues(cv::Vec3d(0.012, 0.004, -0.015), rotation);
  rig.R = rotation * rig.R;
  rig.T += cv::Vec3d(0.0, 0.03 * baseline, 0.05 * baseline);
  return rig;
}

}  // namespace accuracy
