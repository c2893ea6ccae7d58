/// Chooses which shape a sheet is taken to have.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "solver/SheetLadder.h"
#include "solver/SparseIntrinsics.h"
#include "solver/SparsePair.h"

namespace velmora {

/// The best of the rungs, by its number. Bayes' information criterion decides, but where a shape of less
/// freedom that it allows, too, leaves projections less uncertain, the larger of formal deviation and
/// jackknife: then that one is taken. It must be so by more than chance, which with few poses is large. Bends
/// of each view that the criterion takes stay. A flat sheet is taken only when `shape` allows it, and when
/// nothing else is better.
size_t ChooseRung(const std::vector<solver::SheetRung>& rungs, SheetShape shape);

/// The solution of a flat sheet, or the best one with a shape that is allowed, of the same views. A known
/// shape, in the frame of the views' target, is the one that is taken: all that is chosen is whether views
/// have bends of their own, by the criterion. Raises cv::Exception when it is that of another target, or when
/// the views agree with no camera before it.
Solution WithShape(const std::vector<TargetView>& views, const Solution& flat, const SheetAssumption& sheet,
                   const solver::BundleOptions& options);

/// The pair of a flat sheet (SolveExtrinsicsSparsely, RefinePairSparsely), or with a shape.
ExtrinsicsResult PairWithShape(const ExtrinsicsResult& flat, const solver::Target& target,
                               const StereoIntrinsics& intrinsics, int model, const SheetAssumption& sheet,
                               const SparsePairOptions& options);

/// The assumption with the known shape in the frame of a target whose middle has been made its origin.
SheetAssumption AboutMiddle(SheetAssumption sheet, const cv::Vec3d& middle);

/// SolveFisheyeSparsely, with the shape of the sheet that `options.sheet` allows.
SparseResult SolveFisheyeWithSheet(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                   const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                   const cv::Size& imageSize, const SparseOptions& options);

/// SolveIntrinsicsSparsely, with the shape of the sheet that `options.sheet` allows.
SparseResult SolveIntrinsicsWithSheet(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                      const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                      const cv::Size& imageSize, int model, const SparseOptions& options);

}  // namespace velmora
