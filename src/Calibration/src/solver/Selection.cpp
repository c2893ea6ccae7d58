/// Which views and points a rig is computed from, and which were rejected.
#include "solver/Selection.h"

#include <numeric>

namespace velmora::solver {

Selection AllOf(const std::vector<TargetView>& views) {
  Selection all;
  all.views = views;
  all.kept.resize(views.size());
  std::iota(all.kept.begin(), all.kept.end(), size_t{0});
  return all;
}

bool AreEnough(size_t left, size_t of) {
  constexpr size_t MANY = 5;
  constexpr size_t FEWEST = 3;
  return left >= MANY ? 2 * left >= of : left >= FEWEST && 2 * left > of;
}

}  // namespace velmora::solver
