/// A calibrator's snapshots as JSON, as programs on numbers have them.
#pragma once

#include <string>

#include "velmora/GridSnapshot.h"

namespace velmora {

/// An object of `cameras`, each of `centres` (pairs of numbers, pixels), `weights` and `deviations`; without
/// pictures.
std::string AnswerOf(const GridSnapshot& snapshot);

/// What AnswerOf gave. Raises std::invalid_argument for other texts.
GridSnapshot GridSnapshotFrom(const std::string& text);

/// An object of `rejected`, `reason` and `cameras`, each of `rms`, `residuals` (pairs of numbers in pixels,
/// null for a circle that was not seen) and `outliers`.
std::string AnswerOf(const SnapshotFit& fit);

}  // namespace velmora
