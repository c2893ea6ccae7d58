/// What a solution did not reckon with, as its residuals show it.
#pragma once

#include <opencv2/core.hpp>

#include "solver/SolutionMatrices.h"

namespace velmora::solver {

/// Something that the computation took for zero: its own size, and what it does to the lens.
struct OmittedEffect {
  cv::Mat values;        ///< its parameters, q x 1; empty when the views cannot tell
  cv::Mat lensShift;     ///< free x 1: the lens' parameters with it minus without it, to first order
  double squares = 0.0;  ///< what it would take off the sum of squares, in variances of the noise
  /// Noise alone takes off as much in one of thirty thousand computations.
  bool significant = false;

  /// By how much `squares` are more than noise takes off on average; nothing when that is not significant.
  double Excess() const { return significant ? squares - values.rows : 0.0; }
};

/// The sheet bent: depths a x^2 + b x y + c y^2 about its middle. `values` are a, b, c in 1 / unit.
OmittedEffect OmittedBend(const Solved& solved);

/// The sheet printed out of proportion: longer along its columns by a share, and skewed. `values` are both.
OmittedEffect OmittedProportions(const Solved& solved);

/// The lens terms that the full model has beyond the one computed; empty for the full model. Here `lensShift`
/// is of all of the full model's parameters.
OmittedEffect OmittedLensTerms(const Solved& solved);

/// The height of a bent sheet's picture points above and below the plane that fits them best, highest minus
/// lowest, in the unit of the target.
double DepthOfBend(const OmittedEffect& bend, const View& view);

}  // namespace velmora::solver
