/// The parts of a calibrator, and the steps that lead from one to the other.
#include "calibrator/CalibratorImpl.h"

#include <algorithm>

#include "Log.h"
#include "calibrator/GuidedDetection.h"
#include "calibrator/KeptCentres.h"
#include "calibrator/ObservedPoints.h"
#include "calibrator/PoseProposals.h"
#include "foundation/OneLine.h"
#include "model/LensModel.h"
#include "model/TargetGeometry.h"

using namespace velmora;

static_assert(Calibrator::MODEL_CLASSIC == velmora::MODEL_CLASSIC);
static_assert(Calibrator::MODEL_RATIONAL == velmora::MODEL_RATIONAL);
static_assert(Calibrator::MODEL_FULL == velmora::MODEL_FULL);
static_assert(Calibrator::SOLVER_OPENCV == velmora::SOLVER_OPENCV);
static_assert(Calibrator::SOLVER_SPARSE == velmora::SOLVER_SPARSE);
static_assert(Calibrator::FINDER_STANDARD == velmora::FINDER_STANDARD);
static_assert(Calibrator::FINDER_ROBUST == velmora::FINDER_ROBUST);
static_assert(Calibrator::STATUS_NOT_READY == velmora::STATUS_NOT_READY);
static_assert(Calibrator::STATUS_READY == velmora::STATUS_READY);
static_assert(Calibrator::STATUS_COMPLETED == velmora::STATUS_COMPLETED);
static_assert(Calibrator::STATUS_PROGRESS == velmora::STATUS_PROGRESS);

namespace {

/// None of a kind that is none: it collects and computes nothing.
size_t CamerasOf(int kind) {
  return kind == Calibrator::STEREO ? 2 : kind == Calibrator::MONOCULAR ? 1 : 0;
}

}  // namespace

Calibrator::Impl::Impl(const void* owner, const cv::Size& patternSize, float unit, int cameraKind,
                       const cv::Size& processingSize)
    : kind(cameraKind),
      grid(patternSize),
      size(processingSize),
      target(MakeObjectTemplate(patternSize, unit)),
      snapshots(target, CamerasOf(cameraKind)),
      detector(grid, size),
      guidance(grid, size),
      recording(size),
      computations(snapshots, size, [this] { guidance.End(); }),
      flow(
          {[this](CapturedViews& views) { DetectIn(views); },
           [this](const cv::Mat& frame) { return detector.FaultOf(frame); }, [this] { return StatusText(); }},
          owner) {
}

Calibrator::Impl::~Impl() {
  // Frames first: what they show may start a computation.
  flow.End();
  computations.AwaitBackground();
  guidance.End();
  try {
    recording.Stop();
  } catch (const std::exception& fault) {
    Log::error("Cannot save the recorded model: %s", OneLine(fault.what()).c_str());
  }
}

bool Calibrator::Impl::RefusesPair() const {
  return kind != STEREO || snapshots.Status() == STATUS_PROGRESS;
}

OverlayState Calibrator::Impl::Overlay() const {
  OverlayState state;
  state.snapshots = static_cast<int>(snapshots.Count());
  state.goal = guidance.Goal();
  state.status = snapshots.Status();
  return state;
}

std::string Calibrator::Impl::StatusText() const {
  // All of one moment: who reads "completed" finds the result beside it.
  return StatusAnswer(snapshots.Current(), Facts());
}

PoseProposal Calibrator::Impl::ProposePose(int model, bool fisheye) {
  const Snapshots::Moment now = snapshots.Current();
  if (!IsMonocular() || now.status == STATUS_PROGRESS) return {};
  const SolverSettings chosen = computations.Choice().Current();
  ProposalSettings settings = {target, size, model, fisheye, detector.Finder().Get(), {}};
  settings.solver.robust = chosen.robust;
  settings.solver.discRadius = chosen.discRadius;
  settings.solver.sheet = chosen.UsedSheet();
  return velmora::ProposePose(*now.snapshots, settings);
}

