/// Solves from those views and points that belong to the camera.
#include "solver/SelectedViews.h"

#include "solver/DiscBias.h"
#include "solver/Start.h"

namespace velmora::solver {

namespace {

std::vector<View> Corrected(const std::vector<View>& views, const Estimate& estimate, double discRadius) {
  return discRadius > 0.0 ? WithoutDiscBias(views, estimate, discRadius) : views;
}

}  // namespace

Selection SelectedFrom(const std::vector<View>& views, const StageOptions& stages,
                       const SelectionOptions& options) {
  if (options.robust) {
    return Selected(views, stages, [&](const std::vector<View>& seen, const Estimate& estimate) {
      return Corrected(seen, estimate, options.discRadius);
    });
  }
  return AllOf(views);
}

Solved SolveSelected(const Selection& selection, const StageOptions& stages, double discRadius) {
  Solved solved;
  solved.kept = selection.kept;
  solved.views = selection.views;
  solved.staged = SolveStages(solved.views, StartOf(solved.views, stages.imageSize), stages);
  // Once brings most of it; wide lenses with distortion need it twice.
  for (int i = 0; i < 2 && discRadius > 0.0 && solved.staged.solution.usable; ++i) {
    solved.views = Corrected(selection.views, solved.staged.solution.estimate, discRadius);
    solved.staged = SolveAgain(solved.views, solved.staged, stages);
  }
  return solved;
}

}  // namespace velmora::solver
