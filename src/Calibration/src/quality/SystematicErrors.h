/// Which causes could be behind residuals that are no noise, and what each does to the result.
#pragma once

#include <vector>

#include "quality/Changes.h"
#include "quality/OmittedEffects.h"

namespace velmora {

struct SystematicError {
  enum class Cause { Bend, Proportions, LensTerms, Radial, Change, PrintErrors, Motion };

  Cause cause = Cause::Bend;
  OmittedEffect effect;
  double shift = 0.0;  ///< pixels by which projections are moved where there are data
  /// The same beside the nearer one of two cameras, where a change made two of one; else the same.
  double nearer = 0.0;
  Change change;  ///< where that is the cause
};

/// The significant ones that move projections of one of the cameras by more than `least` pixels within the
/// area, the one that takes most off the residuals first. Each looks a little like the others: usually only
/// the first is there.
std::vector<SystematicError> SystematicErrorsOf(const Solution& solution, size_t camera,
                                                const std::vector<cv::Point2f>& area, double least);

/// Pixels by which a focal length that changed with time may have moved projections within the area, though
/// it is not sure that it did; 0 when nothing speaks of it.
double HintedShift(const Solution& solution, size_t camera, const std::vector<cv::Point2f>& area);

}  // namespace velmora
