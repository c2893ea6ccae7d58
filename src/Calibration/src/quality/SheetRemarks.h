/// What is said of a sheet whose shape was estimated.
#pragma once

#include "Verdict.h"
#include "model/Solution.h"

namespace velmora {

/// Notes the shape in the verdict, whose hull of the data is known; nothing where the sheet was taken for
/// flat. Remarks tell it where a flat sheet would have moved projections by more than `least` pixels; they
/// cost no grade, since the shape is in the result.
void AssessShape(const Solution& solution, size_t camera, double least, CalibrationVerdict& verdict);

}  // namespace velmora
