/// Takes views back that were left out before the lens was known.
#include "solver/Readmission.h"

#include <algorithm>

#include "foundation/Median.h"
#include "solver/KnownLens.h"
#include "solver/Outliers.h"
#include "solver/Start.h"

namespace velmora::solver {

namespace {

/// The median distance of a view's points, as a share of the image's width: the lens may still be a little
/// off where only such views have seen it, but a view in a wrong order is further away.
constexpr double WIDTHS = 0.004;

/// False when the view has no pose, or is too far off with the best one.
bool Fits(const View& view, const Lens& lens, double limit, Pose& pose) {
  cv::Matx33d homography;
  if (!HomographyOf(view, homography)) return false;
  const Solution solution = SolvePoses({view}, {lens, {}, {StartPoseOf(view, lens)}});
  if (!solution.usable) return false;
  pose = solution.estimate.poses.front();
  return MedianOf(ResidualsOf({view}, solution.estimate).front()) <= limit;
}

void Insert(const View& view, size_t number, const Pose& pose, Selection& selection, Estimate& estimate) {
  const auto place = std::lower_bound(selection.kept.begin(), selection.kept.end(), number);
  const auto at = place - selection.kept.begin();
  selection.kept.insert(place, number);
  selection.views.insert(selection.views.begin() + at, view);
  estimate.poses.insert(estimate.poses.begin() + at, pose);
}

}  // namespace

bool Readmit(const std::vector<View>& views, const cv::Size& imageSize, Selection& selection,
             Estimate& estimate) {
  std::vector<Rejected> stillOut;
  for (const Rejected& rejected : selection.rejected) {
    Pose pose;
    const bool whole = rejected.point == Rejected::WHOLE_VIEW;
    if (whole && Fits(views[rejected.view], estimate.lens, WIDTHS * imageSize.width, pose)) {
      Insert(views[rejected.view], rejected.view, pose, selection, estimate);
    } else {
      stillOut.push_back(rejected);
    }
  }
  const bool found = stillOut.size() < selection.rejected.size();
  selection.rejected = std::move(stillOut);
  return found;
}

}  // namespace velmora::solver
