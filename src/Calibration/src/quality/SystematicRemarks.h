/// What is said of causes that are no noise.
#pragma once

#include <string>

#include "Verdict.h"
#include "quality/SystematicErrors.h"

namespace velmora {

/// What it is, and what to do about it; notes its size in the verdict. Of all causes but the lens.
CalibrationVerdict::Remark RemarkOn(const SystematicError& error, const Solution& solution, size_t camera,
                                    CalibrationVerdict& verdict);

/// "0.25": a number with that many digits after the point.
std::string Decimal(double value, int digits);

/// "between view 3 and 4", "from the first view to the last" and so on: when it was that something changed.
std::string WhenOf(const Change& change, const Solution& solution);

}  // namespace velmora
