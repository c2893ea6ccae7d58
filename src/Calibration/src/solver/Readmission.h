/// Readmits views that were rejected before the intrinsics were known.
#pragma once

#include <vector>

#include "solver/Selection.h"

namespace velmora::solver {

/// Adds to the selection of one camera those of the wholly rejected views whose points the camera projects
/// near where they were observed, with their poses. `selection.views` have the poses of the estimate. True
/// when there are such views.
bool Readmit(const std::vector<TargetView>& views, const Camera& camera, Selection& selection);

}  // namespace velmora::solver
