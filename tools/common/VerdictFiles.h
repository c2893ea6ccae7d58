/// The files that tell what a camera's result is worth.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Verdict.h"

namespace tools {

/// Writes the verdict to NAME_verdict.json, and the picture of how sure projections are, with the circles
/// that were seen, to NAME_uncertainty.png. The file that could not be written, or an empty text.
std::string SaveVerdict(const CalibrationVerdict& verdict, const cv::Size& frame,
                        const std::vector<std::vector<cv::Point2d>>& seen, const std::string& name);

}  // namespace tools
