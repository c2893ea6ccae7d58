/// What is said of a sheet whose shape was estimated.
#pragma once

#include <vector>

#include "Verdict.h"
#include "model/Solution.h"

namespace velmora {

/// Notes the shape in the verdict on a single camera, whose hull of the data is known; nothing where the
/// sheet was taken for flat. Remarks tell it where a flat sheet would have moved projections by more than
/// `least` pixels; they cost no grade, since the shape is in the result. Points are about their middle.
void AssessShape(const Solution& solution, double least, CalibrationVerdict& verdict);

/// The same of two cameras or more; remarks where a flat sheet would have put any of them elsewhere by enough
/// to matter.
void AssessShapeOfRig(const Solution& solution, CalibrationVerdict::Sheet& sheet,
                      std::vector<CalibrationVerdict::Remark>& remarks);

}  // namespace velmora