size_t Calibrator::Impl::AddSnapshot(const CameraSnapshot& detection, Kept& kept) {
  const size_t count = snapshots.Add({detection}, Snapshots::EarlierRms::Drop, kept.place);
  if (count == 0) return 0;
  kept.views = {detection};
  recording.Add(detection.points);
  Log::debug("New points added. Snapshot count: %d", static_cast<int>(count));
  return count;
}

size_t Calibrator::Impl::AddPairSnapshot(const std::vector<CameraSnapshot>& detections, Kept& kept) {
  const size_t count = snapshots.Add(detections, Snapshots::EarlierRms::Drop, kept.place);
  if (count == 0) return 0;
  kept.views = detections;
  Log::debug("New points added. Snapshot count: %d", static_cast<int>(count));
  return count;
}

bool Calibrator::Impl::AddWeighted(std::vector<CameraSnapshot> views, Snapshots::EarlierRms earlier,
                                   Kept& kept) {
  std::string fault = FaultOfSnapshot(grid, views);
  if (fault.empty() && !detector.Finder().GetPartial() && std::any_of(views.begin(), views.end(), IsPart)) {
    fault = "Parts of the grid are not taken: SetPartialGrids allows them.";
  }
  if (!fault.empty()) {
    Log::error("No points added. %s", fault.c_str());
    return false;
  }
  for (CameraSnapshot& view : views) view = WithoutNeedlessWeights(std::move(view));
  if (snapshots.Add(views, earlier, kept.place) == 0) return false;
  kept.views = std::move(views);
  return true;
}

void Calibrator::Impl::Measure(Kept& kept) {
  const auto hasImage = [](const CameraSnapshot& view) { return !view.image.grey.empty(); };
  if (std::none_of(kept.views.begin(), kept.views.end(), hasImage)) return;
  for (CameraSnapshot& view : kept.views) view = WithMeasuredCentres(grid, std::move(view));
  snapshots.Improve(kept.place, kept.views);
}

bool Calibrator::Impl::Detect(cv::Mat& frame, std::vector<cv::Point2d>& points, bool draw) {
  if (!IsMonocular()) return false;
  Kept kept;
  GuidedDetection guide(guidance,
                        [&](const CameraSnapshot& detection) { return AddSnapshot(detection, kept); });
  const bool found = detector.Detect(
      frame, points, draw, [this] { return Overlay(); }, guide);
  Measure(kept);
  if (guide.Finished()) computations.ComputeCameraInBackground(MODEL_RATIONAL);
  return found;
}

bool Calibrator::Impl::DetectPair(cv::Mat& left, cv::Mat& right, std::vector<cv::Point2d>& leftPoints,
                                  std::vector<cv::Point2d>& rightPoints, bool draw) {
  return detector.DetectPair(
      left, right, leftPoints, rightPoints, draw, [this] { return Overlay(); },
      [this] { return RefusesPair(); });
}

/// Of a frame that a source delivered, or that was pushed.
void Calibrator::Impl::DetectIn(CapturedViews& views) {
  std::vector<cv::Point2d> points;
  if (views.pair) {
    std::vector<cv::Point2d> rightPoints;
    DetectPair(views.frame, views.right, points, rightPoints, true);
  } else {
    Detect(views.frame, points, true);
  }
}

cv::Mat Calibrator::Impl::ResultOf(int ofKind, const Part& part) const {
  const Snapshots::Moment now = snapshots.Current();
  if (kind != ofKind || now.status == STATUS_PROGRESS || now.result == nullptr) return cv::Mat();
  return part(*now.result);
}

cv::Mat Calibrator::Impl::IntrinsicsOf(cv::Mat StereoIntrinsics::*member) const {
  const Snapshots::Moment now = snapshots.Current();
  if (kind != STEREO || now.status == STATUS_PROGRESS) return cv::Mat();
  if (now.refused) return (*now.refused).*member;
  return now.result == nullptr ? cv::Mat() : now.result->intrinsics.*member;
}

bool Calibrator::Impl::AnswersUnreachableResults() const {
  if (snapshots.Status() > 399) return true;
  Log::error("Cannot perform any action while computing calibration.");
  return false;
}
