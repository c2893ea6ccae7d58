/// Tells finite numbers from others.
#include "calibrator/Finite.h"

#include <algorithm>
#include <cmath>

namespace velmora {

void RequireFinite(double rms, const std::vector<cv::Mat>& matrices) {
  const bool finite = std::all_of(matrices.begin(), matrices.end(), [](const cv::Mat& matrix) {
    return matrix.empty() || cv::checkRange(matrix);
  });
  if (!finite || !std::isfinite(static_cast<float>(rms))) {
    CV_Error(cv::Error::StsNoConv, "the views determine no camera: the result is not finite");
  }
}

}  // namespace velmora
