/// Tells which views are repetitions of others.
#pragma once

#include <cstddef>
#include <vector>

#include "model/Rig.h"

namespace velmora::solver {

/// The group of each view, numbered from 0 in the order of their first views. Views are of one group when all
/// cameras that took images of both saw the target's points within half a hundredth of the image's width (a
/// few pixels) of each other: such views share their errors, and are no more independent than one.
std::vector<size_t> GroupsOf(const std::vector<TargetView>& views, const Rig& rig);

/// How many groups there are.
size_t CountOfGroups(const std::vector<size_t>& groups);

}  // namespace velmora::solver
