/// Cameras and a pair from photographs.
#include <algorithm>
#include <filesystem>
#include <memory>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "frozen/Cases.h"
#include "unit/Collection.h"

namespace frozen {

namespace {

constexpr double DISC = 0.008;

std::vector<std::string> FilesIn(const std::string& folder) {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    files.push_back(entry.path().string());
  std::sort(files.begin(), files.end());
  return files;
}

struct Grid {
  std::string file;
  std::vector<cv::Point2d> centres;
};

/// The grids that a search finds, at the size of the first image or at the one asked for.
std::vector<Grid> Found(const std::string& folder, int finder, cv::Size& size) {
  std::vector<Grid> grids;
  std::unique_ptr<Calibrator> calibrator;
  for (const std::string& file : FilesIn(folder)) {
    cv::Mat image = cv::imread(file);
    if (image.empty()) continue;
    if (size.empty()) size = image.size();
    if (!calibrator) {
      calibrator = std::make_unique<Calibrator>(unit::GRID, unit::UNIT, Calibrator::MONOCULAR, size.width,
                                                size.height);
      calibrator->SetFinder(finder);
    }
    Grid grid{std::filesystem::path(file).filename().string(), {}};
    if (calibrator->DetectPoints(image, grid.centres, false)) grids.push_back(grid);
  }
  return grids;
}

void WriteSet(Writer& writer, const std::string& name, const std::vector<Grid>& grids, const cv::Size& size) {
  writer.Begin("photographs/" + name);
  for (const Grid& grid : grids) writer.Matrix("centres/" + grid.file, cv::Mat(grid.centres));
  for (const int model : {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL}) {
    Calibrator calibrator(unit::GRID, unit::UNIT, Calibrator::MONOCULAR, size.width, size.height);
    for (const Grid& grid : grids) calibrator.AddPoints(grid.centres);
    calibrator.SetSolver(Calibrator::SOLVER_SPARSE);
    calibrator.SetRobust(true);
    calibrator.SetDiscRadius(DISC);
    writer.Begin("photographs/" + name + '/' + ModelChoice::NameOf(model));
    calibrator.ComputeCalibration(model);
    writer.Camera(calibrator);
  }
}

/// Both cameras' results, then the pair with intrinsics fixed and refined.
void WritePair(Writer& writer, const std::string& name, const std::vector<Grid>& left,
               const std::vector<Grid>& right, const cv::Size& size) {
  Calibrator pair(unit::GRID, unit::UNIT, Calibrator::STEREO, size.width, size.height);
  std::string results[2];
  const std::vector<Grid>* sides[] = {&left, &right};
  for (int side = 0; side < 2; ++side) {
    Calibrator camera(unit::GRID, unit::UNIT, Calibrator::MONOCULAR, size.width, size.height);
    for (const Grid& grid : *sides[side]) camera.AddPoints(grid.centres);
    camera.SetSolver(Calibrator::SOLVER_SPARSE);
    camera.ComputeCalibration(Calibrator::MODEL_RATIONAL);
    results[side] = camera.SaveResult(false, "");
  }
  for (const Grid& grid : left) {
    const auto other = std::find_if(right.begin(), right.end(),
                                    [&](const Grid& candidate) { return candidate.file == grid.file; });
    if (other != right.end()) pair.AddStereoPoints(grid.centres, other->centres);
  }
  pair.SetSolver(Calibrator::SOLVER_SPARSE);
  for (const bool refine : {false, true}) {
    pair.SetRefineLenses(refine);
    writer.Begin("photographs/" + name + (refine ? "/refined" : "/held"));
    pair.ComputeCalibrationStereo(results[0], results[1], Calibrator::MODEL_RATIONAL, false);
    writer.Pair(pair);
  }
}

}  // namespace

void WritePhotographs(Writer& writer, const std::string& folder) {
  for (const std::string& set : {std::string("office-4x11"), std::string("flat-4x11")}) {
    for (const int finder : {Calibrator::FINDER_STANDARD, Calibrator::FINDER_ROBUST}) {
      cv::Size size;
      const std::vector<Grid> grids = Found(folder + '/' + set, finder, size);
      WriteSet(writer, set + (finder == Calibrator::FINDER_ROBUST ? "/robust" : "/standard"), grids, size);
    }
  }
  cv::Size size(640, 480);
  const std::string endoscope = folder + "/endoscope-stereo-4x11";
  const std::vector<Grid> left = Found(endoscope + "/left", Calibrator::FINDER_ROBUST, size);
  const std::vector<Grid> right = Found(endoscope + "/right", Calibrator::FINDER_ROBUST, size);
  WriteSet(writer, "endoscope/left", left, size);
  WriteSet(writer, "endoscope/right", right, size);
  WritePair(writer, "endoscope", left, right, size);
}

}  // namespace frozen
