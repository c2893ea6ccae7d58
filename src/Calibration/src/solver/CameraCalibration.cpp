/// Calibrates cameras: from what was observed to a solution.
#include "solver/CameraCalibration.h"

#include <utility>

#include "solver/Eccentricity.h"
#include "solver/FisheyeStart.h"
#include "solver/Initialisation.h"
#include "solver/OutlierRejection.h"
#include "solver/Reordering.h"

namespace velmora::solver {

namespace {

/// Discs before fisheyes are strongly curved: the second correction matters.
constexpr int ECCENTRICITY_CORRECTIONS = 3;

void Note(const Selection& selection, double discRadius, Solution& solution) {
  solution.kept = selection.kept;
  solution.rejected = selection.rejected;
  solution.tooFewAgree = selection.tooFewAgree;
  solution.discRadius = discRadius;
}

Solution AdjustSelected(const CalibrationProblem& start, bool robust, const BundleOptions& options) {
  const Selection selection = robust ? Selected(start, options) : AllOf(start.views);
  CalibrationProblem selected = start;
  selected.views = selection.views;
  Solution solution = Adjust(selected, options);
  Note(selection, options.discRadius, solution);
  solution.robust = robust;
  return solution;
}

}  // namespace

Selection SelectedFrom(const std::vector<TargetView>& views, const cv::Size& imageSize, bool robust,
                       const BundleOptions& options) {
  return robust ? Selected(views, imageSize, options) : AllOf(views);
}

Solution CalibrateCamera(const Selection& selection, const cv::Size& imageSize,
                         const BundleOptions& options) {
  Solution solution = Calibrate(StartOf(selection.views, imageSize), options);
  Note(selection, options.discRadius, solution);
  return solution;
}

Solution CalibrateCamera(const std::vector<TargetView>& views, const cv::Size& imageSize, bool robust,
                         const BundleOptions& options) {
  Solution solution = CalibrateCamera(SelectedFrom(views, imageSize, robust, options), imageSize, options);
  solution.robust = robust;
  return solution;
}

Solution CalibrateFisheye(const std::vector<TargetView>& views, const cv::Size& imageSize, bool robust,
                          BundleOptions options) {
  options.parameters = FISHEYE_PARAMETERS;
  const Selection selection = robust ? SelectedOfFisheye(views, imageSize, options) : AllOf(views);
  CalibrationProblem start = FisheyeStartOf(selection.views, imageSize).problem;
  Solution solution = SolveFisheye(std::move(start), options);
  for (int i = 0; i < ECCENTRICITY_CORRECTIONS && options.discRadius > 0.0 && solution.usable; ++i) {
    solution = SolveAgain(
        solution, CorrectedForEccentricity(selection.views, solution.rig, solution.views, options.discRadius),
        options);
  }
  Note(selection, options.discRadius, solution);
  solution.robust = robust;
  return solution;
}

Solution CalibrateRig(const CalibrationProblem& start, bool robust, const BundleOptions& options) {
  Solution solution = AdjustSelected(start, robust, options);
  if (!robust || !solution.usable || options.progress.IsGivenUp()) return solution;
  std::vector<Recounted> recounted = RecountedImages(start.views, solution);
  if (recounted.empty()) {
    NameShiftedImages(start.views, solution);
    return solution;
  }
  CalibrationProblem again = start;
  for (const Recounted& image : recounted) Reorder(image, again.views[image.view]);
  solution = AdjustSelected(again, robust, options);
  solution.recounted = std::move(recounted);
  NameShiftedImages(again.views, solution);
  return solution;
}

}  // namespace velmora::solver
