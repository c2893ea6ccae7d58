/// Computes how the right camera of a pair stands to the left one, in milliseconds.
#include "solver/SparsePair.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "solver/CameraCalibration.h"
#include "solver/OpenCvMatrices.h"
#include "solver/Reordering.h"
#include "solver/RigStart.h"

namespace velmora {

namespace {

class PairSolver {
 public:
  PairSolver(const solver::Target& target, const SparsePairOptions& options)
      : target_(target), options_(options) {
    bundle_.threads = options.threads;
    bundle_.progress = [this, points = CountOf(target.views)](int iteration, double cost) {
      return !options_.progress || options_.progress(iteration, std::sqrt(cost / points));
    };
  }

  /// Estimates the pair with its intrinsics fixed.
  Solution WithFixedIntrinsics(const StereoIntrinsics& intrinsics, int model, double discRadius,
                               bool robust) {
    CalibrationProblem start = solver::StartOf(solver::KnownPair(intrinsics, model), target_.views);
    start.estimated.intrinsics = false;
    bundle_.discRadius = discRadius;
    return Checked(solver::CalibrateRig(start, robust, bundle_));
  }

  /// Estimates the intrinsics too, from a pair of fixed ones.
  Solution Refined(const Solution& fixed, const cv::Size& imageSize, int model) {
    CalibrationProblem start{fixed.rig, {}, {}, {}};
    for (size_t i = 0; i < fixed.views.size(); ++i) {
      start.views.push_back(target_.views[fixed.kept[i]]);
      start.views.back().rigFromTarget = fixed.views[i].rigFromTarget;
      for (const Recounted& image : fixed.recounted) {
        if (image.view == fixed.kept[i]) solver::Reorder(image, start.views.back());
      }
    }
    for (Camera& camera : start.rig.cameras) camera.imageSize = imageSize;
    bundle_.discRadius = options_.discRadius;
    bundle_.parameters = LensModelOf(model).parameters;
    Solution refined = Checked(solver::CalibrateRig(start, options_.robust, bundle_));
    // Views that were rejected before stay so; the rest was checked anew.
    for (Rejected& rejected : refined.rejected) rejected.view = fixed.kept[rejected.view];
    for (Recounted& image : refined.recounted) image.view = fixed.kept[image.view];
    refined.recounted.insert(refined.recounted.begin(), fixed.recounted.begin(), fixed.recounted.end());
    for (size_t& view : refined.kept) view = fixed.kept[view];
    for (const Rejected& rejected : fixed.rejected) {
      const bool whole = !std::binary_search(fixed.kept.begin(), fixed.kept.end(), rejected.view);
      if (whole) refined.rejected.push_back(rejected);
    }
    return refined;
  }

 private:
  Solution Checked(Solution solution) const {
    if (bundle_.progress.IsGivenUp()) CV_Error(cv::Error::StsError, "The computation was given up.");
    if (!solution.usable) CV_Error(cv::Error::StsNoConv, "The views do not agree with any pair of cameras.");
    return solution;
  }

  const solver::Target& target_;
  const SparsePairOptions& options_;
  solver::BundleOptions bundle_;
};

const RigidTransform& RightFromLeft(const Solution& solution) {
  return solution.rig.cameras[1].cameraFromRig;
}

}  // namespace

ExtrinsicsResult SolveExtrinsicsSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                         const std::vector<std::vector<cv::Point2d>>& leftPoints,
                                         const std::vector<std::vector<cv::Point2d>>& rightPoints,
                                         const StereoIntrinsics& intrinsics, int model,
                                         const SparsePairOptions& options) {
  WarnOfIgnoredCoefficients(intrinsics, model);
  const solver::Target target =
      solver::PairTargetOf(objectPoints, leftPoints, rightPoints, options.deviations);
  PairSolver pairSolver(target, options);
  const Solution solution =
      pairSolver.WithFixedIntrinsics(intrinsics, model, options.discRadius, options.robust);
  ExtrinsicsResult result = solver::PairMatricesOf(intrinsics, RightFromLeft(solution));
  result.rms = RmsOf(solution);
  result.solution = std::make_shared<const Solution>(solution);
  return result;
}

ExtrinsicsResult RefinePairSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                    const std::vector<std::vector<cv::Point2d>>& leftPoints,
                                    const std::vector<std::vector<cv::Point2d>>& rightPoints,
                                    const StereoIntrinsics& intrinsics, const cv::Size& imageSize, int model,
                                    const SparsePairOptions& options) {
  WarnOfIgnoredCoefficients(intrinsics, model);
  const solver::Target target =
      solver::PairTargetOf(objectPoints, leftPoints, rightPoints, options.deviations);
  PairSolver pairSolver(target, options);
  const Solution fixed =
      pairSolver.WithFixedIntrinsics(intrinsics, model, 0.0, options.robust);  // refinement corrects pixels
  const Solution solution = pairSolver.Refined(fixed, imageSize, model);
  const StereoIntrinsics refined = solver::PairIntrinsicsOf(solution.rig);
  ExtrinsicsResult result = solver::PairMatricesOf(refined, RightFromLeft(solution));
  result.refined = refined;
  result.rms = RmsOf(solution);
  result.solution = std::make_shared<const Solution>(solution);
  return result;
}

}  // namespace velmora
