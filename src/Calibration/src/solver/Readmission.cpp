/// Readmits views that were rejected before the intrinsics were known.
#include "solver/Readmission.h"

#include <algorithm>
#include <utility>

#include "foundation/Median.h"
#include "solver/BundleAdjustment.h"
#include "solver/Initialisation.h"
#include "solver/Outliers.h"

namespace velmora::solver {

namespace {

/// The median distance of a view's points, as a share of the image's width: the intrinsics may still be a
/// little off where only such views have data, but a view in a wrong order is further away.
constexpr double WIDTHS = 0.004;

/// False when the view has no pose, or is too far off with the best one.
bool Fits(TargetView& view, const Camera& camera) {
  const Observation& observation = view.observations.front();
  if (!HasPose(observation, camera.intrinsics)) return false;
  view.rigFromTarget = StartPoseOf(observation, camera.intrinsics);
  const Rig rig{{camera}};
  const Solution solution = SolvePoses(rig, {view});
  if (!solution.usable) return false;
  view.rigFromTarget = solution.views.front().rigFromTarget;
  return MedianOf(ResidualsOf(solution.views, rig).front().front()) <= WIDTHS * camera.imageSize.width;
}

void Insert(const TargetView& view, size_t number, Selection& selection) {
  const auto position = std::lower_bound(selection.kept.begin(), selection.kept.end(), number);
  selection.views.insert(selection.views.begin() + (position - selection.kept.begin()), view);
  selection.kept.insert(position, number);
}

}  // namespace

bool Readmit(const std::vector<TargetView>& views, const Camera& camera, Selection& selection) {
  std::vector<Rejected> stillOut;
  for (const Rejected& rejected : selection.rejected) {
    TargetView view = views[rejected.view];
    if (rejected.point == Rejected::WHOLE_VIEW && Fits(view, camera)) {
      Insert(view, rejected.view, selection);
    } else {
      stillOut.push_back(rejected);
    }
  }
  const bool found = stillOut.size() < selection.rejected.size();
  selection.rejected = std::move(stillOut);
  return found;
}

}  // namespace velmora::solver
