/// Finds the views that are no image of a plane target, before anything is known of the camera.
#include "solver/Screening.h"

#include <algorithm>
#include <functional>

#include "foundation/Median.h"
#include "solver/Division.h"
#include "solver/Initialisation.h"

namespace velmora::solver {

namespace {

constexpr double FACTOR = 8.0;  // beyond the median
/// What distortion leaves beside the shared one bends the grid by less than this share of the image's width.
constexpr double WIDTHS = 0.008;

std::vector<double> ResidualsOf(const std::vector<TargetView>& views,
                                const std::function<double(const Observation&)>& residualOf) {
  std::vector<double> residuals;
  residuals.reserve(views.size());
  for (const TargetView& view : views) residuals.push_back(residualOf(view.observations.front()));
  return residuals;
}

double LimitFor(const std::vector<double>& residuals, const cv::Size& imageSize) {
  return std::max(FACTOR * MedianOf(residuals), WIDTHS * imageSize.width);
}

bool AreAllWithin(const std::vector<double>& residuals, double limit) {
  return std::all_of(residuals.begin(), residuals.end(), [&](double residual) { return residual <= limit; });
}

}  // namespace

Selection Screened(const std::vector<TargetView>& views, const cv::Size& imageSize) {
  std::vector<double> residuals =
      ResidualsOf(views, [](const Observation& view) { return HomographyResidual(view); });
  double limit = LimitFor(residuals, imageSize);
  if (AreAllWithin(residuals, limit)) return AllOf(views);
  // Views that fill the image of a wide lens are as far from a homography as wrong ones. Looking for the
  // distortion takes longer than a computation: only where there is something to tell apart.
  std::vector<Observation> observations;
  observations.reserve(views.size());
  for (const TargetView& view : views) observations.push_back(view.observations.front());
  const Division division = BestDivision(observations, imageSize, WIDTHS * imageSize.width);
  residuals = ResidualsOf(views, [&](const Observation& view) { return HomographyResidual(view, division); });
  limit = LimitFor(residuals, imageSize);
  Selection selection;
  for (size_t i = 0; i < views.size(); ++i) {
    if (residuals[i] <= limit) {
      selection.kept.push_back(i);
      selection.views.push_back(views[i]);
    } else {
      selection.rejected.push_back({i, Rejected::WHOLE_VIEW, residuals[i],
                                    "not the picture of a plane grid: wrong order or another pattern", 0});
    }
  }
  if (AreEnough(selection.kept.size(), views.size())) return selection;
  selection = AllOf(views);
  selection.tooFewAgree = true;
  return selection;
}

}  // namespace velmora::solver
