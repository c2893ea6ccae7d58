/// Calibrates cameras together with the shape of the sheet.
#pragma once

#include <vector>

#include "solver/SheetLadder.h"

namespace velmora::solver {

/// The shapes that a sheet may have, with a solution for each, all from one selection of views and points.
struct SheetShapes {
  std::vector<TargetView> views;  ///< the selected ones as they were observed, not corrected for the discs
  std::vector<SheetRung> rungs;   ///< at least the flat one
};

/// From the solution of a flat sheet. Where that is robust, what it rejected may come back: a bend throws out
/// the most telling views first. Views and points are then selected by the largest shape. Views that are not
/// of one target leave the flat solution alone, as does a level of SheetLevel::Flat.
SheetShapes ShapesOf(const std::vector<TargetView>& views, const Solution& flat, SheetLevel most,
                     const BundleOptions& options);

/// The same of a shape that is known, in the frame of the views' target: flat, known, known with bends of
/// each view. Raises cv::Exception when the target is another one.
SheetShapes KnownShapesOf(const std::vector<TargetView>& views, const Solution& flat,
                          const std::vector<cv::Point3d>& known, const BundleOptions& options);

/// One of the shapes with all digits, its pixels corrected for the discs before the cameras that it gave.
Solution Finished(const SheetShapes& shapes, size_t rung, const BundleOptions& options);

/// Notes what was selected, and from what, as of another solution of the same views.
void CopySelection(const Solution& from, Solution& to);

}  // namespace velmora::solver
