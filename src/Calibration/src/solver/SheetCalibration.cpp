/// Calibrates cameras together with the shape of the sheet.
#include "solver/SheetCalibration.h"

#include <utility>

#include "solver/Eccentricity.h"
#include "solver/OutlierRejection.h"
#include "solver/Reordering.h"

namespace velmora::solver {

namespace {

void Note(const Selection& selection, const Solution& flat, Solution& solution) {
  solution.kept = selection.kept;
  solution.rejected = selection.rejected;
  solution.tooFewAgree = selection.tooFewAgree;
  solution.recounted = flat.recounted;
  solution.discRadius = flat.discRadius;
  solution.robust = flat.robust;
}

/// The views as they were before any were selected, counted as the solution counts them.
std::vector<TargetView> Recounted(std::vector<TargetView> views, const Solution& solution) {
  for (const velmora::Recounted& image : solution.recounted) Reorder(image, views[image.view]);
  return views;
}

/// The flat sheet of what was selected, as the ladder begins.
Solution FlatAgain(const Selection& selection, const Solution& flat, const BundleOptions& options) {
  Solution again = Adjust({flat.rig, selection.views, flat.estimated, flat.priors, {}}, options);
  Note(selection, flat, again);
  return again;
}

/// Selects twice: the smooth shape of the first time tells what is no part of the sheet, the free one of the
/// second how precise its points are.
Selection SelectedByShape(const std::vector<TargetView>& views, const Solution& flat, SheetLevel most,
                          const BundleOptions& options) {
  Solution bent = SolveShaped(ShapedProblem(flat, SheetLevel::BentProportions, true), options);
  bent.kept = flat.kept;
  Selection selection = SelectedAgain(views, bent, options);
  if (most < SheetLevel::FreePoints || options.progress.IsGivenUp()) return selection;
  Solution again = FlatAgain(selection, flat, options);
  if (!again.usable) return selection;
  Solution free = SolveShaped(ShapedProblem(again, SheetLevel::FreePointsProportions, true), options);
  if (!free.usable) return selection;
  free.kept = selection.kept;
  return SelectedAgain(views, free, options);
}

}  // namespace

SheetShapes ShapesOf(const std::vector<TargetView>& views, const Solution& flat, SheetLevel most,
                     const BundleOptions& options) {
  SheetShapes shapes;
  if (most == SheetLevel::Flat || !HasOneTarget(views)) {
    shapes.rungs = ClimbSheet(flat, SheetLevel::Flat, options);
    return shapes;
  }
  const std::vector<TargetView> counted = Recounted(views, flat);
  Solution first = flat;
  if (flat.robust) {
    const Selection selection = SelectedByShape(counted, flat, most, options);
    first = FlatAgain(selection, flat, options);
    shapes.views = selection.views;
  } else {
    shapes.views = counted;
  }
  shapes.rungs = ClimbSheet(first.usable ? first : flat, most, options);
  for (SheetRung& rung : shapes.rungs) {
    const Solution& from = shapes.rungs.front().solution;
    rung.solution.kept = from.kept;
    rung.solution.rejected = from.rejected;
    rung.solution.recounted = from.recounted;
    rung.solution.robust = from.robust;
    rung.solution.tooFewAgree = from.tooFewAgree;
    rung.solution.discRadius = from.discRadius;
  }
  return shapes;
}

}  // namespace velmora::solver
