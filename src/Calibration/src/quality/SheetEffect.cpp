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

std::string Decimal(double value, int digits) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(digits) << value;
  return text.str();
}

}  // namespace

PairVerdict::Deviations LargestMoveOf(const Eigen::VectorXd& shift, const Solution& solution) {
  const Layout layout = LayoutOf(solution);
  PairVerdict::Deviations moved;
  for (size_t i = 1; i < solution.rig.cameras.size(); ++i) {
    const Eigen::MatrixXd products = shift * shift.transpose();
    moved = Larger(moved,
                   DeviationsOf(products, layout.cameras[i].pose, solution.rig.cameras[i].cameraFromRig.t));
  }
  return moved;
}

SheetEffect EffectOfSheet(const Solution& solution) {
  SheetEffect result;
  const auto [bend, proportions, both] = OmittedSheetOf(solution);
  const bool isBend = bend.Excess() >= proportions.Excess();
  const OmittedEffect& effect = isBend ? bend : proportions;
  if (!effect.significant) return result;
  const PairVerdict::Deviations moved = LargestMoveOf(effect.shift, solution);
  if (!Beyond(moved, CAREFUL_POSE)) return result;
  const std::string size = ": rotations are off by about " + Decimal(moved.rotation, 2) +
                           " degrees, baselines by " + Decimal(100.0 * moved.baseline, 1) + " %.";
  result.excess = effect.Excess();
  if (isBend) {
    result.bend = DepthOfBend(bend, MostPointsOf(solution.views));
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
