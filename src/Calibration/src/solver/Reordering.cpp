/// Puts images right whose points were counted from another end of the target, and names those of another
/// part of a bigger one.
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

const char* const SHIFTED = "shows another part of a bigger grid than the other images";
/// More images than these are a fault of another kind, and would take long.
constexpr int MOST_SHIFTED = 8;

/// The corners of the box around points of a plane.
struct Box {
  cv::Point3d least;
  cv::Point3d most;

  explicit Box(const std::vector<cv::Point3d>& points) : least(points.front()), most(points.front()) {
    for (const cv::Point3d& point : points) {
      least = {std::min(least.x, point.x), std::min(least.y, point.y), 0.0};
      most = {std::max(most.x, point.x), std::max(most.y, point.y), 0.0};
    }
  }

  /// The point, counted from another end by the axes whose sign is negative.
  cv::Point3d Mirrored(const cv::Point3d& point, const cv::Point2d& sign) const {
    return {sign.x > 0.0 ? point.x : least.x + most.x - point.x,
            sign.y > 0.0 ? point.y : least.y + most.y - point.y, 0.0};
  }
};

/// How a pattern, counted from that end, can be laid onto itself a step further: by what leads from a point
/// in its midst to those around it, near ones first.
std::vector<cv::Point3d> StepsOf(const std::vector<cv::Point3d>& object, const cv::Point2d& sign) {
  constexpr size_t AROUND = 8;
  const Box box(object);
  const cv::Point3d middle = 0.5 * (box.least + box.most);
  const cv::Point3d inner = *std::min_element(
      object.begin(), object.end(),
      [&](const auto& a, const auto& b) { return cv::norm(a - middle) < cv::norm(b - middle); });
  const cv::Point3d from = box.Mirrored(inner, sign);
  const double none = 1e-3 * cv::norm(box.most - box.least);
  std::vector<cv::Point3d> steps;
  for (const cv::Point3d& point : object) {
    if (cv::norm(point - from) > none) steps.push_back(point - from);
  }
  std::stable_sort(steps.begin(), steps.end(),
                   [](const auto& a, const auto& b) { return cv::norm(a) < cv::norm(b); });
  steps.resize(std::min(steps.size(), AROUND));
  return steps;
}

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

/// Whether the image is that of the points beside the target's, from whatever end they were counted.
bool FitsShifted(const TargetView& view, size_t camera, const Rig& rig, double most) {
  const std::vector<cv::Point3d>& object = view.observations[camera].object;
  const Box box(object);
  for (const cv::Point2d& sign :
       {cv::Point2d(1.0, 1.0), cv::Point2d(1.0, -1.0), cv::Point2d(-1.0, 1.0), cv::Point2d(-1.0, -1.0)}) {
    for (const cv::Point3d& step : StepsOf(object, sign)) {
      TargetView other = view;
      for (cv::Point3d& point : other.observations[camera].object) point = box.Mirrored(point, sign) + step;
      if (ResidualOf(other, camera, rig) < most) return true;
    }
  }
  return false;
}

}  // namespace

std::vector<std::vector<size_t>> OtherOrders(const std::vector<cv::Point3d>& object) {
  const Box box(object);
  const double tolerance =
      1e-3 * cv::norm(box.most - box.least) / std::sqrt(static_cast<double>(object.size()));
  std::vector<std::vector<size_t>> orders;
  for (const cv::Point2d& sign : {cv::Point2d(1.0, -1.0), cv::Point2d(-1.0, 1.0), cv::Point2d(-1.0, -1.0)}) {
    std::vector<cv::Point3d> moved;
    moved.reserve(object.size());
    for (const cv::Point3d& point : object) moved.push_back(box.Mirrored(point, sign));
    if (const auto order = OrderOf(object, moved, tolerance)) orders.push_back(*order);
  }
  return orders;
}

void Reorder(const Recounted& recounted, TargetView& view) {
  Observation& observation = view.observations[recounted.camera];
  const auto reorder = [&](auto& items) {
    const auto before = items;
    for (size_t k = 0; k < recounted.order.size(); ++k) items[k] = before[recounted.order[k]];
  };
  reorder(observation.image);
  if (!observation.deviations.empty()) reorder(observation.deviations);
}

std::vector<Recounted> RecountedImages(const std::vector<TargetView>& views, const Solution& solution) {
  std::vector<Recounted> recounted;
  const double most = AGREEING * std::sqrt(NoiseVariance(solution));
  for (const Rejected& rejected : solution.rejected) {
    if (rejected.point != Rejected::WHOLE_VIEW) continue;
    const TargetView& view = views[rejected.view];
    const Observation& image = view.observations[rejected.camera];
    const Intrinsics& intrinsics = solution.rig.cameras[rejected.camera].intrinsics;
    if (CountOf(view.observations) <= image.Count() || !HasPose(image, intrinsics)) continue;
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

void NameShiftedImages(const std::vector<TargetView>& views, Solution& solution) {
  const double most = AGREEING * std::sqrt(NoiseVariance(solution));
  int named = 0;
  for (Rejected& rejected : solution.rejected) {
    if (rejected.point != Rejected::WHOLE_VIEW || named == MOST_SHIFTED) continue;
    const TargetView& view = views[rejected.view];
    const Observation& image = view.observations[rejected.camera];
    const Intrinsics& intrinsics = solution.rig.cameras[rejected.camera].intrinsics;
    if (CountOf(view.observations) <= image.Count() || !HasPose(image, intrinsics)) continue;
    ++named;
    if (FitsShifted(view, rejected.camera, solution.rig, most)) rejected.reason = SHIFTED;
  }
}

}  // namespace velmora::solver
