/// Which solver a calibrator computes with.
#pragma once

#include <atomic>

#include "Calibrator.h"

struct Calibrator::SolverChoice {
  std::atomic<int> solver{SOLVER_OPENCV};
};
