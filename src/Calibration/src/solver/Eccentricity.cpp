/// The eccentricity error: how far the centre of a disc's image is from the image of its centre.
#include "solver/Eccentricity.h"

#include <cmath>

namespace velmora::solver {

namespace {

/// A polygon of this many points is off by a few thousandths of a pixel.
constexpr int RIM_POINTS = 32;

}  // namespace

cv::Point2d EccentricityError(const Projection& projection, const RigidTransform& cameraFromTarget,
                              const cv::Point3d& centre, double radius) {
  const auto pixelOf = [&](double x, double y, cv::Point2d& pixel) {
    return projection.Project(cameraFromTarget * cv::Point3d(centre.x + x, centre.y + y, centre.z), pixel);
  };
  cv::Point2d middle;
  if (!pixelOf(0.0, 0.0, middle)) return {};
  double area = 0.0;
  cv::Point2d moment;
  cv::Point2d last;
  for (int i = 0; i <= RIM_POINTS; ++i) {
    const double angle = 2.0 * CV_PI * (i % RIM_POINTS) / RIM_POINTS;
    cv::Point2d rim;
    if (!pixelOf(radius * std::cos(angle), radius * std::sin(angle), rim)) return {};
    rim -= middle;  // sums of small numbers keep their digits
    if (i > 0) {
      const double twice = last.x * rim.y - last.y * rim.x;
      area += twice;
      moment += twice * (last + rim);
    }
    last = rim;
  }
  return area != 0.0 ? moment * (1.0 / (3.0 * area)) : cv::Point2d();
}

std::vector<TargetView> CorrectedForEccentricity(const std::vector<TargetView>& views, const Rig& rig,
                                                 const std::vector<TargetView>& estimate, double radius) {
  std::vector<TargetView> corrected = views;
  for (size_t camera = 0; camera < rig.cameras.size(); ++camera) {
    const Projection projection(rig.cameras[camera].intrinsics);
    for (size_t i = 0; i < corrected.size(); ++i) {
      Observation& observation = corrected[i].observations[camera];
      const RigidTransform pose = rig.cameras[camera].cameraFromRig * estimate[i].rigFromTarget;
      for (size_t k = 0; k < observation.object.size(); ++k) {
        observation.image[k] -= EccentricityError(projection, pose, observation.object[k], radius);
      }
    }
  }
  return corrected;
}

}  // namespace velmora::solver
