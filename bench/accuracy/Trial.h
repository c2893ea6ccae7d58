/// One calibration of a camera whose truth is known, and how far off it came out.
#pragma once

#include <array>
#include <cstdint>

#include "Calibrator.h"
#include "Cameras.h"
#include "Solve.h"
#include "Verdict.h"

namespace accuracy {

/// Which views the camera is calibrated from: well spread ones, or such as show the sheet from the front
/// only.
enum class ViewKind { Spread, Frontal };

/// What a trial is of. Trials of the same case differ by their seeds: other views (but for frontal ones) and
/// other noise.
struct Case {
  LensKind lens = LensKind::Strong;
  double fieldOfView = 65.0;
  int views = 12;
  ViewKind viewKind = ViewKind::Spread;
  double noise = 0.1;  ///< standard deviation of each coordinate of the points, pixels
  double sag = 0.0;    ///< how far the middle of the sheet is bent away from the camera, metres
  double zoom = 0.0;   ///< by which share the focal length is longer in the second half of the views
  int copies = 1;      ///< how often each view is taken of a sheet that is held still
  int model = Calibrator::MODEL_CLASSIC;
  int solver = Calibrator::SOLVER_SPARSE;
};

constexpr std::size_t PARAMETERS = 18;
/// fx, fy, cx, cy, k1, k2, p1, p2, k3, ... in the order of the standard deviations.
extern const std::array<const char*, PARAMETERS> PARAMETER_NAMES;

struct Trial {
  bool failed = false;  ///< the computation raised, or its result is no camera; nothing else counts then
  double rms = 0.0;
  /// Estimate minus truth and reported standard deviation. Coefficients have the same meaning only in a model
  /// that holds the true lens.
  std::array<double, PARAMETERS> errors = {};
  std::array<double, PARAMETERS> deviations = {};
  double imageError = 0.0;   ///< mean distance of projections from the truth over the whole image, pixels
  double turnedError = 0.0;  ///< the same after the best rotation of the camera's frame
  double dataError = 0.0;    ///< the same where the views were
  /// The standard deviation of a coordinate there that the verdict expects from the noise.
  double deviationInData = 0.0;
  /// Root of the mean square of the distances where the views were, over what the verdict's formal standard
  /// deviation, and the verdict all in all, let expect: 1 on average if they are true.
  double overFormal = 0.0;
  double overVerdict = 0.0;
  CalibrationVerdict::Grade grade = CalibrationVerdict::Grade::None;
};

/// How far the result for these views is off.
Trial Assessed(const world::Camera& camera, const Points& views, const velmora::SparseResult& result,
               double discRadius = 0.0);

/// Calibrates from projected points with Gaussian noise. The same case and seed give the same trial.
Trial RunTrial(const Case& what, std::uint64_t seed);

/// The image points of a pose with noise; the sheet may be bent.
std::vector<cv::Point2d> NoisyPoints(const world::Camera& camera, const world::Pose& pose, double noise,
                                     double sag, cv::RNG& random);

}  // namespace accuracy
