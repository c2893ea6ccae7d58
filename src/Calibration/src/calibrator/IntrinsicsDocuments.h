/// Reads the intrinsics of a pair's cameras from their result files.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "solver/OpenCvExtrinsics.h"

namespace velmora {

/// Reads two monocular results, files or their texts: both are opened before either is looked into. False,
/// with an error line that names the first of which that cannot be done.
bool ReadIntrinsics(const std::string& left, const std::string& right, bool areFiles,
                    StereoIntrinsics& intrinsics);

/// True for coefficients of the rational model or a larger one; otherwise an error line names the source.
bool IsRational(const cv::Mat& D, const std::string& source);

}  // namespace velmora
