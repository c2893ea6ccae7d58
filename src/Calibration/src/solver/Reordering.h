/// Puts images right whose points were counted from another end of the target, and names those of another
/// part of a bigger one.
#pragma once

#include <vector>

#include "model/Solution.h"

namespace velmora::solver {

/// The other orders of a plane target's points in which it looks the same: counted from another end by rows,
/// by columns or by both. One camera cannot tell them from each other, a rig can.
std::vector<std::vector<size_t>> OtherOrders(const std::vector<cv::Point3d>& object);

/// Puts the image of its camera in that order.
void Reorder(const Recounted& recounted, TargetView& view);

/// Of the images of `views` that were left out whole of the solution: those that fit its rig, together with
/// the other images of their view, once their points are counted from another end.
std::vector<Recounted> RecountedImages(const std::vector<TargetView>& views, const Solution& solution);

/// Of the images of `views` that were left out whole: those that fit the rig once their points are taken for
/// others, a row or a column or two further. The sheet has more of them than the target: its cameras saw
/// different parts of it. Says so as the reason.
void NameShiftedImages(const std::vector<TargetView>& views, Solution& solution);

}  // namespace velmora::solver
