/// By how much a lens has moved from where a calibration found it, as new views tell.
#pragma once

#include <Eigen/Core>

#include "model/Solution.h"

namespace velmora {

/// The ways in which a lens moves, and what is known of each beforehand.
struct MoveColumns {
  enum Index { FOCAL, ASPECT, CENTRE_X, CENTRE_Y, FIRST_TERM, SECOND_TERM, COUNT };

  Eigen::MatrixXd columns;     ///< a row for each of the lens' parameters, a column for each way
  Eigen::VectorXd deviations;  ///< standard deviations: far more than what is to be noticed

  /// Focal length (share), its aspect (share), principal point (pixels), and the first two terms of the
  /// radial distortion. `radius` is how far from the axis there are data, in focal lengths (of a fisheye:
  /// radians).
  static MoveColumns Of(const Intrinsics& intrinsics, double radius);
};

/// What views tell of the parameters of a lens.
struct LensScore {
  Eigen::MatrixXd information;  ///< inverse covariance, were nothing known but these views
  Eigen::VectorXd slope;        ///< of the log likelihood at the lens of the result, as if it were quadratic
  double variance = 0.0;        ///< of a coordinate's noise, squared pixels
  double freedom = 0.0;         ///< how many numbers that is known from
};

/// Of views whose poses and sheet fit a lens best that may be another one by now. `known` is that of the
/// result; the parameters that it estimates count. False where the views determine nothing.
bool ScoreOf(const Solution& fitted, const Intrinsics& known, LensScore& score);

struct LensMove {
  Eigen::VectorXd move;        ///< most likely: of each column
  Eigen::MatrixXd covariance;  ///< of what is still unknown of it
  /// How far beyond what noise and the uncertainty of the result do: of a move of the focal length alone, of
  /// the principal point alone, or in all ways, the one that is least like chance. 1 is reached by chance in
  /// one of 1500 times.
  double evidence = 0.0;
  Eigen::VectorXd parameters;  ///< the lens that suits result and views best, less that of the result
};

/// `uncertainty` is the covariance of the result's parameters; empty: as the views themselves leave it.
LensMove MoveOf(const LensScore& score, const MoveColumns& columns, const Eigen::MatrixXd& uncertainty);

}  // namespace velmora
