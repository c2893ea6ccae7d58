/// Finds the poses of views that a lens already known has seen.
#pragma once

#include <vector>

#include "solver/LevenbergMarquardt.h"

namespace velmora::solver {

/// From the start's poses to those of least squares, one for each view; the start's lens stays as it is.
Solution SolvePoses(const std::vector<View>& views, const Estimate& start);

}  // namespace velmora::solver
