/// By how much a lens has moved from where a calibration found it, as new views tell.
#pragma once

#include <Eigen/Core>
#include <vector>

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
  /// Each view's part of the slope at the lens that was fitted: what is left of them is to be noise.
  std::vector<Eigen::VectorXd> parts{};
};

/// Of views whose poses and sheet fit a lens best that may be another one by now. `known` is that of the
/// result; the parameters that it estimates count. False where the views determine nothing.
bool ScoreOf(const Solution& fitted, const Intrinsics& known, LensScore& score);

struct LensMove {
  Eigen::VectorXd move;        ///< most likely: of each column
  Eigen::MatrixXd covariance;  ///< of what is still unknown of it
  /// How far beyond what noise and the uncertainty of the result do: of a move of the focal length alone, of
  /// the principal point alone, or in all ways, the one that is least like chance. Noise alone reaches 1 once
  /// in a hundred thousand times: the errors of real paper reach farther than noise.
  double evidence = 0.0;
  Eigen::VectorXd parameters;  ///< the lens that suits result and views best, less that of the result
};

/// By how much more the views' parts scatter, in the ways of the columns, than noise of that variance makes
/// them: paper has shapes that no sheet of this engine has, and what each view then says of the lens differs.
/// 1 where they do not, or are fewer than three.
double ScatterOf(const LensScore& score, const MoveColumns& columns);

/// `uncertainty` is the covariance of the result's parameters; empty: as the views themselves leave it. Where
/// views scatter more, the noise is taken to be larger by that.
LensMove MoveOf(const LensScore& score, const MoveColumns& columns, const Eigen::MatrixXd& uncertainty);

}  // namespace velmora
