/// Whether a larger lens model than that of a result justifies its coefficients.
#include "quality/LargerModel.h"

#include "model/LensModel.h"
#include "quality/ModelComparison.h"
#include "solver/OpenCvMatrices.h"

namespace velmora {

namespace {

/// A fisheye has no larger model.
int ParametersOf(const SparseResult& result) {
  const bool fisheye =
      result.solution != nullptr && result.solution->rig.cameras.front().intrinsics.IsFisheye();
  return fisheye ? FULL_PARAMETERS : solver::IntrinsicsOf(result).estimated;
}

}  // namespace

LargerModel::LargerModel(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                         const std::vector<std::vector<cv::Point2d>>& imagePoints, const cv::Size& imageSize,
                         const SparseResult& result, double discRadius)
    : objectPoints_(objectPoints),
      imagePoints_(imagePoints),
      imageSize_(imageSize),
      parameters_(ParametersOf(result)) {
  options_.robust = result.robust;
  options_.discRadius = discRadius;
}

const std::string& LargerModel::Name() {
  if (!asked_) name_ = Ask();
  asked_ = true;
  return name_;
}

std::string LargerModel::Ask() const {
  if (parameters_ == FULL_PARAMETERS) return "";
  try {
    const ModelChoice choice = CompareModels(objectPoints_, imagePoints_, imageSize_, options_);
    return LensModelOf(choice.model).parameters > parameters_ ? choice.Name() : "";
  } catch (const cv::Exception&) {
    return "";  // a model that cannot be computed is no advice
  }
}

}  // namespace velmora
