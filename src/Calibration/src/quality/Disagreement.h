/// How well the images that several cameras took of a view agree.
#pragma once

#include <vector>

#include "model/Solution.h"

namespace velmora {

/// For each view, how far apart its images put the sheet, in units of the noise within the images: the root
/// of the squared residuals, per degree of freedom, that a pose of its own for each camera would save. A view
/// of one image has none: 0.
std::vector<double> DisagreementsOf(const Solution& solution);

}  // namespace velmora
