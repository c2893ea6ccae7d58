/// Chooses which shape a sheet is taken to have.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "solver/SheetLadder.h"
#include "solver/SparseIntrinsics.h"

namespace velmora {

/// The best of the rungs, by its number. Bayes' information criterion decides, but where a shape of less
/// freedom that it allows, too, leaves projections less uncertain, the larger of formal deviation and
/// jackknife: then that one is taken. It must be so by more than chance, which with few poses is large. A flat
/// sheet is taken only when `shape` allows it, and when nothing else is better.
size_t ChooseRung(const std::vector<solver::SheetRung>& rungs, SheetShape shape);

/// SolveIntrinsicsSparsely, with the shape of the sheet that `options.sheet` allows.
SparseResult SolveIntrinsicsWithSheet(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                      const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                      const cv::Size& imageSize, int model, const SparseOptions& options);

}  // namespace velmora
