/// The options of the headless tool that say how to solve.
#include "batch/SolverOptions.h"

#include <CLI/CLI.hpp>
#include <map>

#include "Finite.h"
#include "batch/Arguments.h"
#include "batch/CameraViews.h"

namespace batch {

namespace {

/// As on the sheet that comes with the system: radius over unit.
constexpr double USUAL_DISC = 0.4;

}  // namespace

void AddSolverOptions(CLI::App& app, Arguments& arguments) {
  static const std::map<std::string, int> solvers = {{"sparse", Calibrator::SOLVER_SPARSE},
                                                     {"opencv", Calibrator::SOLVER_OPENCV}};
  app.add_option("--solver", arguments.solver,
                 "sparse (milliseconds; leaves out what disagrees) or opencv (default: sparse)")
      ->transform(CLI::CheckedTransformer(solvers).description("{sparse,opencv}"));
  app.add_option("--disc", arguments.disc,
                 "radius of the discs in metres, for the sparse solver; 0: no correction of their centres "
                 "(default: 0.4 times the distance of adjacent rows)")
      ->check(CLI::NonNegativeNumber)
      ->check(FaultUnlessFinite);
}

void ApplySolver(const Arguments& arguments, Calibrator& calibrator) {
  calibrator.SetSolver(arguments.solver);
  calibrator.SetRobust(true);
  calibrator.SetDiscRadius(arguments.disc >= 0.0 ? arguments.disc
                                                 : USUAL_DISC * static_cast<double>(UnitOf(arguments)));
}

}  // namespace batch
