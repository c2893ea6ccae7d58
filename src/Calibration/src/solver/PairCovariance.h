/// How sure what the views of a pair share is, and how well the two pictures of each view agree.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "solver/SparsePair.h"

namespace velmora::solver {

/// Moves the poses alone to where the squares are least, and evaluates there.
PairSolution WithBestPoses(const PairTarget& target, const PairEstimate& estimate);

/// The covariance of what the views share from `first` on (see Reduce); its last six rows are turn and shift
/// of the right camera. Empty when the views do not determine it.
cv::Mat SharedCovariance(const PairSolution& solution, const PairTarget& target, const PairOptions& options,
                         int first);

/// The same by the jackknife: from what leaving out each view in turn would change, to first order. Empty
/// also when the views would not determine it without one of them.
cv::Mat SharedJackknife(const PairSolution& solution, const PairOptions& options, int first);

/// For each view, how far apart its two pictures put the sheet, in units of the noise within the pictures:
/// the root of the squares, per degree of freedom, that a pose of its own for each camera would save.
std::vector<double> DisagreementsOf(const PairSolution& solution, const PairTarget& target);

}  // namespace velmora::solver
