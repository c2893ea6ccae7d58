/// A solution as the matrices that a calibrator hands out, and back.
#pragma once

#include <vector>

#include "solver/LensStages.h"
#include "solver/OpenCvIntrinsics.h"
#include "solver/SparseIntrinsics.h"
#include "solver/Target.h"

namespace velmora::solver {

/// What a solution of some of a target's views says.
struct Solved {
  StagedSolution staged;
  std::vector<View> views;   ///< those that it is of
  std::vector<size_t> kept;  ///< which of the target's they are
};

/// In the form of SolveIntrinsics, with a row for each view of the target. Views that were left out have the
/// pose that fits the lens best, its error and no standard deviations.
IntrinsicsResult MatricesOf(const Solved& solved, const Target& target);

/// The lens of K and D. One of 14 coefficients is the rational one where those beyond it are zero.
Lens LensOf(const IntrinsicsResult& result);

/// The solution that either solver's result for the target's views is, with the equations at it. What the
/// result left out is left out here too; `discRadius` is that of the computation.
Solved SolvedFrom(const Target& target, const SparseResult& result, double discRadius);

}  // namespace velmora::solver
