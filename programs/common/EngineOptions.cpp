/// The options of the calibrating tools that say how to search grids and how to solve.
#include "common/EngineOptions.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>

#include "common/CommandLine.h"
#include "common/Numbers.h"
#include "common/SheetFile.h"

namespace common {

namespace {

/// As on the sheet that comes with the system: radius over unit.
constexpr double USUAL_DISC = 0.4;

const std::map<std::string, int> SHEET_SHAPES = {{"auto", Calibrator::SHEET_AUTO},
                                                 {"flat", Calibrator::SHEET_FLAT},
                                                 {"bent", Calibrator::SHEET_BENT},
                                                 {"free", Calibrator::SHEET_FREE}};

}  // namespace

void TakeSheetShape(const std::string& shape, EngineOptions& options) {
  const auto known = SHEET_SHAPES.find(shape);
  if (known != SHEET_SHAPES.end()) {
    options.sheet = known->second;
    options.sheetFile.clear();
    return;
  }
  options.sheetFile = shape;
  if (!std::ifstream(shape)) {
    throw CLI::ValidationError("--sheet-shape",
                               "'" + shape + "' is not one of auto, bent, flat, free, nor a file");
  }
}

std::string SheetShapeText(const EngineOptions& options) {
  if (!options.sheetFile.empty()) return std::filesystem::absolute(options.sheetFile).string();
  for (const auto& [name, shape] : SHEET_SHAPES) {
    if (shape == options.sheet) return name;
  }
  return "";
}

void AddEngineOptions(CLI::App& app, EngineOptions& options) {
  app.add_option("--finder", options.finder, "how the grid is searched: standard or robust (default: robust)")
      ->transform(OneOf({{"standard", Calibrator::FINDER_STANDARD}, {"robust", Calibrator::FINDER_ROBUST}}))
      ->type_name("NAME");
  app.add_option_function<int>(
         "--centres", [&options](int fine) { options.fineCentres = fine != 0; },
         "centres of the discs that the robust search found: fine (fitted to the pixels, so that uneven "
         "light does not move them) or plain (centroids) (default: fine)")
      ->transform(OneOf({{"fine", 1}, {"plain", 0}}))
      ->type_name("NAME");
  app.add_option("--solver", options.solver,
                 "sparse (milliseconds; leaves out what disagrees) or opencv (default: sparse)")
      ->transform(OneOf({{"sparse", Calibrator::SOLVER_SPARSE}, {"opencv", Calibrator::SOLVER_OPENCV}}))
      ->type_name("NAME");
  app.add_option_function<std::string>(
         "--sheet-shape", [&options](const std::string& shape) { TakeSheetShape(shape, options); },
         "what the sparse solver may take the sheet for: flat, bent, free (points beside their places, "
         "too), auto (default: auto), or the verdict file of an earlier calibration that measured this sheet")
      ->type_name("SHAPE|FILE");
  app.add_option("--disc", options.disc,
                 "radius of the discs in metres, for the sparse solver; 0: no correction of their centres "
                 "(default: 0.4 times the distance of adjacent rows)")
      ->check(FaultIfNegative, "not negative")
      ->type_name("METRES");
}

void ReadSheetShape(const cv::Size& grid, float unit, EngineOptions& options) {
  if (options.sheetFile.empty()) return;
  if (options.solver != Calibrator::SOLVER_SPARSE)
    throw CLI::ValidationError("--sheet-shape", "OpenCV's solver knows no shape but a flat one");
  std::string fault;
  try {
    options.sheetPoints = SheetPointsOf(options.sheetFile);
    fault = FaultOfSheet(options.sheetPoints, grid, unit);
  } catch (const std::invalid_argument& words) {
    fault = words.what();
  }
  if (!fault.empty()) throw CLI::ValidationError("--sheet-shape", "'" + options.sheetFile + "' " + fault);
}

double DiscRadius(const EngineOptions& options, float unit) {
  return options.disc >= 0.0 ? options.disc : USUAL_DISC * static_cast<double>(unit);
}

void ApplyEngineOptions(const EngineOptions& options, float unit, Calibrator& calibrator) {
  calibrator.SetFinder(options.finder);
  calibrator.SetFineCentres(options.fineCentres);
  calibrator.SetSolver(options.solver);
  calibrator.SetRobust(true);
  if (options.sheetPoints.empty()) {
    calibrator.SetSheetShape(options.sheet);
  } else {
    calibrator.SetSheetShape(options.sheetPoints);
  }
  calibrator.SetDiscRadius(DiscRadius(options, unit));
}

}  // namespace common
