/// What the headless tool says of a result's worth.
#pragma once

#include <string>
#include <vector>

#include "PairVerdict.h"
#include "Verdict.h"

namespace batch {

/// The verdict in words; `names` are those of the views.
std::string VerdictTable(const CalibrationVerdict& verdict, const std::vector<std::string>& names);
std::string VerdictTable(const PairVerdict& verdict, const std::vector<std::string>& names);

}  // namespace batch
