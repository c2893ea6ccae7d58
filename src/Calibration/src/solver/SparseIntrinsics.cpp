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

namespace {

class IntrinsicsSolver {
 public:
  IntrinsicsSolver(const solver::Target& target, const cv::Size& imageSize, int model,
                   const SparseOptions& options)
      : target_(target), imageSize_(imageSize), options_(options) {
    bundle_.parameters = LensModelOf(model).parameters;
    bundle_.threads = options.threads > 0 ? options.threads : solver::ThreadsFor(target.views.size());
    bundle_.discRadius = options.discRadius;
    bundle_.progress = [this, points = CountOf(target.views)](int iteration, double cost) {
      return !options_.progress || options_.progress(iteration, std::sqrt(cost / points));
    };
  }

  SparseResult Run() {
    auto kept = std::make_shared<const Solution>(
        solver::CalibrateCamera(target_.views, imageSize_, options_.robust, bundle_));
    const Solution& solution = *kept;
    if (bundle_.progress.IsGivenUp()) CV_Error(cv::Error::StsError, "The computation was given up.");
    if (!solution.usable) CV_Error(cv::Error::StsNoConv, "The views do not agree with any camera.");
    SparseResult result;
    static_cast<IntrinsicsResult&>(result) = solver::MatricesOf(solution, target_);
    result.rejected = solution.rejected;
    result.robust = solution.robust;
    result.tooFewAgree = solution.tooFewAgree;
    result.solution = std::move(kept);
    return result;
  }

 private:
  const solver::Target& target_;
  const cv::Size imageSize_;
  const SparseOptions& options_;
  solver::BundleOptions bundle_;
};

}  // namespace

SparseResult SolveIntrinsicsSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                     const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                     const cv::Size& imageSize, int model, const SparseOptions& options) {
  const solver::Target target = solver::TargetOf(objectPoints, imagePoints);
  return IntrinsicsSolver(target, imageSize, model, options).Run();
}

}  // namespace velmora
