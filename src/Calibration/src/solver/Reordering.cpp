/// Puts images right whose points were counted from another end of the target.
#include "solver/Reordering.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "solver/BundleAdjustment.h"
#include "solver/Initialisation.h"

namespace velmora::solver {

namespace {

constexpr double AGREEING = 3.0;  // root of the mean squared residual, in standard deviations

/// Which point is where each one would be; none when one would be where there is no point.
std::optional<std::vector<size_t>> OrderOf(const std::vector<cv::Point3d>& object,
                                           const std::vector<cv::Point3d>& moved, double tolerance) {
  std::vector<size_t> order;
  for (const cv::Point3d& point : moved) {
    const auto nearest = std::min_element(object.begin(), object.end(), [&](const auto& a, const auto& b) {
      return cv::norm(a - point) < cv::norm(b - point);
    });
    if (cv::norm(*nearest - point) > tolerance) return {};
    order.push_back(static_cast<size_t>(nearest - object.begin()));
  }
  return order;
}

/// The root of the mean squared residual of a coordinate, at the best pose before the rig.
double ResidualOf(TargetView view, size_t camera, const Rig& rig) {
  const Observation& image = view.observations[camera];
  view.rigFromTarget =
      Inverse(rig.cameras[camera].cameraFromRig) * KnownPoseOf(image, rig.cameras[camera].intrinsics);
  const Solution solution = SolvePoses(rig, {view});
  const double freedom = 2.0 * CountOf(solution.views) - POSE_PARAMETERS;
  return solution.usable ? std::sqrt(solution.cost / freedom) : std::numeric_limits<double>::infinity();
}

}  // namespace

std::vector<std::vector<size_t>> OtherOrders(const std::vector<cv::Point3d>& object) {
  cv::Point3d least = object.front();
  cv::Point3d most = object.front();
  for (const cv::Point3d& point : object) {
    least = {std::min(least.x, point.x), std::min(least.y, point.y), 0.0};
    most = {std::max(most.x, point.x), std::max(most.y, point.y), 0.0};
  }
  const double tolerance = 1e-3 * cv::norm(most - least) / std::sqrt(static_cast<double>(object.size()));
  std::vector<std::vector<size_t>> orders;
  for (const cv::Point2d& sign : {cv::Point2d(1.0, -1.0), cv::Point2d(-1.0, 1.0), cv::Point2d(-1.0, -1.0)}) {
    std::vector<cv::Point3d> moved;
    moved.reserve(object.size());
    for (const cv::Point3d& point : object) {
      moved.emplace_back(sign.x > 0.0 ? point.x : least.x + most.x - point.x,
                         sign.y > 0.0 ? point.y : least.y + most.y - point.y, 0.0);
    }
    if (const auto order = OrderOf(object, moved, tolerance)) orders.push_back(*order);
  }
  return orders;
}

void Reorder(const Recounted& recounted, TargetView& view) {
  std::vector<cv::Point2d>& image = view.observations[recounted.camera].image;
  const std::vector<cv::Point2d> before = image;
  for (size_t k = 0; k < recounted.order.size(); ++k) image[k] = before[recounted.order[k]];
}

std::vector<Recounted> RecountedImages(const std::vector<TargetView>& views, const Solution& solution) {
  std::vector<Recounted> recounted;
  const double most = AGREEING * std::sqrt(NoiseVariance(solution));
  for (const Rejected& rejected : solution.rejected) {
    if (rejected.point != Rejected::WHOLE_VIEW) continue;
    const TargetView& view = views[rejected.view];
    const Observation& image = view.observations[rejected.camera];
    cv::Matx33d homography;
    if (CountOf(view.observations) <= image.Count() || !HomographyOf(image, homography)) continue;
    for (const auto& order : OtherOrders(image.object)) {
      const Recounted candidate{rejected.view, rejected.camera, order};
      TargetView other = view;
      Reorder(candidate, other);
      if (!(ResidualOf(other, rejected.camera, solution.rig) < most)) continue;
      recounted.push_back(candidate);
      break;
    }
  }
  return recounted;
}

}  // namespace velmora::solver
