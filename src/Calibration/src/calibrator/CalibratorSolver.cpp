/// The calibrator's choice of a solver.
#include <cmath>
#include <utility>

#include "Calibrator.h"
#include "Log.h"
#include "calibrator/SolverChoice.h"
#include "quality/Judge.h"
#include "quality/ModelComparison.h"
#include "solver/SparsePair.h"

using namespace velmora;

namespace {

void TellLeftOut(const std::vector<Rejected>& rejected) {
  for (const Rejected& item : rejected) {
    if (item.point == Rejected::WHOLE_VIEW) {
      Log::warn("View %zu is left out: %s (%.2f px).", item.view, item.reason.c_str(), item.residual);
    } else {
      Log::warn("Point %d of view %zu is left out: %s (%.2f px).", item.point, item.view, item.reason.c_str(),
                item.residual);
    }
  }
}

void TellLeftOutOfPair(const std::vector<Rejected>& rejected) {
  for (const Rejected& item : rejected) {
    const char* const side = item.camera == 0 ? "left" : "right";
    if (item.point == Rejected::WHOLE_VIEW) {
      Log::warn("The %s image of view %zu is left out: %s (%.2f px).", side, item.view, item.reason.c_str(),
                item.residual);
    } else {
      Log::warn("Point %d of the %s image of view %zu is left out: %s (%.2f px).", item.point, side,
                item.view, item.reason.c_str(), item.residual);
    }
  }
}

}  // namespace

void Calibrator::SetSolver(const int& solver) {
  if (solver != SOLVER_OPENCV && solver != SOLVER_SPARSE) {
    Log::error("There is no solver %d.", solver);
    return;
  }
  solver_->solver = solver;
}

int Calibrator::GetSolver() {
  return solver_->solver;
}

void Calibrator::SetRobust(const bool& robust) {
  solver_->robust = robust;
}

void Calibrator::SetDiscRadius(const double& radius) {
  if (!std::isfinite(radius) || radius < 0.0) {
    Log::error("There are no discs of radius %f.", radius);
    return;
  }
  solver_->discRadius = radius;
}

void Calibrator::SetRefineLenses(const bool& refine) {
  solver_->refineLenses = refine;
}

void Calibrator::SetProgressListener(ProgressListener listener) {
  const std::lock_guard<std::mutex> lock(solver_->listenerLock);
  solver_->listener = std::move(listener);
}

void Calibrator::CancelComputation() {
  const std::lock_guard<std::mutex> lock(statusLock_);
  if (status_ == STATUS_PROGRESS) solver_->cancelled = true;
}

CalibrationVerdict Calibrator::GetVerdict() {
  if (kind_ != MONOCULAR || GetStatus() == STATUS_PROGRESS) return {};
  std::unique_lock<std::mutex> data(dataLock_);
  const auto objectPoints = records_.objectRecords;
  const auto imagePoints = records_.imageRecords;
  SparseResult result;
  result.K = results_.K;
  result.D = results_.D;
  result.rvecs = results_.rvecs;
  result.tvecs = results_.tvecs;
  result.rejected = solver_->rejected;
  result.robust = solver_->usedRobust;
  result.tooFewAgree = solver_->tooFewAgree;
  result.solution = solver_->solution;
  const double discRadius = solver_->usedDiscRadius;
  data.unlock();
  return JudgeIntrinsics(objectPoints, imagePoints, {frameWidth_, frameHeight_}, result, discRadius);
}

ModelChoice Calibrator::ChooseModel() {
  if (kind_ != MONOCULAR || GetStatus() == STATUS_PROGRESS) return {};
  std::unique_lock<std::mutex> data(dataLock_);
  if (!HasEnoughRecords()) return {};
  const auto objectPoints = records_.objectRecords;
  const auto imagePoints = records_.imageRecords;
  data.unlock();
  const SolverChoice::Settings settings = solver_->Now();
  SparseOptions options;
  options.robust = settings.solver == SOLVER_SPARSE && settings.robust;
  options.discRadius = settings.discRadius;
  return CompareModels(objectPoints, imagePoints, {frameWidth_, frameHeight_}, options);
}

SparseResult Calibrator::SolverChoice::Settings::Solve(
    const std::vector<std::vector<cv::Point3d>>& objectPoints,
    const std::vector<std::vector<cv::Point2d>>& imagePoints, const cv::Size& imageSize, int model) const {
  SparseResult solved;
  if (solver != SOLVER_SPARSE) {
    static_cast<IntrinsicsResult&>(solved) = SolveIntrinsics(objectPoints, imagePoints, imageSize, model);
    return solved;
  }
  SparseOptions options;
  options.robust = robust;
  options.discRadius = discRadius;
  options.progress = progress;
  solved = SolveIntrinsicsSparsely(objectPoints, imagePoints, imageSize, model, options);
  TellLeftOut(solved.rejected);
  return solved;
}

ExtrinsicsResult Calibrator::SolverChoice::Settings::SolvePair(
    const std::vector<std::vector<cv::Point3d>>& objectPoints,
    const std::vector<std::vector<cv::Point2d>>& leftPoints,
    const std::vector<std::vector<cv::Point2d>>& rightPoints, const StereoIntrinsics& intrinsics,
    const cv::Size& imageSize, int model) const {
  if (solver != SOLVER_SPARSE) {
    return SolveExtrinsics(objectPoints, leftPoints, rightPoints, intrinsics, imageSize, model);
  }
  const SparsePairOptions options{discRadius, 1, progress, robust};
  ExtrinsicsResult solved =
      refineLenses
          ? RefinePairSparsely(objectPoints, leftPoints, rightPoints, intrinsics, imageSize, model, options)
          : SolveExtrinsicsSparsely(objectPoints, leftPoints, rightPoints, intrinsics, model, options);
  TellLeftOutOfPair(solved.solution->rejected);
  return solved;
}
