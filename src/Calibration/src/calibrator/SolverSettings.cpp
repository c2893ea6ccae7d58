/// Which solver computations use, and how.
#include "calibrator/SolverSettings.h"

#include <cmath>
#include <utility>

#include "Log.h"

namespace velmora {

void SolverChoice::SetSolver(int solver) {
  if (solver != SOLVER_OPENCV && solver != SOLVER_SPARSE) {
    Log::error("There is no solver %d.", solver);
    return;
  }
  solver_ = solver;
}

void SolverChoice::SetSheetShape(int shape) {
  if (shape < SHEET_FLAT || shape > SHEET_AUTO) {
    Log::error("There is no shape %d of sheets.", shape);
    return;
  }
  const std::lock_guard<std::mutex> lock(lock_);
  sheet_ = SheetShapeOf(shape);
}

void SolverChoice::SetSheetShape(std::vector<cv::Point3d> points) {
  const std::lock_guard<std::mutex> lock(lock_);
  sheet_ = SheetAssumption();
  sheet_.known = std::move(points);
}

SolverSettings SolverChoice::Current() const {
  const std::lock_guard<std::mutex> lock(lock_);
  return {solver_, robust_, discRadius_, refineIntrinsics_, sheet_};
}

void SolverChoice::SetDiscRadius(double radius) {
  if (!std::isfinite(radius) || radius < 0.0) {
    Log::error("There are no discs of radius %f.", radius);
    return;
  }
  discRadius_ = radius;
}

}  // namespace velmora
