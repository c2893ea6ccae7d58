/// Assesses a computed camera.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Verdict.h"
#include "model/Solution.h"
#include "solver/SparseIntrinsics.h"

namespace velmora {

/// Assesses either solver's result for the records. What the result rejected is not used here either;
/// `discRadius` is that of the computation. Grade None when the result does not belong to the records.
CalibrationVerdict AssessIntrinsics(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                    const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                    const cv::Size& imageSize, const SparseResult& result,
                                    double discRadius = 0.0);

/// Assesses one of a solution's cameras, whose intrinsics were estimated. `largerModel` answers the name of a
/// larger lens model that justifies its coefficients, or "" when none does; it is called only when the
/// residuals suggest one. `leftOut` are the camera's images that the solution is without, where they are at
/// hand.
CalibrationVerdict AssessCamera(const Solution& solution, size_t camera,
                                const std::function<std::string()>& largerModel,
                                const std::vector<Observation>& leftOut = {});

}  // namespace velmora
