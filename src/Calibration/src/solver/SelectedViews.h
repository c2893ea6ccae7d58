/// Solves from those views and points that belong to the camera.
#pragma once

#include "solver/Robust.h"
#include "solver/SolutionMatrices.h"

namespace velmora::solver {

/// What to solve from, and how.
struct SelectionOptions {
  bool robust = false;      ///< leave out what disagrees; else all is taken
  double discRadius = 0.0;  ///< 0: image points are pictures of centres
};

Selection SelectedFrom(const std::vector<View>& views, const StageOptions& stages,
                       const SelectionOptions& options);

/// The solution's views are those with pixels corrected for the discs' bias.
Solved SolveSelected(const Selection& selection, const StageOptions& stages, double discRadius);

}  // namespace velmora::solver
