/// How a result agrees with single snapshots.
#pragma once

#include "calibrator/Snapshots.h"
#include "velmora/GridSnapshot.h"

namespace velmora {

/// No cameras when there is no result, or it is not of that snapshot (from 0).
SnapshotFit FitOf(const Snapshots::Moment& moment, size_t number);

}  // namespace velmora
