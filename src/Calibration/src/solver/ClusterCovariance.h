/// How far estimates scatter from one group of observations to the other.
#pragma once

#include <Eigen/Core>
#include <vector>

#include "solver/NormalEquations.h"

namespace velmora::solver {

/// The covariance of what `all` would solve for, from how much its parts pull apart, whatever correlations
/// there are within a part. `parts` sum up to `all`, but for priors. Each part's pull is corrected for what
/// it has itself drawn the estimate to its side: for independent noise of one variance the result is right on
/// average for any number of parts. Empty where `all` is singular, or where a part alone determines
/// something.
Eigen::MatrixXd ClusterCovariance(const ReducedSystem& all, const std::vector<ReducedSystem>& parts);

/// The same without the directions that a part alone determines: its pull along them is nothing.
Eigen::MatrixXd ClusterCovarianceOfRest(const ReducedSystem& all, const std::vector<ReducedSystem>& parts);

/// The views' shares in the equations, summed for each of the groups (see GroupsOf).
std::vector<ReducedSystem> PartsOf(const Solution& solution, const std::vector<size_t>& groups);

}  // namespace velmora::solver
