/// Finds, from residuals, the points and views that are outliers for the camera that the others determine.
#include "solver/Outliers.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/Median.h"
#include "solver/Projection.h"

namespace velmora::solver {

namespace {

constexpr double OUTLIER = 4.5;                // in standard deviations
constexpr double MEDIAN_TO_DEVIATION = 1.177;  // of the distance of two normal coordinates
constexpr double FEWEST_POINTS = 6;
/// The least share of the squared distances from the middle in the direction in which they are least.
constexpr double LEAST_SPAN = 0.02;

/// The products of the points' distances from their own middle; weightless points do not count.
cv::Matx22d SpreadOf(const Observation& observation, const std::vector<double>& weights) {
  double count = 0.0;
  cv::Vec2d sum;
  for (size_t k = 0; k < observation.object.size(); ++k) {
    count += weights[k];
    sum += weights[k] * cv::Vec2d(observation.object[k].x, observation.object[k].y);
  }
  const cv::Vec2d middle = sum * (1.0 / std::max(count, 1.0));
  cv::Matx22d spread = cv::Matx22d::zeros();
  for (size_t k = 0; k < observation.object.size(); ++k) {
    const cv::Vec2d away = cv::Vec2d(observation.object[k].x, observation.object[k].y) - middle;
    spread += weights[k] * (away * away.t());
  }
  return spread;
}

/// Whether the points that are left determine the view's pose about as all of them do.
bool SpansTarget(const Observation& observation, const std::vector<double>& weights) {
  const cv::Matx22d left = SpreadOf(observation, weights);
  const cv::Matx22d all = SpreadOf(observation, std::vector<double>(observation.object.size(), 1.0));
  // The least share, in any direction: left - share * all is singular.
  const cv::Matx22d shares = all.inv() * left;
  const double half = 0.5 * cv::trace(shares);
  const double least = half - std::sqrt(std::max(half * half - cv::determinant(shares), 0.0));
  return least >= LEAST_SPAN;
}

bool IsEnoughOf(const Observation& observation, const std::vector<double>& weights, size_t outliers,
                double least) {
  const auto count = static_cast<double>(observation.object.size());
  const double left = count - static_cast<double>(outliers);
  // Targets of a handful of points are taken whole or not at all.
  return left >= std::min(FEWEST_POINTS, count) && left >= least * count && SpansTarget(observation, weights);
}

/// Which image of which view.
struct ImageNumber {
  size_t view;
  size_t camera;
};

struct RejectionLimits {
  double standardDeviation;
  double least;
};

std::vector<double> InPixels(std::vector<double> residuals, const Observation& observation) {
  for (size_t k = 0; k < residuals.size(); ++k) residuals[k] *= observation.Deviation(k);
  return residuals;
}

/// Takes the weight from outliers, or all points away.
void RejectFrom(Observation& observation, const ImageNumber& number, const std::vector<double>& residuals,
                const RejectionLimits& limits, std::vector<Rejected>& rejected) {
  std::vector<Rejected> outliers;
  observation.weights.assign(observation.object.size(), 1.0);
  for (size_t k = 0; k < residuals.size(); ++k) {
    if (!IsOutlier(residuals[k], limits.standardDeviation)) continue;
    observation.weights[k] = 0.0;
    outliers.push_back({number.view, static_cast<int>(k), residuals[k] * observation.Deviation(k),
                        "far from where the other points put it", number.camera});
  }
  if (outliers.empty()) {
    observation.weights.clear();
  } else if (!IsEnoughOf(observation, observation.weights, outliers.size(), limits.least)) {
    rejected.push_back({number.view, Rejected::WHOLE_VIEW, RootMeanSquare(InPixels(residuals, observation)),
                        "disagrees with the other views", number.camera});
    observation = {};
    return;
  }
  rejected.insert(rejected.end(), outliers.begin(), outliers.end());
}

}  // namespace

Residuals ResidualsOf(const std::vector<TargetView>& views, const Rig& rig) {
  Residuals residuals(views.size(), std::vector<std::vector<double>>(rig.cameras.size()));
  for (size_t camera = 0; camera < rig.cameras.size(); ++camera) {
    const Projection projection(rig.cameras[camera].intrinsics);
    for (size_t i = 0; i < views.size(); ++i) {
      const Observation& observation = views[i].observations[camera];
      const RigidTransform pose = rig.cameras[camera].cameraFromRig * views[i].rigFromTarget;
      for (size_t k = 0; k < observation.object.size(); ++k) {
        cv::Point2d pixel;
        const bool inFront = projection.Project(pose * observation.object[k], pixel);
        residuals[i][camera].push_back(inFront
                                           ? cv::norm(pixel - observation.image[k]) / observation.Deviation(k)
                                           : std::numeric_limits<double>::infinity());
      }
    }
  }
  return residuals;
}

double StandardDeviationOf(const Residuals& residuals) {
  std::vector<double> all;
  for (const auto& view : residuals) {
    for (const auto& camera : view) all.insert(all.end(), camera.begin(), camera.end());
  }
  return std::max(MedianOf(all) / MEDIAN_TO_DEVIATION, 1e-9);
}

bool IsOutlier(double residual, double standardDeviation) {
  return !(residual <= OUTLIER * standardDeviation);
}

double RootMeanSquare(const std::vector<double>& values) {
  double squaredResiduals = 0.0;
  for (const double value : values) squaredResiduals += value * value;
  return std::sqrt(squaredResiduals / static_cast<double>(values.size()));
}

Selection WithoutOutliers(const Selection& selection, const Residuals& residuals, double standardDeviation,
                          double least) {
  Selection without;
  without.rejected = selection.rejected;
  without.tooFewAgree = selection.tooFewAgree;
  for (size_t i = 0; i < selection.views.size(); ++i) {
    TargetView view = selection.views[i];
    bool isLeft = false;
    for (size_t camera = 0; camera < view.observations.size(); ++camera) {
      Observation& observation = view.observations[camera];
      if (observation.IsEmpty()) continue;
      RejectFrom(observation, {selection.kept[i], camera}, residuals[i][camera], {standardDeviation, least},
                 without.rejected);
      isLeft = isLeft || !observation.IsEmpty();
    }
    if (!isLeft) continue;
    without.kept.push_back(selection.kept[i]);
    without.views.push_back(std::move(view));
  }
  return without;
}

}  // namespace velmora::solver
