/// Which views and points a rig is computed from, and which were rejected.
#pragma once

#include <cstddef>
#include <vector>

#include "model/Solution.h"

namespace velmora::solver {

/// Which views to keep, in the order of their numbers, with weights of zero for rejected points and empty
/// observations of cameras whose images are rejected.
struct Selection {
  std::vector<size_t> kept;
  std::vector<TargetView> views;
  std::vector<Rejected> rejected;
  /// So few views agree with each other that none of the others could be called wrong.
  bool tooFewAgree = false;
};

/// All views, and all of their points.
Selection AllOf(const std::vector<TargetView>& views);

/// Whether `left` views of `of` are enough to say that the rest is wrong: half of them, and where they are
/// fewer than five, three of them and more than half.
bool AreEnough(size_t left, size_t of);

}  // namespace velmora::solver
