/// Lens models by the names that the calibrating tools take.
#include "common/LensModels.h"

namespace common {

const std::map<std::string, int>& LensModels() {
  static const std::map<std::string, int> models = {
      {ModelChoice::NameOf(Calibrator::MODEL_CLASSIC), Calibrator::MODEL_CLASSIC},
      {ModelChoice::NameOf(Calibrator::MODEL_RATIONAL), Calibrator::MODEL_RATIONAL},
      {ModelChoice::NameOf(Calibrator::MODEL_FULL), Calibrator::MODEL_FULL},
      {"fisheye", MODEL_FISHEYE},
      {"auto", MODEL_AUTO}};
  return models;
}

std::string NameOfModel(int model) {
  for (const auto& [name, number] : LensModels()) {
    if (number == model) return name;
  }
  return ModelChoice::NameOf(model);
}

ChosenModel ChooseModel(int model, Calibrator& calibrator) {
  if (model != MODEL_AUTO) return {model, {}};
  const ModelChoice choice = calibrator.ChooseModel();
  const bool fisheye = choice.prefersFisheye && calibrator.GetSolver() == Calibrator::SOLVER_SPARSE;
  return {fisheye ? MODEL_FISHEYE : choice.model, choice.reasons};
}

void ComputeModel(int model, Calibrator& calibrator) {
  if (model == MODEL_FISHEYE) {
    calibrator.ComputeFisheye();
  } else {
    calibrator.ComputeCalibration(model);
  }
}

void ComputeModelInBackground(int model, Calibrator& calibrator) {
  if (model == MODEL_FISHEYE) {
    calibrator.ComputeFisheyeMultithread();
  } else {
    calibrator.ComputeCalibrationMultithread(model);
  }
}

}  // namespace common
