/// The options of the calibrating tools that say how to search grids and how to solve.
#pragma once

#include "Calibrator.h"

namespace CLI {
class App;
}

namespace common {

/// As the tools have them, with their defaults, which differ from a calibrator's own.
struct EngineOptions {
  int finder = Calibrator::FINDER_ROBUST;
  int solver = Calibrator::SOLVER_SPARSE;
  int sheet = Calibrator::SHEET_AUTO;
  double disc = -1.0;  ///< radius of the discs in metres; negative: that of the usual sheet
};

void AddEngineOptions(CLI::App& app, EngineOptions& options);

/// The radius of the discs of a grid of that unit, metres.
double DiscRadius(const EngineOptions& options, float unit);

/// For a grid of that unit (metres). The sparse solver, when it is chosen, rejects outliers and corrects the
/// eccentricity of the discs.
void ApplyEngineOptions(const EngineOptions& options, float unit, Calibrator& calibrator);

}  // namespace common
