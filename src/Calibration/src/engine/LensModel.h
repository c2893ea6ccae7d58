/// The lens models and what they ask of OpenCV's calibration.
#pragma once

#include <opencv2/core.hpp>

/// Calibration flags of a model: MODEL_RATIONAL, MODEL_FULL; any other value is classic (none).
int FlagsOfModel(int model);

/// When the solvers stop: at most 200 iterations, until nothing changes.
cv::TermCriteria SolverCriteria();
