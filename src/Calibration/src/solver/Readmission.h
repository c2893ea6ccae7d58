/// Takes views back that were left out before the intrinsics were known.
#pragma once

#include <vector>

#include "solver/Selection.h"

namespace velmora::solver {

/// Of one camera: adds to the selection the views among those that it left out whole which the camera shows
/// about where they were observed, with their poses. `selection.views` have the poses of the estimate. True
/// when there are such views.
bool Readmit(const std::vector<TargetView>& views, const Camera& camera, Selection& selection);

}  // namespace velmora::solver
