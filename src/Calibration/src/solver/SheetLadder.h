/// Estimates the shape of a sheet, from flat to free, each level from where the one before ended.
#pragma once

#include <vector>

#include "solver/BundleAdjustment.h"
#include "solver/SheetShape.h"

namespace velmora::solver {

/// The solution of one level.
struct SheetRung {
  SheetLevel level = SheetLevel::Flat;
  bool ownBends = false;  ///< whether each view's sheet has a bend of its own, too
  Solution solution;
  /// Bayes' information criterion, by which rungs of the same views are compared: the least is best.
  double criterion = 0.0;
};

/// Whether the shape of the sheet can be estimated from such views: they are of one target of twelve points
/// or more, of which one of them at least shows all points that any shows.
bool HasOneTarget(const std::vector<TargetView>& views);

/// Notes which points of the target each observation is of. False when one is of another target.
bool NotePlaces(const std::vector<cv::Point3d>& target, std::vector<TargetView>& views);

/// The same solution of a sheet with such a shape, which is flat so far. The noise is taken for that of the
/// solution.
CalibrationProblem ShapedProblem(const Solution& flat, SheetLevel level, bool ownBends);

/// Gives each view a bend of its own, of which little is known so far.
void AddOwnBends(Sheet& sheet);

/// Minimises, and makes what is known of the shape beforehand fit the noise that is left, until both agree;
/// so, too, the deviation of the views' own bends, which is estimated from them.
Solution SolveShaped(CalibrationProblem problem, const BundleOptions& options);

/// Every level up to the given one, flat first, and the best of the bent and of the free ones with bends of
/// each view. Levels that cannot be solved are left out. `flat` must be of one target.
std::vector<SheetRung> ClimbSheet(const Solution& flat, SheetLevel most, const BundleOptions& options);

/// The flat sheet, then the one of that shape, which is not estimated, without and with bends of each view.
/// What cannot be solved is left out. Raises cv::Exception when the target is another one.
std::vector<SheetRung> ClimbKnown(const Solution& flat, const std::vector<cv::Point3d>& known,
                                  const BundleOptions& options);

/// The solution of a flat sheet, to be solved again for the known one.
CalibrationProblem KnownProblem(const Solution& flat, const std::vector<cv::Point3d>& known, bool ownBends);

/// Which of the rungs the criterion allows: those that it prefers to all of less freedom.
std::vector<size_t> AllowedOf(const std::vector<SheetRung>& rungs);

/// The sheet with the shape that it was found to have, of which nothing is estimated any more but the views'
/// own bends.
Sheet HeldShapeOf(const Sheet& sheet);

}  // namespace velmora::solver
