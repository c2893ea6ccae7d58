/// Calibrates cameras together with the shape of the sheet.
#include "solver/SheetCalibration.h"

#include <utility>

#include "solver/Eccentricity.h"
#include "solver/OutlierRejection.h"
#include "solver/Reordering.h"

namespace velmora::solver {

namespace {

/// The views as they were before any were selected, counted as the solution counts them.
std::vector<TargetView> Recounted(std::vector<TargetView> views, const Solution& solution) {
  for (const velmora::Recounted& image : solution.recounted) Reorder(image, views[image.view]);
  return views;
}

/// The views of a solution with the pixels that were observed.
std::vector<TargetView> AsObserved(const std::vector<TargetView>& views, const Solution& solution) {
  std::vector<TargetView> used = solution.views;
  for (size_t i = 0; i < used.size(); ++i) {
    for (size_t camera = 0; camera < used[i].observations.size(); ++camera) {
      if (used[i].observations[camera].IsEmpty()) continue;
      used[i].observations[camera].image = views[solution.kept[i]].observations[camera].image;
    }
  }
  return used;
}

/// The flat sheet of what was selected, as the ladder begins.
Solution FlatAgain(const Selection& selection, const Solution& flat, const BundleOptions& options) {
  Solution again = Adjust({flat.rig, selection.views, flat.estimated, flat.priors, {}}, options);
  CopySelection(flat, again);
  again.kept = selection.kept;
  again.rejected = selection.rejected;
  again.tooFewAgree = selection.tooFewAgree;
  return again;
}

/// Makes the flat solution one of what was selected, where that can be solved.
void TakeSelection(const Selection& selection, const BundleOptions& options, Solution& flat,
                   SheetShapes& shapes) {
  Solution again = FlatAgain(selection, flat, options);
  if (!again.usable) return;
  flat = std::move(again);
  shapes.views = selection.views;
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

void CopySelection(const Solution& from, Solution& to) {
  to.kept = from.kept;
  to.rejected = from.rejected;
  to.recounted = from.recounted;
  to.robust = from.robust;
  to.tooFewAgree = from.tooFewAgree;
  to.discRadius = from.discRadius;
}

SheetShapes ShapesOf(const std::vector<TargetView>& views, const Solution& flat, SheetLevel most,
                     const BundleOptions& options) {
  SheetShapes shapes;
  if (most == SheetLevel::Flat || !HasOneTarget(views)) {
    shapes.rungs = ClimbSheet(flat, SheetLevel::Flat, options);
    return shapes;
  }
  const std::vector<TargetView> counted = Recounted(views, flat);
  Solution first = flat;
  shapes.views = AsObserved(counted, flat);
  if (flat.robust) {
    TakeSelection(SelectedByShape(counted, flat, most, options), options, first, shapes);
  }
  shapes.rungs = ClimbSheet(first, most, options);
  for (SheetRung& rung : shapes.rungs) CopySelection(shapes.rungs.front().solution, rung.solution);
  return shapes;
}

SheetShapes KnownShapesOf(const std::vector<TargetView>& views, const Solution& flat,
                          const std::vector<cv::Point3d>& known, const BundleOptions& options) {
  SheetShapes shapes;
  const std::vector<TargetView> counted = Recounted(views, flat);
  Solution first = flat;
  shapes.views = AsObserved(counted, flat);
  if (flat.robust) {
    Solution shaped = SolveShaped(KnownProblem(flat, known, true), options);
    shaped.kept = flat.kept;
    TakeSelection(SelectedAgain(counted, shaped, options), options, first, shapes);
  }
  shapes.rungs = ClimbKnown(first, known, options);
  for (SheetRung& rung : shapes.rungs) CopySelection(shapes.rungs.front().solution, rung.solution);
  return shapes;
}

Solution Finished(const SheetShapes& shapes, size_t rung, const BundleOptions& options) {
  const Solution& chosen = shapes.rungs[rung].solution;
  if (rung == 0) return chosen;
  std::vector<TargetView> views = chosen.views;
  if (chosen.discRadius > 0.0) {
    const std::vector<TargetView> corrected =
        CorrectedForEccentricity(shapes.views, chosen.rig, chosen.views, chosen.discRadius);
    for (size_t i = 0; i < views.size(); ++i) {
      for (size_t camera = 0; camera < views[i].observations.size(); ++camera) {
        views[i].observations[camera].image = corrected[i].observations[camera].image;
      }
    }
  }
  Solution finished = SolveAgain(chosen, std::move(views), options);
  if (!finished.usable) return chosen;
  CopySelection(chosen, finished);
  finished.flat = std::make_shared<const Solution>(shapes.rungs.front().solution);
  return finished;
}

}  // namespace velmora::solver
