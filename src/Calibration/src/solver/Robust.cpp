/// Finds the views and points that do not belong to the picture of a camera that the others give.
#include "solver/Robust.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "solver/Median.h"
#include "solver/Start.h"

namespace sparse {

namespace {

constexpr int ROUNDS = 15;
constexpr double CAUCHY = 3.0;                 // in standard deviations
constexpr double OUTLIER = 4.5;                // in standard deviations
constexpr double MOST_OUTLIERS = 0.25;         // of a view's points
constexpr double MEDIAN_TO_DEVIATION = 1.177;  // of the distance of two normal coordinates
constexpr double SCREEN_FACTOR = 8.0;
/// Distortion alone bends the grid by less than this share of the image's width.
constexpr double SCREEN_WIDTHS = 0.008;
constexpr size_t FEWEST_VIEWS = 5;

using Residuals = std::vector<std::vector<double>>;

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

void Weigh(std::vector<View>& views, const Residuals& residuals, double scale) {
  for (size_t i = 0; i < views.size(); ++i) {
    views[i].weights.resize(residuals[i].size());
    for (size_t k = 0; k < residuals[i].size(); ++k) {
      const double relative = residuals[i][k] / scale;
      views[i].weights[k] = 1.0 / (1.0 + relative * relative);
    }
  }
}

double RootMeanSquare(const std::vector<double>& values) {
  double squares = 0.0;
  for (const double value : values) squares += value * value;
  return std::sqrt(squares / static_cast<double>(values.size()));
}

/// Applies the thresholds to the residuals of the screened views.
Selection Thresholded(const Selection& screened, const Residuals& residuals, double deviation) {
  Selection selection;
  selection.rejected = screened.rejected;
  for (size_t i = 0; i < screened.views.size(); ++i) {
    std::vector<Rejected> outliers;
    View view = screened.views[i];
    view.weights.assign(view.object.size(), 1.0);
    for (size_t k = 0; k < residuals[i].size(); ++k) {
      if (residuals[i][k] <= OUTLIER * deviation) continue;
      view.weights[k] = 0.0;
      outliers.push_back({screened.kept[i], static_cast<int>(k), residuals[i][k],
                          "far from where the other points want it"});
    }
    if (static_cast<double>(outliers.size()) > MOST_OUTLIERS * static_cast<double>(view.object.size())) {
      selection.rejected.push_back({screened.kept[i], Rejected::WHOLE_VIEW, RootMeanSquare(residuals[i]),
                                    "disagrees with the other views"});
      continue;
    }
    if (outliers.empty()) view.weights.clear();
    selection.rejected.insert(selection.rejected.end(), outliers.begin(), outliers.end());
    selection.kept.push_back(screened.kept[i]);
    selection.views.push_back(std::move(view));
  }
  return selection;
}

bool LeavesEnough(size_t left, size_t of) {
  return left >= FEWEST_VIEWS && 2 * left >= of;
}

}  // namespace

Selection Screened(const std::vector<View>& views, const cv::Size& imageSize) {
  std::vector<double> residuals;
  residuals.reserve(views.size());
  for (const View& view : views) residuals.push_back(HomographyResidual(view));
  const double limit = std::max(SCREEN_FACTOR * MedianOf(residuals), SCREEN_WIDTHS * imageSize.width);
  Selection selection;
  for (size_t i = 0; i < views.size(); ++i) {
    if (residuals[i] <= limit) {
      selection.kept.push_back(i);
      selection.views.push_back(views[i]);
    } else {
      selection.rejected.push_back({i, Rejected::WHOLE_VIEW, residuals[i],
                                    "not the picture of a plane grid: wrong order or another pattern"});
    }
  }
  if (LeavesEnough(selection.kept.size(), views.size())) return selection;
  selection = {};
  for (size_t i = 0; i < views.size(); ++i) selection.kept.push_back(i);
  selection.views = views;
  return selection;
}

Selection Selected(
    const std::vector<View>& views, const StageOptions& options,
    const std::function<std::vector<View>(const std::vector<View>&, const Estimate&)>& correct) {
  Selection screened = Screened(views, options.imageSize);
  std::vector<View> weighted = screened.views;
  StagedSolution staged = SolveStages(weighted, StartOf(weighted, options.imageSize), options);
  if (!staged.solution.usable) return screened;
  Residuals residuals;
  double deviation = 0.0;
  for (int round = 0; round < ROUNDS; ++round) {
    weighted = correct(screened.views, staged.solution.estimate);
    residuals = ResidualsOf(weighted, staged.solution.estimate);
    const double now = DeviationOf(residuals);
    if (std::abs(now - deviation) < 1e-4 * now) break;
    deviation = now;
    Weigh(weighted, residuals, CAUCHY * deviation);
    staged = SolveAgain(weighted, staged, options);
  }
  Selection selection = Thresholded(screened, residuals, deviation);
  return LeavesEnough(selection.kept.size(), views.size()) ? selection : screened;
}

}  // namespace sparse
