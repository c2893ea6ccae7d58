/// What of a rig did not stay the same from view to view.
#pragma once

#include <Eigen/Core>
#include <vector>

#include "quality/EnlargedEquations.h"
#include "quality/OmittedEffects.h"

namespace velmora {

/// Some of what all views share was another in some of them.
struct Change {
  /// At once between two views; evenly from the first view to the last; with the inverse of the target's
  /// distance; or in some views anywhere among the others.
  enum class Kind { Step, Drift, Distance, Mixture };

  Kind kind = Kind::Step;
  size_t last = 0;            ///< of a step: the last view before it, by its place in the solution
  std::vector<size_t> apart;  ///< of a mixture: the fewer views, by their places
  OmittedEffect effect;       ///< `values`: by how much, for each column of what may change
  /// What all views share in the first views (the farthest, the most), and in the last (the nearest, the
  /// fewest) ones, minus the solution's.
  Eigen::VectorXd before;
  Eigen::VectorXd after;
};

/// The focal length, as a share of it, and the principal point, in pixels: what may change of a camera whose
/// intrinsics are estimated. A column for each, a row for everything that all views share.
Eigen::MatrixXd ChangingLens(const Solution& solution, size_t camera);

/// The focal length alone: less can be a matter of chance.
Eigen::MatrixXd ChangingFocalLength(const Solution& solution, size_t camera);

/// The pose of a camera in the rig: rotation about the camera's axes, and translation.
Eigen::MatrixXd ChangingMount(const Solution& solution, size_t camera);

/// The kinds of change of what `changing` has columns for that are beyond noise, as the equations of the
/// views have them, to first order. `camera` is the one that the target's distance is from; `sure` says how
/// far beyond.
std::vector<Change> ChangesOf(const Solution& solution, const Eigen::MatrixXd& changing, size_t camera,
                              const std::vector<Change::Kind>& kinds, double sure = FAIRLY_SURE);

/// The one that takes most off; without values when there is none.
Change LargestChangeOf(const Solution& solution, const Eigen::MatrixXd& changing, size_t camera,
                       const std::vector<Change::Kind>& kinds);

}  // namespace velmora
