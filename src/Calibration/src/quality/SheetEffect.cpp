/// What a bent or badly printed sheet does to where the cameras of a rig stand.
#include "quality/SheetEffect.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

#include "quality/OmittedEffects.h"
#include "quality/PoseDeviations.h"

namespace velmora {

namespace {

/// What a shift of all shared parameters does to the cameras' poses, in the form of their standard
/// deviations: the largest of any camera.
PairVerdict::Deviations MovedBy(const Eigen::VectorXd& shift, const Solution& solution) {
  const Layout layout = LayoutOf(solution.rig, solution.estimated);
  PairVerdict::Deviations moved;
  for (size_t i = 1; i < solution.rig.cameras.size(); ++i) {
    const Eigen::MatrixXd products = shift * shift.transpose();
    moved = Larger(moved,
                   DeviationsOf(products, layout.cameras[i].pose, solution.rig.cameras[i].cameraFromRig.t));
  }
  return moved;
}

const std::vector<cv::Point3d>& PointsOf(const TargetView& view) {
  const auto& images = view.observations;
  return std::find_if(images.begin(), images.end(), [](const Observation& image) { return !image.IsEmpty(); })
      ->object;
}

std::string Decimal(double value, int digits) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(digits) << value;
  return text.str();
}

}  // namespace

SheetEffect EffectOfSheet(const Solution& solution) {
  SheetEffect result;
  const OmittedEffect bend = OmittedBend(solution);
  const OmittedEffect proportions = OmittedProportions(solution);
  const bool isBend = bend.Excess() >= proportions.Excess();
  const OmittedEffect& effect = isBend ? bend : proportions;
  if (!effect.significant) return result;
  const PairVerdict::Deviations moved = MovedBy(effect.shift, solution);
  if (!Beyond(moved, CAREFUL_POSE)) return result;
  const std::string size = ": rotations are off by about " + Decimal(moved.rotation, 2) +
                           " degrees, baselines by " + Decimal(100.0 * moved.baseline, 1) + " %.";
  if (isBend) {
    result.bend = DepthOfBend(bend, PointsOf(solution.views.front()));
    result.reason = "The sheet is bent by about " + Decimal(1e3 * result.bend, 1) + " mm" + size;
    result.advice = "Mount the sheet on a flat, stiff board.";
  } else {
    const double share = std::max(std::abs(effect.values(0)), std::abs(effect.values(1)));
    result.reason = "The print is out of proportion by " + Decimal(100.0 * share, 2) + " %" + size;
    result.advice = "Print it at full size, without fitting it to the page, and measure it both ways.";
  }
  return result;
}

}  // namespace velmora
