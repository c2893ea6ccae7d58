/// One calibration of a pair of cameras whose truth is known, and how far off it came out.
#pragma once

#include <cstdint>

#include "Trial.h"

namespace accuracy {

struct PairCase {
  LensKind lens = LensKind::Strong;
  double fieldOfView = 65.0;
  double baseline = 0.12;  ///< metres
  double toeIn = 6.0;      ///< degrees
  int views = 12;
  double noise = 0.1;
  int model = Calibrator::MODEL_CLASSIC;
  int solver = Calibrator::SOLVER_SPARSE;
  bool refined = false;  ///< the intrinsics, together with the pair
};

struct PairTrial {
  bool failed = false;  ///< as of a Trial
  double rms = 0.0;
  double rotationError = 0.0;     ///< of R from the truth, degrees
  double translationError = 0.0;  ///< length of T minus the truth, millimetres
  double direction = 0.0;         ///< of T from the truth, degrees
  double baseline = 0.0;          ///< error of the length of T, share of it
  double depth = 0.0;  ///< median error of triangulated depths over the points of the views, share of them
};

/// Each camera alone, then the pair, with the intrinsics fixed or refined, from projected points with
/// Gaussian noise. The same case and seed give the same trial.
PairTrial RunPairTrial(const PairCase& what, std::uint64_t seed);

}  // namespace accuracy
