/// Computes and assesses one camera or a pair from snapshots.
#include "calibrator/Computations.h"

#include <memory>

#include "Log.h"
#include "calibrator/Finite.h"
#include "calibrator/IntrinsicsDocuments.h"
#include "calibrator/ObservedPoints.h"
#include "calibrator/RejectionLog.h"
#include "quality/Assessment.h"
#include "quality/ModelComparison.h"
#include "quality/PairAssessment.h"
#include "quality/SheetChoice.h"
#include "solver/SparsePair.h"

namespace velmora {

namespace {

constexpr size_t ONE_CAMERA = 1;
constexpr size_t PAIR = 2;

/// Of a computation that brought an exception: true when it was told to end, which is then said.
bool WasCancelled(const Snapshots::Computation& computation) {
  if (!computation.Cancelled()) return false;
  Log::warn("The computation was cancelled.");
  return true;
}

SparseOptions OptionsOf(const SolverSettings& settings) {
  SparseOptions options;
  options.robust = settings.robust;
  options.discRadius = settings.UsedDiscRadius();
  return options;
}

/// What a result says besides its matrices. Raises cv::Exception where they are not finite.
void TakeNumbers(double discRadius, Result& result) {
  const IntrinsicsResult& solved = result.camera;
  RequireFinite(solved.rms, {solved.K, solved.D, solved.rvecs, solved.tvecs});
  result.rms = static_cast<float>(solved.rms);
  result.discRadius = discRadius;
}

}  // namespace

void Computations::SetProgressListener(ProgressListener listener) {
  const std::lock_guard<std::mutex> lock(listenerLock_);
  listener_ = std::move(listener);
}

/// Tells the listener of the moment, and gives up once cancelled. Solvers run several minimisations and copy
/// the function: all of them count on.
Computations::Progress Computations::NewProgress(const Snapshots::Computation& computation) {
  const std::lock_guard<std::mutex> lock(listenerLock_);
  return [&computation, told = listener_, iterations = std::make_shared<int>(0)](int /*ofThisMinimisation*/,
                                                                                 double rms) {
    ++*iterations;
    if (told) told(*iterations, rms);
    return !computation.Cancelled();
  };
}

Result Computations::SolveCamera(const SnapshotList& views, int model, const Progress& progress) const {
  const SolverSettings settings = choice_.Current();
  const ObservedPoints seen = ObservedIn(views);
  const auto& points = seen.cameras.front();
  Result result;
  if (settings.IsSparse()) {
    SparseOptions options = OptionsOf(settings);
    options.progress = progress;
    options.sheet = settings.UsedSheet();
    options.deviations = seen.deviations.front();
    result.camera = SolveIntrinsicsWithSheet(seen.target, points, imageSize_, model, options);
    LogRejected(seen.InGrid(result.camera.rejected));
  } else {
    static_cast<IntrinsicsResult&>(result.camera) = SolveIntrinsics(seen.target, points, imageSize_, model);
  }
  TakeNumbers(settings.UsedDiscRadius(), result);
  return result;
}

Result Computations::SolveFisheye(const SnapshotList& views, const Progress& progress) const {
  const SolverSettings settings = choice_.Current();
  const ObservedPoints seen = ObservedIn(views);
  SparseOptions options = OptionsOf(settings);
  options.robust = settings.robust && settings.IsSparse();
  options.progress = progress;
  options.sheet = settings.UsedSheet();
  if (settings.IsSparse()) options.deviations = seen.deviations.front();
  Result result;
  result.camera = SolveFisheyeWithSheet(seen.target, seen.cameras.front(), imageSize_, options);
  LogRejected(seen.InGrid(result.camera.rejected));
  TakeNumbers(options.discRadius, result);
  return result;
}

float Computations::ComputeCamera(int model) {
  return ComputeOneCamera(
      [this, model](const SnapshotList& views, const Progress& progress) {
        return SolveCamera(views, model, progress);
      },
      model);
}

float Computations::ComputeFisheye() {
  return ComputeOneCamera(
      [this](const SnapshotList& views, const Progress& progress) { return SolveFisheye(views, progress); },
      0);
}

float Computations::ComputeOneCamera(const Solve& solve, int model) {
  if (snapshots_.CameraCount() != ONE_CAMERA || snapshots_.Status() == STATUS_PROGRESS) return -1.0F;
  const auto computation = snapshots_.Begin();
  if (computation == nullptr) return -1.0F;
  begun_();
  try {
    auto result = std::make_shared<Result>(solve(computation->Views(), NewProgress(*computation)));
    result->model = model;
    result->snapshots = computation->Views().Count();
    result->removals = computation->Views().removals;
    const float rms = result->rms;
    computation->Publish(std::move(result));
    return rms;
  } catch (const cv::Exception&) {
    if (!WasCancelled(*computation)) throw;
    return -1.0F;
  }
}

Result Computations::SolvePair(const SnapshotList& views, const StereoIntrinsics& intrinsics, int model,
                               const Progress& progress) const {
  const SolverSettings settings = choice_.Current();
  const ObservedPoints seen = ObservedIn(views);
  const auto& left = seen.cameras.front();
  const auto& right = seen.cameras.back();
  Result result;
  ExtrinsicsResult& solved = result.pair;
  if (settings.IsSparse()) {
    const SparsePairOptions options{settings.discRadius, 1, progress, settings.robust, seen.deviations};
    solved = settings.refineIntrinsics
                 ? RefinePairSparsely(seen.target, left, right, intrinsics, imageSize_, model, options)
                 : SolveExtrinsicsSparsely(seen.target, left, right, intrinsics, model, options);
    if (!settings.sheet.IsFlat()) {
      solved = PairWithShape(solved, solver::PairTargetOf(seen.target, left, right, seen.deviations),
                             intrinsics, model, settings.sheet, options);
    }
    LogRejectedOfPair(seen.InGrid(solved.solution->rejected));
    LogRecountedOfPair(solved.solution->recounted);
  } else {
    solved = SolveExtrinsics(seen.target, left, right, intrinsics, imageSize_, model);
  }
  const StereoIntrinsics& refined = solved.refined;
  RequireFinite(solved.rms, {solved.R, solved.T, solved.E, solved.F, refined.K, refined.D, refined.KRight,
                             refined.DRight});
  result.intrinsicsRefined = settings.RefinesIntrinsics();
  result.intrinsics = result.intrinsicsRefined ? solved.refined : intrinsics;
  result.rms = static_cast<float>(solved.rms);
  result.discRadius = settings.UsedDiscRadius();
  return result;
}

float Computations::ComputePair(const PairSources& sources, int model) {
  if (snapshots_.CameraCount() != PAIR || snapshots_.Status() == STATUS_PROGRESS) return -1.0F;
  if (!snapshots_.RequireEnough()) return -1.0F;
  StereoIntrinsics intrinsics;
  if (!ReadIntrinsics(sources.left, sources.right, sources.areFiles, intrinsics)) return 0.0F;
  // What was read stays to be asked for, even where it is refused.
  if (!IsRational(intrinsics.D, sources.left) || !IsRational(intrinsics.DRight, sources.right)) {
    snapshots_.KeepRefused(intrinsics);
    return -1.0F;
  }
  auto computation = snapshots_.Begin();
  if (computation == nullptr) return -1.0F;
  begun_();
  try {
    auto result = std::make_shared<Result>(
        SolvePair(computation->Views(), intrinsics, model, NewProgress(*computation)));
    result->model = model;
    result->snapshots = computation->Views().Count();
    result->removals = computation->Views().removals;
    const float rms = result->rms;
    computation->Publish(std::move(result));
    return rms;
  } catch (...) {  // a progress listener may throw anything
    const bool cancelled = WasCancelled(*computation);
    computation.reset();
    if (snapshots_.Current().result == nullptr) snapshots_.KeepRefused(intrinsics);
    if (!cancelled) throw;
    return -1.0F;
  }
}

void Computations::RunInBackground(const char* name, std::function<void()> task) {
  const auto completedBefore = std::make_shared<int>(snapshots_.Completed());
  background_.Run(
      name,
      [this, completedBefore, task = std::move(task)] {
        *completedBefore = snapshots_.Completed();
        task();
      },
      [this, completedBefore] { snapshots_.NoteEndWithoutResult(*completedBefore); });
}

void Computations::ComputeCameraInBackground(int model) {
  RunInBackground("Calibration", [this, model] { ComputeCamera(model); });
}

void Computations::ComputeFisheyeInBackground() {
  RunInBackground("Calibration", [this] { ComputeFisheye(); });
}

void Computations::ComputePairInBackground(const PairSources& sources, int model) {
  RunInBackground("Stereo calibration", [this, sources, model] { ComputePair(sources, model); });
}

ModelChoice Computations::ChooseModel() const {
  const Snapshots::Moment now = snapshots_.Current();
  if (snapshots_.CameraCount() != ONE_CAMERA || now.status == STATUS_PROGRESS) return {};
  if (!snapshots_.RequireEnough()) return {};
  SolverSettings settings = choice_.Current();
  settings.robust = settings.robust && settings.IsSparse();
  const ObservedPoints seen = ObservedIn(*now.snapshots);
  SparseOptions options = OptionsOf(settings);
  options.sheet = settings.UsedSheet();
  if (settings.IsSparse()) options.deviations = seen.deviations.front();
  return CompareAllModels(seen.target, seen.cameras.front(), imageSize_, options);
}

CalibrationVerdict Computations::AssessCamera() const {
  const Snapshots::Moment now = snapshots_.Current();
  if (snapshots_.CameraCount() != ONE_CAMERA || now.status == STATUS_PROGRESS) return {};
  if (now.result == nullptr || now.result->removals != now.snapshots->removals) return {};
  const ObservedPoints seen = ObservedIn(*now.snapshots);
  CalibrationVerdict verdict = AssessIntrinsics(seen.target, seen.cameras.front(), imageSize_,
                                                now.result->camera, now.result->discRadius);
  verdict.leftOut = seen.InGrid(std::move(verdict.leftOut));
  return verdict;
}

PairVerdict Computations::AssessPair(const HeldIntrinsics& left, const HeldIntrinsics& right) const {
  const Snapshots::Moment now = snapshots_.Current();
  const auto& result = now.result;
  if (snapshots_.CameraCount() != PAIR || now.status == STATUS_PROGRESS || result == nullptr) return {};
  if (result->snapshots != now.snapshots->Count()) return {};
  if (result->removals != now.snapshots->removals) return {};
  const ObservedPoints seen = ObservedIn(*now.snapshots);
  const PairRecords records{seen.target,
                            seen.cameras.front(),
                            seen.cameras.back(),
                            result->model,
                            result->intrinsicsRefined,
                            result->discRadius,
                            result->pair.solution,
                            imageSize_,
                            left,
                            right};
  PairVerdict verdict = velmora::AssessPair(records, result->intrinsics, result->pair.R, result->pair.T);
  verdict.leftOut = seen.InGrid(std::move(verdict.leftOut));
  return verdict;
}

}  // namespace velmora
