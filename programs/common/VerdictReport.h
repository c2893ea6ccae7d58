/// What the tools say of a result's worth.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "PairVerdict.h"
#include "Verdict.h"
#include "common/RigNames.h"
#include "velmora/RigCalibration.h"

namespace common {

/// The verdict in words; `names` are those of the views.
std::string VerdictTable(const CalibrationVerdict& verdict, const std::vector<std::string>& names);
std::string VerdictTable(const PairVerdict& verdict, const std::vector<std::string>& names);

/// The verdict on a rig and on each of its cameras.
std::string VerdictTable(const velmora::RigResult& result, const RigNames& names);

/// Indexes of the views that the computation rejected as a whole.
std::set<size_t> RejectedViews(const CalibrationVerdict& verdict);
/// Of pairs, also those of which one picture was left out.
std::set<size_t> RejectedViews(const PairVerdict& verdict);

}  // namespace common
