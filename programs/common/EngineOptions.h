/// The options of the calibrating tools that say how to search grids and how to solve.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Calibrator.h"

namespace CLI {
class App;
}

namespace common {

/// As the tools have them, with their defaults, which differ from a calibrator's own.
struct EngineOptions {
  int finder = Calibrator::FINDER_ROBUST;
  bool fineCentres = true;  ///< of what the robust search finds
  int solver = Calibrator::SOLVER_SPARSE;
  int sheet = Calibrator::SHEET_AUTO;
  std::string sheetFile;                 ///< the verdict that holds the sheet's shape; empty: `sheet` counts
  std::vector<cv::Point3d> sheetPoints;  ///< of that file, once it was read
  double disc = -1.0;                    ///< radius of the discs in metres; negative: that of the usual sheet
};

void AddEngineOptions(CLI::App& app, EngineOptions& options);

/// Reads the file with the sheet's shape, where there is one. Raises CLI::ValidationError when it has none of
/// such a grid.
void ReadSheetShape(const cv::Size& grid, float unit, EngineOptions& options);

/// A sheet's shape by its name, or the file that holds it. Raises CLI::ValidationError for what is neither.
void TakeSheetShape(const std::string& shape, EngineOptions& options);
/// The same in return: the name, or the absolute path of the file.
std::string SheetShapeText(const EngineOptions& options);

/// The radius of the discs of a grid of that unit, metres.
double DiscRadius(const EngineOptions& options, float unit);

/// For a grid of that unit (metres). The sparse solver, when it is chosen, rejects outliers and corrects the
/// eccentricity of the discs.
void ApplyEngineOptions(const EngineOptions& options, float unit, Calibrator& calibrator);

}  // namespace common
