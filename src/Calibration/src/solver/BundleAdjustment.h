/// Adjusts a rig of cameras and the poses of the target to what was observed.
#pragma once

#include <vector>

#include "solver/LevenbergMarquardt.h"

namespace velmora::solver {

struct BundleOptions {
  /// Of the lens model asked for, of each camera; FISHEYE_PARAMETERS of rigs whose cameras are fisheyes.
  int parameters = CLASSIC_PARAMETERS;
  int threads = 1;
  int mostIterations = 500;  ///< of each minimisation
  double discRadius = 0.0;  ///< 0: image points are images of centres; else centroids of discs of that radius
  /// Told after each iteration of each minimisation. What follows once it is given up is of no use, and ends
  /// soon.
  ProgressMonitor progress;
};

/// One lens model after the other, from the classic to the one asked for, each from where the smaller one
/// ended. The larger models have a flat valley in which coefficients grow without an effect on the pixels: a
/// weak prior keeps them out of it, and the curve of wide lenses smooth where there is no data. It is
/// strengthened as far as it takes to have no pole of the distortion within the image.
Solution SolveModels(const CalibrationProblem& start, const BundleOptions& options);

/// The larger models from a solution of the classic one, whatever shape its sheet has.
Solution SolveLargerModels(Solution classic, const BundleOptions& options);

/// A fisheye, from its start: focal lengths and poses first, then the middle and the shape of the curve.
Solution SolveFisheye(CalibrationProblem start, const BundleOptions& options);

/// The model asked for at once, from a start whose intrinsics are nearly right.
Solution SolveModel(CalibrationProblem start, const BundleOptions& options);

/// Improves a solution of the same views, with its priors, after weights or pixels changed.
Solution SolveAgain(const Solution& earlier, std::vector<TargetView> views, const BundleOptions& options);

/// Moves the poses of the target alone, before a rig that stays as it is, and what bends its sheet has of its
/// own in each view.
Solution SolvePoses(const Rig& rig, std::vector<TargetView> views, const Sheet& sheet = {});

/// How a camera is calibrated: through the models, then, where the discs' radius is given, with pixels
/// corrected for it.
Solution Calibrate(const CalibrationProblem& start, const BundleOptions& options);

/// How cameras whose intrinsics are known are adjusted: with `start.estimated` as it is, and corrected pixels
/// where the discs' radius is given. Where intrinsics move, each correction is followed by new priors.
Solution Adjust(const CalibrationProblem& start, const BundleOptions& options);

/// The weak prior of each camera for the noise and the spread of these views; zeros for the classic model.
std::vector<Prior> WeakPriors(const Rig& rig, const std::vector<TargetView>& views, double variance);

}  // namespace velmora::solver
