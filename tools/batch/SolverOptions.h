/// The options of the headless tool that say how to solve.
#pragma once

#include "Calibrator.h"

namespace CLI {
class App;
}

namespace batch {

struct Arguments;

void AddSolverOptions(CLI::App& app, Arguments& arguments);

/// The sparse solver, when it is chosen, leaves out what disagrees and corrects the bias of the discs.
void ApplySolver(const Arguments& arguments, Calibrator& calibrator);

}  // namespace batch
