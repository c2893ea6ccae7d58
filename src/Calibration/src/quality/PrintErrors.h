/// Discs that are not printed where they should be.
#pragma once

#include "quality/OmittedEffects.h"

namespace velmora {

/// The mean residuals of each point over all views, on the sheet. `values` is the root of the mean square of
/// a coordinate, without what noise makes of it, in the unit of the target. Without values when the views are
/// of different targets.
OmittedEffect OmittedPrintErrors(const Solution& solution);

}  // namespace velmora
