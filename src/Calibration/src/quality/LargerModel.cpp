/// Whether a larger lens model than that of a result justifies its coefficients.
#include "quality/LargerModel.h"

#include "model/LensModel.h"
#include "quality/ModelComparison.h"
#include "solver/OpenCvMatrices.h"

namespace velmora {

namespace {

bool IsFisheye(const SparseResult& result) {
  return result.solution != nullptr && result.solution->rig.cameras.front().intrinsics.IsFisheye();
}

}  // namespace

LargerModel::LargerModel(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                         const std::vector<std::vector<cv::Point2d>>& imagePoints, const cv::Size& imageSize,
                         const SparseResult& result, double discRadius)
    : objectPoints_(objectPoints),
      imagePoints_(imagePoints),
      imageSize_(imageSize),
      isFisheye_(IsFisheye(result)),
      parameters_(isFisheye_ ? 0 : solver::IntrinsicsOf(result).estimated) {
  options_.robust = result.robust;
  options_.discRadius = discRadius;
  options_.deviations = result.deviations;
}

const std::string& LargerModel::Name() {
  if (!asked_) name_ = Ask();
  asked_ = true;
  return name_;
}

std::string LargerModel::Ask() const {
  if (isFisheye_) return "";  // no model has all of its terms
  try {
    const ModelChoice choice = CompareAllModels(objectPoints_, imagePoints_, imageSize_, options_);
    if (choice.prefersFisheye) return choice.Name();
    return LensModelOf(choice.model).parameters > parameters_ ? choice.Name() : "";
  } catch (const cv::Exception&) {
    return "";  // a model that cannot be computed is no advice
  }
}

}  // namespace velmora
