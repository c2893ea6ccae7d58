/// Lens models by the names that the calibrating tools take.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "Calibrator.h"

namespace common {

/// Beside the numbers of Calibrator's models.
constexpr int MODEL_AUTO = -1;     ///< the one that the views ask for
constexpr int MODEL_FISHEYE = -2;  ///< ComputeFisheye

/// classic, rational, full, fisheye, auto.
const std::map<std::string, int>& LensModels();

std::string NameOfModel(int model);

/// A model that is no longer MODEL_AUTO.
struct ChosenModel {
  int model = 0;
  std::vector<std::string> reasons;  ///< of an automatic choice
};

/// The model, or the one that the calibrator's snapshots ask for; a fisheye only where the sparse solver,
/// which alone computes it, is chosen.
ChosenModel ChooseModel(int model, Calibrator& calibrator);

/// Computes from the snapshots, on the caller's thread or on one of the calibrator's.
void ComputeModel(int model, Calibrator& calibrator);
void ComputeModelInBackground(int model, Calibrator& calibrator);

}  // namespace common
