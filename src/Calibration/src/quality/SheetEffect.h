/// What a bent or badly printed sheet does to where the cameras of a rig stand.
#pragma once

#include <Eigen/Core>
#include <string>

#include "PairVerdict.h"
#include "model/Solution.h"

namespace velmora {

struct SheetEffect {
  double bend = 0.0;   ///< metres from the lowest dot to the highest; 0 where proportions are the cause
  std::string reason;  ///< empty when the residuals show none, or when it hardly moves any camera
  std::string advice;
  double excess = 0.0;  ///< what it takes off beyond noise, see OmittedEffect
};

/// How far a shift of all shared parameters moves the cameras of a rig, as deviations are told: the most of
/// any.
PairVerdict::Deviations LargestMoveOf(const Eigen::VectorXd& shift, const Solution& solution);

/// The effect of the sheet on a solution of two cameras or more: of the cause that takes most off the cost.
SheetEffect EffectOfSheet(const Solution& solution);

}  // namespace velmora
