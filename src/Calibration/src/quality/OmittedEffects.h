/// Effects that a solution did not model, estimated from its residuals.
#pragma once

#include <Eigen/Core>
#include <algorithm>
#include <map>
#include <opencv2/core.hpp>
#include <tuple>

#include "model/Solution.h"
#include "quality/RadialTerms.h"

namespace velmora {

/// Something that the computation took for zero: its own size, and what it does to the rig.
struct OmittedEffect {
  Eigen::VectorXd values;  ///< its parameters; empty when the views cannot tell
  /// The change of each shared parameter (see LayoutOf): with the effect minus without it, to first order.
  Eigen::VectorXd shift;
  /// What it would take off the cost, in variances of the noise; or, where views of other poses scatter by
  /// more than that noise lets them, of what their scatter speaks of.
  double costReduction = 0.0;
  /// Noise alone takes off as much in one of thirty thousand computations.
  bool significant = false;

  /// What noise takes off on average, where that is more than one for each of the values.
  double chance = 0.0;

  /// By how much more than noise it takes off the cost on average; 0 when that is not significant.
  double Excess() const {
    return significant ? costReduction - std::max(chance, static_cast<double>(values.size())) : 0.0;
  }
};

/// The sheet bent: depths a x^2 + b x y + c y^2 about its middle. `values` are a, b, c in 1 / unit.
OmittedEffect OmittedBend(const Solution& solution);

/// The sheet printed out of proportion: longer along its columns by a share, and skewed. `values` are both.
OmittedEffect OmittedProportions(const Solution& solution);

/// The lens terms that the full model has beyond the one computed, of one of the cameras; empty for the full
/// model. Here `shift` is of all of the full model's parameters of that camera.
OmittedEffect OmittedLensTerms(const Solution& solution, size_t camera);

/// Whether there are terms to test of the camera's radial curve, and which.
bool HasRadialTerms(const Solution& solution, size_t camera);
RadialTerms RadialTermsFor(const Solution& solution, size_t camera);

/// All of them at once, the lens terms of one of the cameras.
struct OmittedEffects {
  OmittedEffect bend;
  OmittedEffect proportions;
  OmittedEffect lensTerms;
  /// The target moved, in each view in its own way, while its image was read row by row. `values` are along
  /// both sides of the image, for as many rows as the focal length has, in the unit of the target.
  OmittedEffect motion;
  OmittedEffect bendByView;  ///< the sheet bent in each view in its own way
  /// The lens' radial curve, beyond what the larger models hold (RadialTerms): empty for the classic one,
  /// which has those for that, and for images that do not reach far from the axis. Here `shift` is of the
  /// camera's own parameters and, after them, of the terms.
  OmittedEffect radial;
};
OmittedEffects OmittedEffectsOf(const Solution& solution, size_t camera);

/// What may be wrong with the sheet, each by itself and both together (the bend's values first).
struct OmittedSheet {
  OmittedEffect bend;
  OmittedEffect proportions;
  OmittedEffect both;
};
OmittedSheet OmittedSheetOf(const Solution& solution);

/// Orders points of a target, so that they can be looked up.
struct TargetOrder {
  bool operator()(const cv::Point3d& a, const cv::Point3d& b) const {
    return std::tie(a.x, a.y, a.z) < std::tie(b.x, b.y, b.z);
  }
};
/// Where a point of an observation should be on the target, whatever shape the sheet was found to have.
cv::Point3d PlaceOnTarget(const Sheet& sheet, size_t place, const cv::Point3d& point);

/// How far points of the target lie beside their places on it.
using TargetOffsets = std::map<cv::Point3d, cv::Point2d, TargetOrder>;

/// Points that lie beside their places on the sheet by so much, which must be given of each point that was
/// observed; `values` is the share of it that they do.
OmittedEffect OmittedOffsets(const Solution& solution, const TargetOffsets& offsets);

/// The height of a bent sheet's points above and below the plane that fits them best, highest minus lowest,
/// in the unit of the target.
double DepthOfBend(const OmittedEffect& bend, const std::vector<cv::Point3d>& object);

/// The points of the image that shows most of the sheet, the first one of several. There must be one.
const std::vector<cv::Point3d>& MostPointsOf(const std::vector<TargetView>& views);

}  // namespace velmora
