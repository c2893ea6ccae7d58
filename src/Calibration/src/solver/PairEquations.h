/// The normal equations of a pair of cameras, and their reduction to what all views share.
#pragma once

#include <vector>

#include "solver/PairProblem.h"
#include "solver/ScaledSystem.h"

namespace velmora::solver {

constexpr int MOST_PAIR_PARAMETERS = 2 * FULL_PARAMETERS + POSE_PARAMETERS;

using PairSystem = ScaledSystemOf<MOST_PAIR_PARAMETERS>;
using PairMatrix = PairSystem::Matrix;
using PairStep = PairSystem::Vector;

/// Which parameters all views share: the free ones of the left and of the right lens, then turn and shift of
/// the right camera.
struct PairLayout {
  int left = 0;
  int right = 0;

  int Lenses() const { return left + right; }
  int Shared() const { return Lenses() + POSE_PARAMETERS; }
  int Columns() const { return Shared() + POSE_PARAMETERS + 1; }
};

PairLayout LayoutOf(const PairEstimate& estimate);

/// One view's Jacobian times itself, upper triangle; columns: what is shared, turn and shift of the pose
/// before the left camera, the residual (projected minus seen).
struct PairViewEquations {
  PairLayout layout;
  std::vector<double> products;
  double squares = 0.0;  ///< sum of squared distances in both pictures
  bool usable = false;   ///< every point is in front of both cameras

  double At(int row, int column) const {
    return products[static_cast<size_t>(row * layout.Columns() + column)];
  }
  double Gradient(int row) const { return At(row, layout.Columns() - 1); }
};

PairViewEquations PairEquationsOf(const View& left, const View& right, const PairEstimate& estimate,
                                  size_t view);

/// One view's share in the equations of what is shared, once its pose is eliminated.
struct ReducedPairView {
  PairMatrix matrix{};  ///< both triangles
  PairStep gradient{};
  bool solvable = false;
};

/// Eliminates the pose; `damping` is added to the diagonal of its block, as a share of it. Shared parameters
/// before `first` are held: with first = Lenses() the lenses are known.
ReducedPairView Reduce(const PairViewEquations& equations, int first, double damping);

/// The pose's step that belongs to a step of what is shared from `first` on.
PoseStep PoseStepFor(const PairViewEquations& equations, int first, double damping, const PairStep& shared);

/// The inverse of the pose's block times x. False when it has none.
bool SolvePose(const PairViewEquations& equations, PoseStep& x);

}  // namespace velmora::solver
