/// Judges a computed camera.
#pragma once

#include "Verdict.h"
#include "solver/SparseIntrinsics.h"

namespace velmora {

/// Of either solver's result for the records. What the result left out is left out here too; `discRadius` is
/// that of the computation. Grade None when the result does not belong to the records.
CalibrationVerdict JudgeIntrinsics(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                   const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                   const cv::Size& imageSize, const SparseResult& result,
                                   double discRadius = 0.0);

}  // namespace velmora
