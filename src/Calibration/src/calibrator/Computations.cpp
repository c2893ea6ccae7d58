/// Computes and assesses one camera or a pair from snapshots.
#include "calibrator/Computations.h"

#include <memory>

#include "Log.h"
#include "calibrator/Finite.h"
#include "calibrator/IntrinsicsDocuments.h"
#include "calibrator/RejectionLog.h"
#include "quality/Assessment.h"
#include "quality/ModelComparison.h"
#include "quality/PairAssessment.h"
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
  const auto& points = views.cameras.front().points;
  Result result;
  if (settings.IsSparse()) {
    SparseOptions options = OptionsOf(settings);
    options.progress = progress;
    result.camera = SolveIntrinsicsSparsely(views.target, points, imageSize_, model, options);
    LogRejected(result.camera.rejected);
  } else {
    static_cast<IntrinsicsResult&>(result.camera) = SolveIntrinsics(views.target, points, imageSize_, model);
  }
  const IntrinsicsResult& solved = result.camera;
  RequireFinite(solved.rms, {solved.K, solved.D, solved.rvecs, solved.tvecs});
  result.rms = static_cast<float>(solved.rms);
  result.discRadius = settings.UsedDiscRadius();
  return result;
}

float Computations::ComputeCamera(int model) {
  if (snapshots_.CameraCount() != ONE_CAMERA || snapshots_.Status() == STATUS_PROGRESS) return -1.0F;
  const auto computation = snapshots_.Begin();
  if (computation == nullptr) return -1.0F;
  begun_();
  try {
    auto result =
        std::make_shared<Result>(SolveCamera(computation->Views(), model, NewProgress(*computation)));
    result->model = model;
    result->snapshots = computation->Views().Count();
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
  const auto& left = views.cameras.front().points;
  const auto& right = views.cameras.back().points;
  Result result;
  ExtrinsicsResult& solved = result.pair;
  if (settings.IsSparse()) {
    const SparsePairOptions options{settings.discRadius, 1, progress, settings.robust};
    solved = settings.refineIntrinsics
                 ? RefinePairSparsely(views.target, left, right, intrinsics, imageSize_, model, options)
                 : SolveExtrinsicsSparsely(views.target, left, right, intrinsics, model, options);
    LogRejectedOfPair(solved.solution->rejected);
  } else {
    solved = SolveExtrinsics(views.target, left, right, intrinsics, imageSize_, model);
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

void Computations::ComputePairInBackground(const PairSources& sources, int model) {
  RunInBackground("Stereo calibration", [this, sources, model] { ComputePair(sources, model); });
}

ModelChoice Computations::ChooseModel() const {
  const Snapshots::Moment now = snapshots_.Current();
  if (snapshots_.CameraCount() != ONE_CAMERA || now.status == STATUS_PROGRESS) return {};
  if (!snapshots_.RequireEnough()) return {};
  SolverSettings settings = choice_.Current();
  settings.robust = settings.robust && settings.IsSparse();
  return CompareModels(now.snapshots->target, now.snapshots->cameras.front().points, imageSize_,
                       OptionsOf(settings));
}

CalibrationVerdict Computations::AssessCamera() const {
  const Snapshots::Moment now = snapshots_.Current();
  if (snapshots_.CameraCount() != ONE_CAMERA || now.status == STATUS_PROGRESS) return {};
  if (now.result == nullptr) return {};
  return AssessIntrinsics(now.snapshots->target, now.snapshots->cameras.front().points, imageSize_,
                          now.result->camera, now.result->discRadius);
}

PairVerdict Computations::AssessPair() const {
  const Snapshots::Moment now = snapshots_.Current();
  const auto& result = now.result;
  if (snapshots_.CameraCount() != PAIR || now.status == STATUS_PROGRESS || result == nullptr) return {};
  if (result->snapshots != now.snapshots->Count()) return {};
  const PairRecords records{now.snapshots->target,
                            now.snapshots->cameras.front().points,
                            now.snapshots->cameras.back().points,
                            result->model,
                            result->intrinsicsRefined,
                            result->discRadius,
                            result->pair.solution,
                            imageSize_};
  return velmora::AssessPair(records, result->intrinsics, result->pair.R, result->pair.T);
}

}  // namespace velmora
