/// Which causes could be behind residuals that are no noise, and what each does to the result.
#include "quality/SystematicErrors.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "quality/EnlargedEquations.h"
#include "quality/PrintErrors.h"
#include "quality/ProjectionUncertainty.h"

namespace velmora {

namespace {

using Cause = SystematicError::Cause;

class Collection {
 public:
  Collection(const Solution& solution, size_t camera, const std::vector<cv::Point2f>& area, double least)
      : camera_(solution.rig.cameras[camera]),
        place_(LayoutOf(solution).cameras[camera]),
        area_(area),
        least_(least) {}

  void Add(Cause cause, const OmittedEffect& effect) {
    if (effect.significant) Add(cause, effect, ShiftInArea(Own(effect.shift)));
  }

  /// Here the shift is of all of the full model's parameters of the camera.
  void AddLensTerms(const OmittedEffect& effect) {
    if (effect.significant) Add(Cause::LensTerms, effect, ShiftInArea(effect.shift));
  }

  /// Here it is of the camera's own parameters and of the terms.
  void AddRadial(const OmittedEffect& effect, const RadialTerms& terms) {
    if (!effect.significant) return;
    const ProjectionUncertainty moved(camera_.intrinsics, camera_.imageSize, area_, &terms);
    Add(Cause::Radial, effect, moved.InArea(effect.shift * effect.shift.transpose()));
  }

  /// What is called noise is partly the discs' own: only the rest of it counts. `share` is that rest's.
  void AddPrintErrors(const OmittedEffect& effect, double share) {
    const double shift = ShiftInArea(Own(effect.shift));
    if (shift > std::sqrt(share) * least_) errors_.push_back({Cause::PrintErrors, effect, shift, shift, {}});
  }

  /// The result is of neither state: the one that it is further from counts, but the camera that is meant is
  /// that of most views.
  void AddChange(const Change& change) {
    const double before = ShiftInArea(Own(change.before));
    const double after = change.kind == Change::Kind::Mixture ? before : ShiftInArea(Own(change.after));
    Add({Cause::Change, change.effect, std::max(before, after), std::min(before, after), change});
  }

  std::vector<SystematicError> Sorted() {
    std::stable_sort(errors_.begin(), errors_.end(), [](const SystematicError& a, const SystematicError& b) {
      return a.effect.Excess() > b.effect.Excess();
    });
    return std::move(errors_);
  }

 private:
  void Add(Cause cause, const OmittedEffect& effect, double shift) { Add({cause, effect, shift, shift, {}}); }

  void Add(SystematicError error) {
    if (error.shift > least_) errors_.push_back(std::move(error));
  }

  Eigen::VectorXd Own(const Eigen::VectorXd& shift) const {
    return shift.segment(place_.intrinsics, place_.count);
  }

  /// How far a change of the camera's intrinsics moves projections where there are data.
  double ShiftInArea(const Eigen::VectorXd& shift) const {
    Intrinsics intrinsics = camera_.intrinsics;
    intrinsics.estimated = static_cast<int>(shift.size());
    return ProjectionUncertainty(intrinsics, camera_.imageSize, area_).InArea(shift * shift.transpose());
  }

  const Camera& camera_;
  const Layout::Block place_;
  const std::vector<cv::Point2f>& area_;
  const double least_;
  std::vector<SystematicError> errors_;
};

/// Causes of many parameters take up a part of every other one. Whether this one takes off more
/// than those do by so much that noise does not explain it.
bool IsBeyond(const OmittedEffect& effect, double explained) {
  return effect.significant &&
         effect.costReduction - explained > Threshold(static_cast<Eigen::Index>(effect.chance));
}

double SquaresOf(const OmittedEffect& effect) {
  return effect.significant ? effect.costReduction : 0.0;
}

}  // namespace

std::vector<SystematicError> SystematicErrorsOf(const Solution& solution, size_t camera,
                                                const std::vector<cv::Point2f>& area, double least) {
  const OmittedEffects omitted = OmittedEffectsOf(solution, camera);
  Collection errors(solution, camera, area, least);
  errors.Add(Cause::Bend, omitted.bend);
  errors.Add(Cause::Proportions, omitted.proportions);
  errors.AddLensTerms(omitted.lensTerms);
  if (omitted.radial.significant) errors.AddRadial(omitted.radial, RadialTermsFor(solution, camera));
  double explained = std::max({SquaresOf(omitted.bend), SquaresOf(omitted.proportions),
                               SquaresOf(omitted.lensTerms), SquaresOf(omitted.radial)});
  using Kind = Change::Kind;
  for (const Eigen::MatrixXd& changing :
       {ChangingLens(solution, camera), ChangingFocalLength(solution, camera)}) {
    for (const Change& change :
         ChangesOf(solution, changing, camera, {Kind::Step, Kind::Drift, Kind::Distance, Kind::Mixture})) {
      errors.AddChange(change);
      explained = std::max(explained, change.effect.costReduction);
    }
  }
  const OmittedEffect print = OmittedPrintErrors(solution);
  if (IsBeyond(print, explained)) {
    const double costReduction = print.costReduction * NoiseVariance(solution);
    errors.AddPrintErrors(print, std::max(1.0 - costReduction / solution.cost, 0.0));
  }
  // Sheets that are bent by hand, in each view in another way, look a little like moving ones.
  const double byOthers = std::max({explained, SquaresOf(omitted.bendByView), SquaresOf(print)});
  if (IsBeyond(omitted.motion, byOthers)) errors.Add(Cause::Motion, omitted.motion);
  return errors.Sorted();
}

double HintedShift(const Solution& solution, size_t camera, const std::vector<cv::Point2f>& area) {
  Collection errors(solution, camera, area, 0.0);
  for (const Change& change : ChangesOf(solution, ChangingFocalLength(solution, camera), camera,
                                        {Change::Kind::Step, Change::Kind::Drift}, LIKELY)) {
    errors.AddChange(change);
  }
  const std::vector<SystematicError> sorted = errors.Sorted();
  return sorted.empty() ? 0.0 : sorted.front().nearer;
}

}  // namespace velmora
