/// Computes one camera's intrinsics in time that grows with the number of views, not its cube.
#pragma once

#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <vector>

#include "model/Solution.h"
#include "solver/BundleAdjustment.h"
#include "solver/OpenCvIntrinsics.h"
#include "solver/Target.h"

namespace velmora {

struct SparseOptions {
  /// Leave out views and points that do not belong to the camera that the others show.
  bool robust = false;
  /// The radius of the target's discs, in the unit of the object points. With it the image points are taken
  /// for the centroids of the discs' images, which are not the images of their centres; 0 takes them as they
  /// are.
  double discRadius = 0.0;
  SheetAssumption sheet;  ///< what the sheet may be taken for (quality/SheetChoice.h)
  int threads = 0;        ///< 0: as many as pay, for that number of views
  /// Called after each iteration with its number and the RMS in pixels; false gives up.
  std::function<bool(int iteration, double rms)> progress;
  solver::PointDeviations deviations;  ///< of the image points: how much they count beside each other
};

struct SparseResult : IntrinsicsResult {
  std::vector<Rejected> rejected;  ///< what was rejected, by the numbers of views and points
  bool robust = false;             ///< whether outliers were to be rejected
  /// So few views agree with each other that none of the others could be called wrong.
  bool tooFewAgree = false;
  /// What the matrices are of; null of other solvers' results.
  std::shared_ptr<const Solution> solution;
  solver::PointDeviations deviations;  ///< of the options
};

/// Like SolveIntrinsics, with the solver of this engine, for a flat sheet: same points, same shapes, same
/// order. The classic model's result is the same least-squares minimum. The larger models' coefficients are
/// kept small by a weak prior, which moves the RMS by less than a hundredth. Standard deviations are those of
/// 2 N - unknowns degrees of freedom, of rotation vectors and translations as they are handed out.
///
/// The target must be plane, with its points at z = 0. Raises cv::Exception for lists that do not match,
/// points that are not finite, views that determine no pose, and when the caller gives up.
SparseResult SolveIntrinsicsSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                     const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                     const cv::Size& imageSize, int model, const SparseOptions& options = {});

/// The same of a fisheye (Kannala and Brandt: the distance from the principal point is an odd polynomial of
/// the angle between ray and axis), in whose images points beside and behind the camera may be. D is 1 x 4:
/// k1 to k4. Raises cv::Exception as SolveIntrinsicsSparsely does.
SparseResult SolveFisheyeSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                  const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                  const cv::Size& imageSize, const SparseOptions& options = {});

namespace solver {

BundleOptions BundleOptionsOf(const SparseOptions& options, const Target& target, int model);

/// The matrices of a solution. Raises cv::Exception when the computation was given up, or led nowhere.
SparseResult SparseResultOf(Solution solution, const Target& target, const ProgressMonitor& progress);

}  // namespace solver

}  // namespace velmora
