/// Effects that a solution did not model, estimated from its residuals.
#pragma once

#include <Eigen/Core>
#include <opencv2/core.hpp>

#include "model/Solution.h"

namespace velmora {

/// Something that the computation took for zero: its own size, and what it does to the rig.
struct OmittedEffect {
  Eigen::VectorXd values;  ///< its parameters; empty when the views cannot tell
  /// The change of each shared parameter (see LayoutOf): with the effect minus without it, to first order.
  Eigen::VectorXd shift;
  double costReduction = 0.0;  ///< what it would take off the cost, in variances of the noise
  /// Noise alone takes off as much in one of thirty thousand computations.
  bool significant = false;

  /// By how much more than noise it takes off the cost on average; 0 when that is not significant.
  double Excess() const { return significant ? costReduction - static_cast<double>(values.size()) : 0.0; }
};

/// The sheet bent: depths a x^2 + b x y + c y^2 about its middle. `values` are a, b, c in 1 / unit.
OmittedEffect OmittedBend(const Solution& solution);

/// The sheet printed out of proportion: longer along its columns by a share, and skewed. `values` are both.
OmittedEffect OmittedProportions(const Solution& solution);

/// The lens terms that the full model has beyond the one computed, of one of the cameras; empty for the full
/// model. Here `shift` is of all of the full model's parameters of that camera.
OmittedEffect OmittedLensTerms(const Solution& solution, size_t camera);

/// The height of a bent sheet's points above and below the plane that fits them best, highest minus lowest,
/// in the unit of the target.
double DepthOfBend(const OmittedEffect& bend, const std::vector<cv::Point3d>& object);

}  // namespace velmora
