/// The calibrator's choice of a solver.
#include "Calibrator.h"
#include "Log.h"
#include "engine/SolverChoice.h"

void Calibrator::SetSolver(const int& solver) {
  if (solver != SOLVER_OPENCV && solver != SOLVER_SPARSE) {
    Log::error("There is no solver %d.", solver);
    return;
  }
  choice_->solver = solver;
}

int Calibrator::GetSolver() {
  return choice_->solver;
}
