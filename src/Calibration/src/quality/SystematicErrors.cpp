/// Which causes could be behind residuals that are no noise, and what each does to the result.
#include "quality/SystematicErrors.h"

#include <algorithm>
#include <utility>

#include "quality/ProjectionUncertainty.h"

namespace velmora::solver {

namespace {

using Cause = SystematicError::Cause;

/// How far a change of the lens' parameters moves projections where there are data.
double ShiftInArea(const Lens& from, const cv::Mat& lensShift, const cv::Size& imageSize,
                   const std::vector<cv::Point2f>& area) {
  Lens lens = from;
  lens.free = lensShift.rows;
  return ProjectionUncertainty(lens, imageSize, area).InArea(lensShift * lensShift.t());
}

}  // namespace

std::vector<SystematicError> SystematicErrorsOf(const Solved& solved, const cv::Size& imageSize,
                                                const std::vector<cv::Point2f>& area, double least) {
  std::vector<SystematicError> errors;
  for (auto& [cause, effect] : {std::pair{Cause::Bend, OmittedBend(solved)},
                                std::pair{Cause::Proportions, OmittedProportions(solved)},
                                std::pair{Cause::LensTerms, OmittedLensTerms(solved)}}) {
    if (!effect.significant) continue;
    const double shift = ShiftInArea(solved.staged.solution.estimate.lens, effect.lensShift, imageSize, area);
    if (shift > least) errors.push_back({cause, effect, shift});
  }
  std::stable_sort(errors.begin(), errors.end(), [](const SystematicError& a, const SystematicError& b) {
    return a.effect.Excess() > b.effect.Excess();
  });
  return errors;
}

}  // namespace velmora::solver
