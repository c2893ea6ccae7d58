/// Takes views back that were left out before the lens was known.
#pragma once

#include <vector>

#include "solver/Selection.h"

namespace velmora::solver {

/// Adds to the selection the views among those that it left out whole which the estimate's lens shows about
/// where they were seen, and to the estimate their poses. True when there are such views.
bool Readmit(const std::vector<View>& views, const cv::Size& imageSize, Selection& selection,
             Estimate& estimate);

}  // namespace velmora::solver
