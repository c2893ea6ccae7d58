/// Calibrates cameras: from what was observed to a solution.
#include "solver/CameraCalibration.h"

#include "solver/Initialisation.h"
#include "solver/OutlierRejection.h"

namespace velmora::solver {

namespace {

void Note(const Selection& selection, double discRadius, Solution& solution) {
  solution.kept = selection.kept;
  solution.rejected = selection.rejected;
  solution.tooFewAgree = selection.tooFewAgree;
  solution.discRadius = discRadius;
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

Solution CalibrateRig(const CalibrationProblem& start, bool robust, const BundleOptions& options) {
  const Selection selection = robust ? Selected(start, options) : AllOf(start.views);
  CalibrationProblem selected = start;
  selected.views = selection.views;
  Solution solution = Adjust(selected, options);
  Note(selection, options.discRadius, solution);
  solution.robust = robust;
  return solution;
}

}  // namespace velmora::solver
