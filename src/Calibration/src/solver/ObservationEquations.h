/// The normal equations of what one camera saw in one view.
#pragma once

#include <array>

#include "model/Observation.h"
#include "model/RigidTransform.h"
#include "solver/Projection.h"

namespace velmora::solver {

constexpr int MOST_COLUMNS = FULL_PARAMETERS + POSE_PARAMETERS + 1;

/// The Jacobian of an observation times itself, upper triangle; columns: the estimated intrinsics, rotation
/// and translation of the target before the camera, the residual (projected minus observed).
///
///            intrinsics   pose   residual
///   products     A         B        a
///                          P        p
///                                  cost
struct ObservationEquations {
  std::array<double, static_cast<size_t>(MOST_COLUMNS) * MOST_COLUMNS> products{};
  double cost = 0.0;       ///< weighted sum of squared residuals
  double pixelCost = 0.0;  ///< the same if all points' deviations were alike
  bool usable = false;     ///< every point is in front of the camera

  double At(int row, int column) const { return products[static_cast<size_t>(row * MOST_COLUMNS + column)]; }
};

ObservationEquations EquationsOf(const Observation& observation, const Intrinsics& intrinsics,
                                 const RigidTransform& cameraFromTarget);

/// The equations of an observation with known intrinsics, which have no columns.
ObservationEquations PoseEquationsOf(const Observation& observation, const Intrinsics& intrinsics,
                                     const RigidTransform& cameraFromTarget);

}  // namespace velmora::solver
