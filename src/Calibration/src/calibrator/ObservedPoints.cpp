/// What of the snapshots was seen: the points that solvers take when some are parts of the grid.
#include "calibrator/ObservedPoints.h"

#include <algorithm>
#include <cmath>

namespace velmora {

namespace {

bool IsSeen(const std::vector<double>& weights, size_t point) {
  return weights.empty() || weights[point] > 0.0;
}

/// The numbers of the points that all cameras saw; none when no camera has weights.
std::vector<int> NumbersIn(const SnapshotList& snapshots, size_t snapshot) {
  std::vector<int> numbers;
  const auto& cameras = snapshots.cameras;
  if (std::all_of(cameras.begin(), cameras.end(),
                  [&](const auto& camera) { return camera.weights[snapshot].empty(); })) {
    return numbers;
  }
  for (size_t k = 0; k < snapshots.target[snapshot].size(); ++k) {
    if (std::all_of(cameras.begin(), cameras.end(),
                    [&](const auto& camera) { return IsSeen(camera.weights[snapshot], k); })) {
      numbers.push_back(static_cast<int>(k));
    }
  }
  return numbers;
}

template <typename Point>
void Take(const std::vector<int>& numbers, std::vector<Point>& points) {
  if (numbers.empty()) return;
  std::vector<Point> taken;
  taken.reserve(numbers.size());
  // Lists that callers supplied may be too short: the solver has to see that.
  for (const int number : numbers) {
    if (static_cast<size_t>(number) < points.size()) taken.push_back(points[static_cast<size_t>(number)]);
  }
  points = std::move(taken);
}

std::string FaultOfLists(const cv::Size& grid, const CameraSnapshot& view) {
  const auto count = static_cast<size_t>(grid.area());
  if (view.points.size() != count || view.weights.size() != count) {
    return "A point and a weight of each of the grid's " + std::to_string(count) + " circles are needed.";
  }
  if (std::any_of(view.points.begin(), view.points.end(), [](const cv::Point2d& point) {
        return !std::isfinite(point.x) || !std::isfinite(point.y);
      })) {
    return "A point is not finite.";
  }
  if (std::any_of(view.weights.begin(), view.weights.end(),
                  [](double weight) { return weight != 0.0 && weight != 1.0; })) {
    return "A weight is neither 0 nor 1.";
  }
  if (!view.deviations.empty() && view.deviations.size() != count) {
    return "A deviation of each of the grid's " + std::to_string(count) + " circles is needed, or none.";
  }
  if (std::any_of(view.deviations.begin(), view.deviations.end(),
                  [](double deviation) { return !std::isfinite(deviation) || deviation < 0.0; })) {
    return "A deviation is negative or not finite.";
  }
  return "";
}

}  // namespace

int ObservedPoints::InGrid(size_t snapshot, int point) const {
  if (point < 0 || snapshot >= numbers.size() || numbers[snapshot].empty()) return point;
  return numbers[snapshot].at(static_cast<size_t>(point));
}

ObservedPoints ObservedIn(const SnapshotList& snapshots) {
  ObservedPoints seen;
  seen.target = snapshots.target;
  for (const auto& camera : snapshots.cameras) {
    seen.cameras.push_back(camera.points);
    seen.deviations.push_back(camera.deviations);
  }
  for (size_t i = 0; i < snapshots.Count(); ++i) {
    seen.numbers.push_back(NumbersIn(snapshots, i));
    Take(seen.numbers[i], seen.target[i]);
    for (auto& camera : seen.cameras) Take(seen.numbers[i], camera[i]);
    for (auto& camera : seen.deviations) {
      if (!camera.empty()) Take(seen.numbers[i], camera[i]);
    }
  }
  return seen;
}

int FewestPoints(const cv::Size& grid) {
  return (3 * grid.area() + 3) / 4;
}

std::string FaultOfSnapshot(const cv::Size& grid, const std::vector<CameraSnapshot>& views) {
  for (const CameraSnapshot& view : views) {
    std::string fault = FaultOfLists(grid, view);
    if (!fault.empty()) return fault;
  }
  int seen = 0;
  for (size_t k = 0; k < static_cast<size_t>(grid.area()); ++k) {
    const bool byAll = std::all_of(views.begin(), views.end(),
                                   [k](const CameraSnapshot& view) { return IsSeen(view.weights, k); });
    seen += byAll ? 1 : 0;
  }
  if (seen >= FewestPoints(grid)) return "";
  return "Only " + std::to_string(seen) + " of " + std::to_string(grid.area()) + " circles are seen" +
         (views.size() > 1 ? " by both cameras: " : ": ") + std::to_string(FewestPoints(grid)) +
         " are the fewest.";
}

bool IsPart(const CameraSnapshot& view) {
  return std::any_of(view.weights.begin(), view.weights.end(), [](double weight) { return weight == 0.0; });
}

std::vector<cv::Point2d> SeenPointsOf(const CameraSnapshot& view) {
  std::vector<cv::Point2d> seen;
  for (size_t k = 0; k < view.points.size(); ++k) {
    if (IsSeen(view.weights, k)) seen.push_back(view.points[k]);
  }
  return seen;
}

CameraSnapshot WithoutNeedlessWeights(CameraSnapshot view) {
  if (!IsPart(view)) view.weights.clear();
  return view;
}

}  // namespace velmora
