/// What a computation of a calibrator comes to.
#pragma once

#include <cstddef>
#include <opencv2/core.hpp>

#include "solver/OpenCvExtrinsics.h"
#include "solver/SparseIntrinsics.h"

namespace velmora {

/// A value that nobody changes once it is published. One of `camera` and `pair` is filled, by what was
/// computed.
struct Result {
  SparseResult camera;
  ExtrinsicsResult pair;
  StereoIntrinsics intrinsics;     ///< of a pair: those that belong to its R and T
  bool intrinsicsRefined = false;  ///< of a pair: whether the computation moved them
  int model = 0;                   ///< one of the MODEL_ codes
  double discRadius = 0.0;         ///< metres; 0 where eccentricity was not corrected
  size_t snapshots = 0;            ///< how many it was computed from
  size_t removals = 0;             ///< how many had been taken out before
  float rms = -1.0F;               ///< reprojection error in pixels

  /// Whether it is of one camera, whose coefficients are not OpenCV's usual ones.
  bool IsFisheye() const {
    return camera.solution != nullptr && camera.solution->rig.cameras.front().intrinsics.IsFisheye();
  }
};

}  // namespace velmora
