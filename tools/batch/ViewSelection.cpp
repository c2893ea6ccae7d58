/// Chooses few views that tell as much as many.
#include "batch/ViewSelection.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace batch {

namespace {

/// Where and how the grid stands in the frame, in coordinates whose differences weigh about alike.
using Descriptor = cv::Vec<double, 8>;

double Length(const cv::Point2d& a, const cv::Point2d& b) {
  return std::max(1e-3, cv::norm(a - b));
}

Descriptor Describe(const std::vector<cv::Point2d>& points, const cv::Size& grid, const cv::Size& frame) {
  const auto columns = static_cast<size_t>(grid.width);
  const cv::Point2d& topLeft = points.front();
  const cv::Point2d& topRight = points[columns - 1];
  const cv::Point2d& bottomLeft = points[points.size() - columns];
  const cv::Point2d& bottomRight = points.back();
  const cv::Point2d centre =
      std::accumulate(points.begin(), points.end(), cv::Point2d()) / static_cast<double>(points.size());

  const double top = Length(topLeft, topRight);
  const double bottom = Length(bottomLeft, bottomRight);
  const double left = Length(topLeft, bottomLeft);
  const double right = Length(topRight, bottomRight);
  const cv::Point2d along = (bottomLeft + bottomRight - topLeft - topRight) * 0.5;
  const double roll = std::atan2(along.y, along.x);
  const double diagonal = std::hypot(frame.width, frame.height);
  constexpr double TILT_WEIGHT = 2.0;  // sides differ by tens of percent at most
  constexpr double ROLL_WEIGHT = 0.3;
  return {2.0 * centre.x / frame.width,
          2.0 * centre.y / frame.height,
          std::log2(std::sqrt((top + bottom) * (left + right)) / diagonal),
          TILT_WEIGHT * std::log(top / bottom),
          TILT_WEIGHT * std::log(left / right),
          std::log((top + bottom) / (left + right)),
          ROLL_WEIGHT * std::cos(roll),
          ROLL_WEIGHT * std::sin(roll)};
}

}  // namespace

std::vector<size_t> SelectSpreadViews(const std::vector<std::vector<cv::Point2d>>& views,
                                      const cv::Size& grid, const cv::Size& frame, size_t count) {
  std::vector<size_t> chosen(views.size());
  std::iota(chosen.begin(), chosen.end(), size_t{0});
  if (views.size() <= count) return chosen;

  std::vector<Descriptor> descriptors;
  Descriptor mean = Descriptor::all(0.0);
  for (const auto& view : views) {
    descriptors.push_back(Describe(view, grid, frame));
    mean += descriptors.back() * (1.0 / static_cast<double>(views.size()));
  }
  // The first is the most typical view; each next one is the farthest from all chosen so far.
  chosen.clear();
  std::vector<double> distance(views.size());
  const auto distanceTo = [&](const Descriptor& place, size_t i) { return cv::norm(descriptors[i], place); };
  for (size_t i = 0; i < views.size(); ++i) distance[i] = -distanceTo(mean, i);
  while (chosen.size() < count) {
    const auto farthest = std::max_element(distance.begin(), distance.end());
    const auto index = static_cast<size_t>(farthest - distance.begin());
    for (size_t i = 0; i < views.size(); ++i) {
      const double toNew = distanceTo(descriptors[index], i);
      distance[i] = chosen.empty() ? toNew : std::min(distance[i], toNew);
    }
    chosen.push_back(index);
    for (const size_t taken : chosen) distance[taken] = -1.0;
  }
  std::sort(chosen.begin(), chosen.end());
  return chosen;
}

}  // namespace batch
