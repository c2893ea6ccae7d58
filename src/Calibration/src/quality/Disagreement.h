/// How well the images that several cameras took of a view agree.
#pragma once

#include <vector>

#include "PairVerdict.h"
#include "model/Solution.h"

namespace velmora {

/// For each view, how far apart its images put the sheet, in units of the noise within the images: the root
/// of the squared residuals, per degree of freedom, that a pose of its own for each camera would save. A view
/// of one image has none: 0.
std::vector<double> DisagreementsOf(const Solution& solution);

/// The median of them, of views of two images or more; 0 of none.
double UsualDisagreement(const std::vector<double>& disagreements);

/// The views in which the sheet or a camera moved between the images: far beyond the noise, and beyond the
/// usual.
std::vector<PairVerdict::Disagreement> MovedViews(const std::vector<double>& disagreements);

}  // namespace velmora
