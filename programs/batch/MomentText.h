/// What is told of images of the same time.
#pragma once

#include <string>
#include <vector>

#include "batch/SearchLog.h"

namespace batch {

/// Of a pair, from the faults of its images, one of which at least is not empty.
std::string FaultOfPair(const std::string& left, const std::string& right);

/// Why there is no view, or which cameras found the grid. `kind` is that of a SearchHeader, as `cameras` are.
std::string TextOf(const LoggedMoment& moment, const std::string& kind,
                   const std::vector<std::string>& cameras);

}  // namespace batch
