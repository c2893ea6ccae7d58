/// Whether the views that were left out are of another camera, or of another setting of this one.
#include "quality/OtherCamera.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>
#include <vector>

#include "solver/CameraCalibration.h"

namespace velmora {

namespace {

constexpr size_t FEWEST = 5;
constexpr double MOST_OF_THEM = 0.7;  // that must agree
constexpr double AS_GOOD = 2.0;       // RMS over that of the solution

}  // namespace

OtherCamera OtherCameraAmong(const std::vector<Observation>& leftOut, const Solution& solution,
                             size_t camera) {
  OtherCamera other;
  std::vector<TargetView> images;
  images.reserve(leftOut.size());
  for (const Observation& image : leftOut) images.push_back({{}, {image}});
  if (images.size() < FEWEST) return other;
  const Camera& own = solution.rig.cameras[camera];
  solver::BundleOptions options;
  options.discRadius = solution.discRadius;
  Solution alone;
  try {
    alone = solver::CalibrateCamera(images, own.imageSize, true, options);
  } catch (const cv::Exception&) {
    return other;  // no camera fits them
  }
  const auto agree = static_cast<double>(alone.views.size());
  if (!alone.usable || alone.tooFewAgree || agree < MOST_OF_THEM * static_cast<double>(images.size()) ||
      agree < static_cast<double>(FEWEST) || !(RmsOf(alone) <= AS_GOOD * RmsOf(solution))) {
    return other;
  }
  other.views = static_cast<int>(alone.views.size());
  const auto& values = alone.rig.cameras.front().intrinsics.values;
  other.focalLength =
      std::sqrt(values[FX] * values[FY] / (own.intrinsics.values[FX] * own.intrinsics.values[FY]));
  std::ostringstream reason;
  reason << other.views
         << " of the views that were left out agree with each other, on a focal length that is " << std::fixed
         << std::setprecision(1) << 100.0 * std::abs(other.focalLength - 1.0) << " % "
         << (other.focalLength > 1.0 ? "longer" : "shorter") << ": they are of another camera or setting.";
  other.reason = reason.str();
  other.advice = "Calibrate each camera, and each setting of focus and zoom, from views of its own.";
  return other;
}

}  // namespace velmora
