/// Which causes could be behind residuals that are no noise, and what each does to the result.
#include "quality/SystematicErrors.h"

#include <algorithm>
#include <utility>

#include "quality/ProjectionUncertainty.h"

namespace velmora {

namespace {

using Cause = SystematicError::Cause;

/// How far a change of a camera's intrinsics moves projections where there are data.
double ShiftInArea(const Camera& camera, const Eigen::VectorXd& shift, const std::vector<cv::Point2f>& area) {
  Intrinsics intrinsics = camera.intrinsics;
  intrinsics.estimated = static_cast<int>(shift.size());
  return ProjectionUncertainty(intrinsics, camera.imageSize, area).InArea(shift * shift.transpose());
}

}  // namespace

std::vector<SystematicError> SystematicErrorsOf(const Solution& solution, size_t camera,
                                                const std::vector<cv::Point2f>& area, double least) {
  const Layout::Block block = LayoutOf(solution.rig, solution.estimated).cameras[camera];
  std::vector<SystematicError> errors;
  for (auto& [cause, effect] : {std::pair{Cause::Bend, OmittedBend(solution)},
                                std::pair{Cause::Proportions, OmittedProportions(solution)},
                                std::pair{Cause::LensTerms, OmittedLensTerms(solution, camera)}}) {
    if (!effect.significant) continue;
    const Eigen::VectorXd own = cause == Cause::LensTerms
                                    ? effect.shift
                                    : Eigen::VectorXd(effect.shift.segment(block.intrinsics, block.count));
    const double shift = ShiftInArea(solution.rig.cameras[camera], own, area);
    if (shift > least) errors.push_back({cause, effect, shift});
  }
  std::stable_sort(errors.begin(), errors.end(), [](const SystematicError& a, const SystematicError& b) {
    return a.effect.Excess() > b.effect.Excess();
  });
  return errors;
}

}  // namespace velmora
