/// Tells finite numbers from others.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace velmora {

/// Raises cv::Exception (StsNoConv) unless the error, as single precision holds it, and all elements of the
/// matrices are finite. Solvers end in such numbers when the views determine no camera.
void RequireFinite(double rms, const std::vector<cv::Mat>& matrices);

}  // namespace velmora
