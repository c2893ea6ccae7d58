/// Says in the log what a computation left out.
#pragma once

#include <vector>

#include "model/Solution.h"

namespace velmora {

/// A warning line for each view and point of one camera.
void LogRejected(const std::vector<Rejected>& rejected);

/// A warning line for each image and point of a pair.
void LogRejectedOfPair(const std::vector<Rejected>& rejected);

/// A warning line for each image of a pair that was counted anew.
void LogRecountedOfPair(const std::vector<Recounted>& recounted);

}  // namespace velmora
