/// The options of the calibrating tools that say how to search grids and how to solve.
#include "common/EngineOptions.h"

#include <CLI/CLI.hpp>

#include "common/CommandLine.h"
#include "common/Numbers.h"

namespace common {

namespace {

/// As on the sheet that comes with the system: radius over unit.
constexpr double USUAL_DISC = 0.4;

}  // namespace

void AddEngineOptions(CLI::App& app, EngineOptions& options) {
  app.add_option("--finder", options.finder, "how the grid is searched: standard or robust (default: robust)")
      ->transform(OneOf({{"standard", Calibrator::FINDER_STANDARD}, {"robust", Calibrator::FINDER_ROBUST}}))
      ->type_name("NAME");
  app.add_option("--solver", options.solver,
                 "sparse (milliseconds; leaves out what disagrees) or opencv (default: sparse)")
      ->transform(OneOf({{"sparse", Calibrator::SOLVER_SPARSE}, {"opencv", Calibrator::SOLVER_OPENCV}}))
      ->type_name("NAME");
  app.add_option(
         "--sheet-shape", options.sheet,
         "what the sparse solver may take the sheet for: flat, bent, free (points beside their places, "
         "too) or auto (default: auto)")
      ->transform(OneOf({{"auto", Calibrator::SHEET_AUTO},
                         {"flat", Calibrator::SHEET_FLAT},
                         {"bent", Calibrator::SHEET_BENT},
                         {"free", Calibrator::SHEET_FREE}}))
      ->type_name("SHAPE");
  app.add_option("--disc", options.disc,
                 "radius of the discs in metres, for the sparse solver; 0: no correction of their centres "
                 "(default: 0.4 times the distance of adjacent rows)")
      ->check(FaultIfNegative, "not negative")
      ->type_name("METRES");
}

double DiscRadius(const EngineOptions& options, float unit) {
  return options.disc >= 0.0 ? options.disc : USUAL_DISC * static_cast<double>(unit);
}

void ApplyEngineOptions(const EngineOptions& options, float unit, Calibrator& calibrator) {
  calibrator.SetFinder(options.finder);
  calibrator.SetSolver(options.solver);
  calibrator.SetRobust(true);
  calibrator.SetSheetShape(options.sheet);
  calibrator.SetDiscRadius(DiscRadius(options, unit));
}

}  // namespace common
