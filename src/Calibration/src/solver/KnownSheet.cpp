/// The shape of a sheet that was measured before.
#include "solver/KnownSheet.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmora::solver {

namespace {

/// With fewer, places say little of what target they are of.
constexpr size_t FEWEST_POINTS = 12;

/// How far from its place a point can be taken for it.
double ReachOf(const std::vector<cv::Point3d>& points) {
  double least = std::numeric_limits<double>::infinity();
  for (size_t i = 0; i < points.size(); ++i) {
    for (size_t k = 0; k < i; ++k) least = std::min(least, cv::norm(points[i] - points[k]));
  }
  return 0.5 * least;
}

size_t NearestOf(const std::vector<cv::Point3d>& points, const cv::Point3d& to) {
  const auto nearest = std::min_element(
      points.begin(), points.end(),
      [&to](const cv::Point3d& a, const cv::Point3d& b) { return cv::norm(a - to) < cv::norm(b - to); });
  return static_cast<size_t>(nearest - points.begin());
}

bool IsFinite(const cv::Point3d& point) {
  return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

bool NoteNearestPlaces(const std::vector<cv::Point3d>& known, double reach, Observation& observation) {
  observation.places.clear();
  observation.places.reserve(observation.object.size());
  std::vector<bool> taken(known.size(), false);
  for (const cv::Point3d& point : observation.object) {
    const size_t place = NearestOf(known, point);
    if (!(cv::norm(known[place] - point) < reach) || taken[place]) return false;
    taken[place] = true;
    observation.places.push_back(place);
  }
  return true;
}

}  // namespace

bool NoteNearestPlaces(const std::vector<cv::Point3d>& known, std::vector<TargetView>& views) {
  if (known.size() < FEWEST_POINTS) return false;
  const double reach = ReachOf(known);
  for (TargetView& view : views) {
    for (Observation& observation : view.observations) {
      if (!NoteNearestPlaces(known, reach, observation)) return false;
    }
  }
  return true;
}

bool IsShapeOf(const std::vector<cv::Point3d>& target, const std::vector<cv::Point3d>& known) {
  if (known.size() != target.size() || known.size() < FEWEST_POINTS) return false;
  if (!std::all_of(known.begin(), known.end(), IsFinite)) return false;
  const double reach = ReachOf(target);
  for (size_t i = 0; i < target.size(); ++i) {
    if (!(cv::norm(known[i] - target[i]) < reach)) return false;
  }
  return true;
}

}  // namespace velmora::solver
