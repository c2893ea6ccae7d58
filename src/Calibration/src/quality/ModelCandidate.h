/// What speaks for a lens model, in numbers.
#pragma once

#include "ModelChoice.h"
#include "model/Solution.h"
#include "solver/BundleAdjustment.h"

namespace velmora {

/// Of a solution of one camera with that model; `options` are those that it is solved again with, without
/// some of its views.
ModelChoice::Candidate CandidateOf(const Solution& solution, const solver::BundleOptions& options, int model);

}  // namespace velmora
