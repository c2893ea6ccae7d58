/// Which views and points a camera is computed from, and what was left out.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "solver/Problem.h"

namespace velmora::solver {

/// What was left out, and why.
struct Rejected {
  static constexpr int WHOLE_VIEW = -1;

  size_t view = 0;
  int point = WHOLE_VIEW;
  double residual = 0.0;  ///< pixels; of a view the root of the mean square
  std::string reason;
};

/// Which views to keep, in the order of their numbers, with weights of zero for points that are left out.
struct Selection {
  std::vector<size_t> kept;
  std::vector<View> views;
  std::vector<Rejected> rejected;
  /// So few views agree with each other that none of the others could be called wrong.
  bool tooFewAgree = false;
};

/// All views, and all of their points.
Selection AllOf(const std::vector<View>& views);

/// Whether `left` views of `of` are enough to say that the rest is wrong: half of them, and where they are
/// fewer than five, three of them and more than half.
bool AreEnough(size_t left, size_t of);

}  // namespace velmora::solver
