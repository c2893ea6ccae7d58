/// Finds the views and points that do not belong to the picture of a camera that the others give.
#pragma once

#include <functional>
#include <vector>

#include "solver/LensStages.h"
#include "solver/Selection.h"

namespace velmora::solver {

/// Solves with weights that fall with the residuals until outliers hardly count, then leaves out points
/// beyond 4.5 standard deviations, and views of which less than half is left. Views that were screened out
/// before anything was known of the lens, and fit it now that it is known, are taken back. The pixels are
/// changed by `correct` once a camera is known.
///
/// Where too few views would be left to call the others wrong, the selection says so: views then go only when
/// hardly anything is left of them, and where even that leaves too few, nothing is left out.
Selection Selected(
    const std::vector<View>& views, const StageOptions& options,
    const std::function<std::vector<View>(const std::vector<View>&, const Estimate&)>& correct);

}  // namespace velmora::solver
