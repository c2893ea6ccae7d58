/// Chooses few views that tell as much as many.
#include "batch/ViewSelection.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <optional>
#include <set>

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

/// The descriptor of each camera's image; nothing where it does not see the grid.
using Descriptors = std::vector<std::optional<Descriptor>>;

/// As far as half an image's width: another camera tells something else.
constexpr double SEEN_BY_ANOTHER = 1.0;

/// The distance of two views; with one camera it is that of their descriptors.
double Distance(const Descriptors& a, const Descriptors& b) {
  double sum = 0.0;
  int cameras = 0;
  for (size_t i = 0; i < a.size(); ++i) {
    if (!a[i] && !b[i]) continue;
    const double apart = a[i] && b[i] ? cv::norm(*a[i], *b[i]) : SEEN_BY_ANOTHER;
    sum += apart * apart;
    ++cameras;
  }
  return cameras == 0 ? 0.0 : std::sqrt(sum / cameras);
}

Descriptors Mean(const std::vector<Descriptors>& views) {
  Descriptors means(views.front().size());
  for (size_t i = 0; i < means.size(); ++i) {
    double count = 0.0;
    for (const Descriptors& view : views) count += view[i] ? 1.0 : 0.0;
    for (const Descriptors& view : views) {
      if (view[i]) means[i] = means[i].value_or(Descriptor::all(0.0)) + *view[i] * (1.0 / count);
    }
  }
  return means;
}

/// Views that join cameras which are not joined yet, those that join the most cameras first.
std::vector<size_t> LinkingViews(const std::vector<Descriptors>& views) {
  std::vector<size_t> group(views.front().size());
  std::iota(group.begin(), group.end(), size_t{0});
  std::vector<size_t> linking;
  while (true) {
    size_t best = 0;
    std::set<size_t> joined;
    for (size_t i = 0; i < views.size(); ++i) {
      std::set<size_t> groups;
      for (size_t camera = 0; camera < group.size(); ++camera) {
        if (views[i][camera]) groups.insert(group[camera]);
      }
      if (groups.size() <= joined.size()) continue;
      best = i;
      joined = groups;
    }
    if (joined.size() < 2) return linking;
    linking.push_back(best);
    for (size_t& number : group) number = joined.count(number) > 0 ? *joined.begin() : number;
  }
}

/// Fewer do not tell a camera's intrinsics well.
constexpr std::ptrdiff_t ENOUGH_OF_A_CAMERA = 5;

/// The camera of which the fewest views are chosen, when these are not enough and there are more of it.
std::optional<size_t> CameraInNeed(const std::vector<Descriptors>& views, const std::vector<size_t>& chosen) {
  std::optional<size_t> inNeed;
  std::ptrdiff_t fewest = ENOUGH_OF_A_CAMERA;
  for (size_t camera = 0; camera < views.front().size(); ++camera) {
    const auto all = std::count_if(views.begin(), views.end(),
                                   [&](const Descriptors& view) { return view[camera].has_value(); });
    const auto taken =
        std::count_if(chosen.begin(), chosen.end(), [&](size_t i) { return views[i][camera].has_value(); });
    if (taken >= fewest || taken == all) continue;
    fewest = taken;
    inNeed = camera;
  }
  return inNeed;
}

/// The first is the most typical view, unless some are chosen; each next one is the farthest from all chosen
/// so far, among those of a camera in need as long as there is one.
std::vector<size_t> FarthestFirst(const std::vector<Descriptors>& views, std::vector<size_t> chosen,
                                  size_t count) {
  constexpr double TAKEN = std::numeric_limits<double>::lowest();
  std::vector<double> distance(views.size());
  const auto near = [&](size_t index, bool first) {
    for (size_t i = 0; i < views.size(); ++i) {
      const double toNew = Distance(views[index], views[i]);
      distance[i] = first ? toNew : std::min(distance[i], toNew);
    }
  };
  for (size_t i = 0; i < chosen.size(); ++i) near(chosen[i], i == 0);
  if (chosen.empty()) {
    const Descriptors mean = Mean(views);
    for (size_t i = 0; i < views.size(); ++i) distance[i] = -Distance(views[i], mean);
  }
  while (chosen.size() < count) {
    for (const size_t taken : chosen) distance[taken] = TAKEN;
    std::vector<double> eligible = distance;
    const std::optional<size_t> camera = CameraInNeed(views, chosen);
    for (size_t i = 0; i < views.size() && camera; ++i) {
      if (!views[i][*camera]) eligible[i] = TAKEN;
    }
    const auto farthest = std::max_element(eligible.begin(), eligible.end());
    const auto index = static_cast<size_t>(farthest - eligible.begin());
    near(index, chosen.empty());
    chosen.push_back(index);
  }
  return chosen;
}

}  // namespace

std::vector<size_t> SelectSpreadViews(const std::vector<std::vector<cv::Point2d>>& views,
                                      const cv::Size& grid, const cv::Size& frame, size_t count) {
  return SelectSpreadViews(std::vector<std::vector<std::vector<cv::Point2d>>>{views}, grid,
                           std::vector<cv::Size>{frame}, count);
}

std::vector<size_t> SelectSpreadViews(const std::vector<std::vector<std::vector<cv::Point2d>>>& cameras,
                                      const cv::Size& grid, const std::vector<cv::Size>& frames,
                                      size_t count) {
  const size_t all = cameras.front().size();
  std::vector<size_t> chosen(all);
  std::iota(chosen.begin(), chosen.end(), size_t{0});
  if (all <= count) return chosen;

  std::vector<Descriptors> views(all, Descriptors(cameras.size()));
  for (size_t camera = 0; camera < cameras.size(); ++camera) {
    for (size_t i = 0; i < all; ++i) {
      const auto& points = cameras[camera][i];
      if (!points.empty()) views[i][camera] = Describe(points, grid, frames[camera]);
    }
  }
  chosen = LinkingViews(views);
  chosen.resize(std::min(chosen.size(), count));
  chosen = FarthestFirst(views, std::move(chosen), count);
  std::sort(chosen.begin(), chosen.end());
  return chosen;
}

}  // namespace batch
