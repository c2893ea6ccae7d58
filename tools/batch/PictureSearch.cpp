/// The search of the grid in one camera's pictures.
#include "batch/PictureSearch.h"

namespace batch {

namespace {

std::string SizeText(const cv::Size& size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height);
}

}  // namespace

float UnitOf(const Arguments& arguments) {
  return arguments.hdist / static_cast<float>(arguments.grid.height - 1);
}

std::string PictureSearch::FaultOf(Picture& picture, Centres& centres) {
  if (picture.image.empty()) return "cannot be decoded";
  if (calibrator_ == nullptr) {
    inputSize_ = picture.image.size();
    const cv::Size frame = FrameSize();
    calibrator_ = std::make_unique<Calibrator>(arguments_.grid, UnitOf(arguments_), Calibrator::MONOCULAR,
                                               frame.width, frame.height);
    tools::ApplyEngineOptions(arguments_, UnitOf(arguments_), *calibrator_);
  }
  if (picture.image.size() != inputSize_)
    return "of another size than the first (" + SizeText(inputSize_) + ")";
  if (calibrator_->DetectPoints(picture.image, centres, false)) return "";
  const std::string reason = calibrator_->WhyNotFound();
  return reason.empty() ? "no grid found" : "no grid found: " + reason;
}

cv::Size PictureSearch::FrameSize() const {
  return {arguments_.frame.width > 0 ? arguments_.frame.width : inputSize_.width,
          arguments_.frame.height > 0 ? arguments_.frame.height : inputSize_.height};
}

}  // namespace batch
