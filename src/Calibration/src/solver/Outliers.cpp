/// Tells from residuals which points and views do not belong to the camera that the others give.
#include "solver/Outliers.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/Median.h"

namespace velmora::solver {

namespace {

constexpr double OUTLIER = 4.5;                // in standard deviations
constexpr double MEDIAN_TO_DEVIATION = 1.177;  // of the distance of two normal coordinates
constexpr double FEWEST_POINTS = 6;
/// Of the squared distances from the middle, in the direction in which they are least.
constexpr double LEAST_SPAN = 0.02;

/// The products of the points' distances from their own middle; weightless points do not count.
cv::Matx22d SpreadOf(const View& view, const std::vector<double>& weights) {
  double count = 0.0;
  cv::Vec2d sum;
  for (size_t k = 0; k < view.object.size(); ++k) {
    count += weights[k];
    sum += weights[k] * cv::Vec2d(view.object[k].x, view.object[k].y);
  }
  const cv::Vec2d middle = sum * (1.0 / std::max(count, 1.0));
  cv::Matx22d spread = cv::Matx22d::zeros();
  for (size_t k = 0; k < view.object.size(); ++k) {
    const cv::Vec2d away = cv::Vec2d(view.object[k].x, view.object[k].y) - middle;
    spread += weights[k] * (away * away.t());
  }
  return spread;
}

/// Whether the points that are left determine the view's pose about as all of them do.
bool SpansTarget(const View& view, const std::vector<double>& weights) {
  const cv::Matx22d left = SpreadOf(view, weights);
  const cv::Matx22d all = SpreadOf(view, std::vector<double>(view.object.size(), 1.0));
  // The least share, in any direction: left - share * all is singular.
  const cv::Matx22d shares = all.inv() * left;
  const double half = 0.5 * cv::trace(shares);
  const double least = half - std::sqrt(std::max(half * half - cv::determinant(shares), 0.0));
  return least >= LEAST_SPAN;
}

bool IsEnoughOf(const View& view, const std::vector<double>& weights, size_t outliers, double least) {
  const auto count = static_cast<double>(view.object.size());
  const double left = count - static_cast<double>(outliers);
  // Targets of a handful of points are taken whole or not at all.
  return left >= std::min(FEWEST_POINTS, count) && left >= least * count && SpansTarget(view, weights);
}

}  // namespace

Residuals ResidualsOf(const std::vector<View>& views, const Estimate& estimate) {
  const Projection projection(estimate.lens);
  Residuals residuals(views.size());
  for (size_t i = 0; i < views.size(); ++i) {
    for (size_t k = 0; k < views[i].object.size(); ++k) {
      const cv::Point3d& point = views[i].object[k];
      const Pose& pose = estimate.poses[i];
      cv::Point2d pixel;
      const bool seen = projection.Project(pose.R * cv::Vec3d(point.x, point.y, point.z) + pose.t, pixel);
      residuals[i].push_back(seen ? cv::norm(pixel - views[i].image[k])
                                  : std::numeric_limits<double>::infinity());
    }
  }
  return residuals;
}

double DeviationOf(const Residuals& residuals) {
  std::vector<double> all;
  for (const auto& view : residuals) all.insert(all.end(), view.begin(), view.end());
  return std::max(MedianOf(all) / MEDIAN_TO_DEVIATION, 1e-9);
}

bool IsOutlier(double residual, double deviation) {
  return !(residual <= OUTLIER * deviation);
}

double RootMeanSquare(const std::vector<double>& values) {
  double squares = 0.0;
  for (const double value : values) squares += value * value;
  return std::sqrt(squares / static_cast<double>(values.size()));
}

Selection WithoutOutliers(const Selection& selection, const Residuals& residuals, double deviation,
                          double least) {
  Selection without;
  without.rejected = selection.rejected;
  without.tooFewAgree = selection.tooFewAgree;
  for (size_t i = 0; i < selection.views.size(); ++i) {
    std::vector<Rejected> outliers;
    View view = selection.views[i];
    view.weights.assign(view.object.size(), 1.0);
    for (size_t k = 0; k < residuals[i].size(); ++k) {
      if (!IsOutlier(residuals[i][k], deviation)) continue;
      view.weights[k] = 0.0;
      outliers.push_back({selection.kept[i], static_cast<int>(k), residuals[i][k],
                          "far from where the other points put it"});
    }
    if (outliers.empty()) {
      view.weights.clear();
    } else if (!IsEnoughOf(view, view.weights, outliers.size(), least)) {
      without.rejected.push_back({selection.kept[i], Rejected::WHOLE_VIEW, RootMeanSquare(residuals[i]),
                                  "disagrees with the other views"});
      continue;
    }
    without.rejected.insert(without.rejected.end(), outliers.begin(), outliers.end());
    without.kept.push_back(selection.kept[i]);
    without.views.push_back(std::move(view));
  }
  return without;
}

}  // namespace velmora::solver
