/// Computes one camera's intrinsics in time that grows with the number of views, not its cube.
#include "solver/SparseIntrinsics.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "model/LensModel.h"
#include "solver/CameraCalibration.h"
#include "solver/OpenCvMatrices.h"
#include "solver/Threads.h"

namespace velmora {

SparseResult SolveIntrinsicsSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                     const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                     const cv::Size& imageSize, int model, const SparseOptions& options) {
  const solver::Target target = solver::TargetOf(objectPoints, imagePoints, options.deviations);
  const solver::BundleOptions bundle = solver::BundleOptionsOf(options, target, model);
  return solver::SparseResultOf(solver::CalibrateCamera(target.views, imageSize, options.robust, bundle),
                                target, bundle.progress);
}

SparseResult SolveFisheyeSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                  const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                  const cv::Size& imageSize, const SparseOptions& options) {
  const solver::Target target = solver::TargetOf(objectPoints, imagePoints, options.deviations);
  solver::BundleOptions bundle = solver::BundleOptionsOf(options, target, MODEL_CLASSIC);
  bundle.parameters = FISHEYE_PARAMETERS;
  return solver::SparseResultOf(solver::CalibrateFisheye(target.views, imageSize, options.robust, bundle),
                                target, bundle.progress);
}

namespace solver {

BundleOptions BundleOptionsOf(const SparseOptions& options, const Target& target, int model) {
  BundleOptions bundle;
  bundle.parameters = LensModelOf(model).parameters;
  bundle.threads = options.threads > 0 ? options.threads : ThreadsFor(target.views.size());
  bundle.discRadius = options.discRadius;
  bundle.progress = [told = options.progress, points = CountOf(target.views)](int iteration, double cost) {
    return !told || told(iteration, std::sqrt(cost / points));
  };
  return bundle;
}

SparseResult SparseResultOf(Solution solution, const Target& target, const ProgressMonitor& progress) {
  auto kept = std::make_shared<const Solution>(std::move(solution));
  if (progress.IsGivenUp()) CV_Error(cv::Error::StsError, "The computation was given up.");
  if (!kept->usable) CV_Error(cv::Error::StsNoConv, "The views do not agree with any camera.");
  SparseResult result;
  static_cast<IntrinsicsResult&>(result) = MatricesOf(*kept, target);
  result.rejected = kept->rejected;
  result.robust = kept->robust;
  result.tooFewAgree = kept->tooFewAgree;
  result.solution = std::move(kept);
  if (!target.deviations.empty()) result.deviations = target.deviations.front();
  return result;
}

}  // namespace solver

}  // namespace velmora
