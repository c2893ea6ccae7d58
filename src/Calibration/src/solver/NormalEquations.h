/// The normal equations of a camera's computation, and their reduction to the lens.
#pragma once

#include <array>
#include <vector>

#include "solver/Problem.h"

namespace velmora::solver {

constexpr int MOST_COLUMNS = FULL_PARAMETERS + POSE_PARAMETERS + 1;

/// One view's Jacobian times itself, upper triangle; columns: the lens' free parameters, turn and shift of
/// the pose, the residual (projected minus seen).
struct ViewEquations {
  std::array<double, static_cast<size_t>(MOST_COLUMNS) * MOST_COLUMNS> products{};
  double squares = 0.0;  ///< weighted sum of squared distances
  bool usable = false;   ///< every point is in front of the camera

  double At(int row, int column) const { return products[static_cast<size_t>(row * MOST_COLUMNS + column)]; }
};

/// One view's share in the equations of the lens alone, once its pose is eliminated.
struct ReducedView {
  std::array<double, static_cast<size_t>(FULL_PARAMETERS) * FULL_PARAMETERS> matrix{};  ///< both triangles
  std::array<double, FULL_PARAMETERS> gradient{};
  bool solvable = false;
};

using Step = std::array<double, FULL_PARAMETERS>;
using PoseStep = std::array<double, POSE_PARAMETERS>;

ViewEquations EquationsOf(const View& view, const Lens& lens, const Pose& pose);

/// The same with a known lens: its parameters have no columns.
ViewEquations PoseEquationsOf(const View& view, const Lens& lens, const Pose& pose);

/// Eliminates the pose; `damping` is added to the diagonal of its block, as a share of it.
ReducedView Reduce(const ViewEquations& equations, int free, double damping);

/// The pose's step that belongs to a step of the lens.
PoseStep PoseStepFor(const ViewEquations& equations, int free, double damping, const Step& lensStep);

}  // namespace velmora::solver
