/// Compares the lens models on the same views.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "ModelChoice.h"
#include "quality/FisheyeComparison.h"
#include "solver/SparseIntrinsics.h"

namespace velmora {

/// With the options of a computation, of which robustness is applied once, by the full model: what even that
/// cannot explain is rejected for all. Raises cv::Exception as SolveIntrinsicsSparsely does.
ModelChoice CompareModels(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                          const std::vector<std::vector<cv::Point2d>>& imagePoints, const cv::Size& imageSize,
                          const SparseOptions& options = {});

/// The same with a fisheye beside the model that was chosen. Where the views fit no other lens the fisheye is
/// chosen beside the classic model.
ModelChoice CompareAllModels(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                             const std::vector<std::vector<cv::Point2d>>& imagePoints,
                             const cv::Size& imageSize, const SparseOptions& options = {});

/// What becomes of a choice when a fisheye was compared with the chosen model.
ModelChoice ChooseWithFisheye(ModelChoice choice, const FisheyeComparison& compared);

/// The choice among candidates that are in the order of their size, with its reasons.
ModelChoice ChooseAmong(const std::vector<ModelChoice::Candidate>& candidates);

}  // namespace velmora
