/// The lens models: what each is called, what it estimates, and what it asks of OpenCV.
#include "model/LensModel.h"

#include <algorithm>
#include <opencv2/calib3d.hpp>

namespace velmora {

namespace {

constexpr int FULL_FLAGS = cv::CALIB_RATIONAL_MODEL | cv::CALIB_THIN_PRISM_MODEL | cv::CALIB_TILTED_MODEL;

const std::array<LensModel, 3> MODELS = {
    {{MODEL_CLASSIC, "classic", CLASSIC_PARAMETERS, 0},
     {MODEL_RATIONAL, "rational", RATIONAL_PARAMETERS, cv::CALIB_RATIONAL_MODEL},
     {MODEL_FULL, "full", FULL_PARAMETERS, FULL_FLAGS}}};

/// Null when the number is no model's.
const LensModel* Find(int number) {
  const auto* const found = std::find_if(MODELS.begin(), MODELS.end(),
                                         [number](const LensModel& model) { return model.number == number; });
  return found == MODELS.end() ? nullptr : found;
}

}  // namespace

const std::array<LensModel, 3>& LensModels() {
  return MODELS;
}

const LensModel& LensModelOf(int number) {
  const LensModel* const found = Find(number);
  return found == nullptr ? MODELS.front() : *found;
}

const char* LensModelName(int number) {
  const LensModel* const found = Find(number);
  return found == nullptr ? "none" : found->name;
}

}  // namespace velmora
