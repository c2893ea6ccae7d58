/// The calibrator's public face: guards on kind and status, and the parts that do the work. Its frames and
/// its snapshots have files of their own.
#include "Calibrator.h"

#include "JSON.h"
#include "Log.h"
#include "calibrator/CalibratorImpl.h"
#include "calibrator/KeptCentres.h"
#include "calibrator/PoseProposals.h"
#include "calibrator/ReprojectionReview.h"
#include "foundation/Version.h"
#include "imaging/FrameResize.h"
#include "solver/KnownSheet.h"

using namespace velmora;

const std::string Calibrator::VERSION = velmora::VERSION;

Calibrator::Calibrator(const cv::Size& patternSize, const float& unit, const int& kind, const int& frameWidth,
                       const int& frameHeight)
    : impl_(std::make_unique<Impl>(this, patternSize, unit, kind, cv::Size(frameWidth, frameHeight))) {
}

Calibrator::~Calibrator() = default;

// ---- Status.

void Calibrator::SetStatus(const int& value) {
  impl_->snapshots.SetStatus(value);
}

int Calibrator::GetStatus() {
  return impl_->snapshots.Status();
}

int Calibrator::ReadStatus() {
  return GetStatus();
}

bool Calibrator::isCalibrating() {
  return GetStatus() == STATUS_PROGRESS;
}

bool Calibrator::IsComputing() {
  return impl_->computations.Busy();
}

bool Calibrator::HasFailed() {
  return impl_->snapshots.HasFailed();
}

bool Calibrator::IsDetected() {
  return impl_->detector.HasLast() && impl_->IsMonocular();
}

int Calibrator::GetNumberOfRecords() {
  return static_cast<int>(impl_->snapshots.Count());
}

void Calibrator::Reset() {
  impl_->snapshots.Reset();
}

std::string Calibrator::GetVersion() {
  return VERSION;
}

void Calibrator::SetFlipImage(const bool& flip) {
  impl_->detector.SetFlip(flip);
}

bool Calibrator::GetFlipImage() {
  return impl_->detector.Flip();
}

// ---- Choice of the search.

void Calibrator::SetFinder(const int& finder) {
  if (!impl_->detector.Finder().Set(finder)) Log::error("There is no finder %d.", finder);
}

int Calibrator::GetFinder() {
  return impl_->detector.Finder().Get();
}

std::string Calibrator::WhyNotFound() {
  return DescribeFault(impl_->detector.Finder().Fault());
}

void Calibrator::SetPartialGrids(const bool& partial) {
  impl_->detector.Finder().SetPartial(partial);
}

bool Calibrator::GetPartialGrids() {
  return impl_->detector.Finder().GetPartial();
}

void Calibrator::SetFineCentres(const bool& fine) {
  impl_->detector.SetFine(fine);
}

bool Calibrator::GetFineCentres() {
  return impl_->detector.Fine();
}

// ---- Assistant.

void Calibrator::EnableAssistant(const std::string& modelPath) {
  impl_->guidance.Start(modelPath);
  impl_->snapshots.ForgetFailure();  // a new computation is to come
}

void Calibrator::DisableAssistant() {
  impl_->guidance.End();
}

int Calibrator::GetAssistantGoal() {
  return impl_->guidance.Goal();
}

bool Calibrator::AskForPose(const std::vector<cv::Point2d>& centres) {
  if (impl_->IsMonocular()) return impl_->guidance.StartAt(centres);
  Log::error("A stereo calibrator has no assistant for a pose.");
  return false;
}

// ---- Detection.

bool Calibrator::DetectPoints(cv::Mat& frame, std::vector<cv::Point2d>& points, const bool& draw) {
  return impl_->Detect(frame, points, draw);
}

bool Calibrator::DetectPartial(cv::Mat& frame, std::vector<cv::Point2d>& points, std::vector<double>& weights,
                               const bool& draw) {
  if (!impl_->IsMonocular()) return false;
  CameraSnapshot seen;
  impl_->detector.DetectPartial(frame, seen, draw, [this] { return impl_->Overlay(); });
  points = std::move(seen.points);
  weights = std::move(seen.weights);
  return !points.empty();
}

bool Calibrator::DetectPartial(cv::Mat& frame, std::vector<cv::Point2d>& points, std::vector<double>& weights,
                               std::vector<double>& deviations, const bool& draw) {
  if (!impl_->IsMonocular()) return false;
  CameraSnapshot seen;
  impl_->detector.DetectPartial(frame, seen, draw, [this] { return impl_->Overlay(); });
  seen = WithMeasuredCentres(impl_->grid, std::move(seen));
  points = std::move(seen.points);
  weights = std::move(seen.weights);
  deviations = std::move(seen.deviations);
  return !points.empty();
}

void Calibrator::Resize(const cv::Mat& src, cv::Mat& dst, const bool& fill, const int& interpolation) {
  ResizeFrame(src, dst, impl_->size, fill, interpolation);
}

bool Calibrator::DetectStereoPoints(cv::Mat& left, cv::Mat& right, std::vector<cv::Point2d>& leftPoints,
                                    std::vector<cv::Point2d>& rightPoints, const bool& draw) {
  return impl_->DetectPair(left, right, leftPoints, rightPoints, draw);
}

void Calibrator::drawInfo(cv::Mat& frame, const double& elapsed) {
  OverlayState state = impl_->Overlay();
  state.frameSize = frame.size();
  state.elapsed = elapsed;
  DrawOverlay(state, frame);
}

// ---- Solvers.

void Calibrator::SetSolver(const int& solver) {
  impl_->computations.Choice().SetSolver(solver);
}

int Calibrator::GetSolver() {
  return impl_->computations.Choice().Current().solver;
}

void Calibrator::SetSheetShape(const int& shape) {
  impl_->computations.Choice().SetSheetShape(shape);
}

void Calibrator::SetSheetShape(const std::vector<cv::Point3d>& points) {
  if (!solver::IsShapeOf(impl_->target, points)) {
    Log::error(
        "The shape of the sheet is not one of this grid: a point near each of the %d places is needed.",
        static_cast<int>(impl_->target.size()));
    return;
  }
  impl_->computations.Choice().SetSheetShape(points);
}

void Calibrator::SetRobust(const bool& robust) {
  impl_->computations.Choice().SetRobust(robust);
}

void Calibrator::SetDiscRadius(const double& radius) {
  impl_->computations.Choice().SetDiscRadius(radius);
}

void Calibrator::SetRefineLenses(const bool& refine) {
  impl_->computations.Choice().SetRefineIntrinsics(refine);
}

void Calibrator::SetProgressListener(ProgressListener listener) {
  impl_->computations.SetProgressListener(std::move(listener));
}

void Calibrator::CancelComputation() {
  impl_->snapshots.Cancel();
}

CalibrationVerdict Calibrator::GetVerdict() {
  return impl_->computations.AssessCamera();
}

PairVerdict Calibrator::GetPairVerdict() {
  return impl_->computations.AssessPair();
}

PairVerdict Calibrator::GetPairVerdict(const CalibrationVerdict& left, const CalibrationVerdict& right) {
  PairVerdict verdict = impl_->computations.AssessPair({left.covariance, left.jackknifeCovariance},
                                                       {right.covariance, right.jackknifeCovariance});
  verdict.Consider(left, "left");
  verdict.Consider(right, "right");
  return verdict;
}

ModelChoice Calibrator::ChooseModel() {
  return impl_->computations.ChooseModel();
}

PoseProposal Calibrator::ProposePose(const int& model) {
  return impl_->ProposePose(model, false);
}

PoseProposal Calibrator::ProposeFisheyePose() {
  return impl_->ProposePose(MODEL_CLASSIC, true);
}

// ---- Computation.

float Calibrator::ComputeCalibration(const int& model) {
  return impl_->computations.ComputeCamera(model);
}

void Calibrator::ComputeCalibrationMultithread(const int& model) {
  impl_->computations.ComputeCameraInBackground(model);
}

float Calibrator::ComputeFisheye() {
  return impl_->computations.ComputeFisheye();
}

void Calibrator::ComputeFisheyeMultithread() {
  impl_->computations.ComputeFisheyeInBackground();
}

float Calibrator::ComputeCalibrationStereo(const std::string& left, const std::string& right,
                                           const int& model, const bool& fromFiles) {
  return impl_->computations.ComputePair({left, right, fromFiles}, model);
}

void Calibrator::ComputeCalibrationStereoMultithread(const std::string& left, const std::string& right,
                                                     const int& model) {
  impl_->computations.ComputePairInBackground({left, right, false}, model);
}

// ---- Results.

cv::Mat Calibrator::GetK() {
  return impl_->ResultOf(MONOCULAR, [](const Result& result) { return result.camera.K; });
}

cv::Mat Calibrator::GetDistCoefs() {
  return impl_->ResultOf(
      MONOCULAR, [](const Result& result) { return result.IsFisheye() ? cv::Mat() : result.camera.D; });
}

cv::Mat Calibrator::GetKLeft() {
  return impl_->IntrinsicsOf(&StereoIntrinsics::K);
}

cv::Mat Calibrator::GetDistCoefsLeft() {
  return impl_->IntrinsicsOf(&StereoIntrinsics::D);
}

cv::Mat Calibrator::GetKRight() {
  return impl_->IntrinsicsOf(&StereoIntrinsics::KRight);
}

cv::Mat Calibrator::GetDistCoefsRight() {
  return impl_->IntrinsicsOf(&StereoIntrinsics::DRight);
}

cv::Mat Calibrator::GetR() {
  return impl_->ResultOf(STEREO, [](const Result& result) { return result.pair.R; });
}

cv::Mat Calibrator::GetStereoTranslation() {
  return impl_->ResultOf(STEREO, [](const Result& result) { return result.pair.T; });
}

cv::Mat Calibrator::GetEssentialMatrix() {
  return impl_->ResultOf(STEREO, [](const Result& result) { return result.pair.E; });
}

cv::Mat Calibrator::GetFundamentalMatrix() {
  return impl_->ResultOf(STEREO, [](const Result& result) { return result.pair.F; });
}

cv::Mat Calibrator::GetStdDevIntrinsics() {
  return impl_->ResultOf(MONOCULAR, [](const Result& result) {
    return result.IsFisheye() ? cv::Mat() : result.camera.stdDevIntrinsics;
  });
}

cv::Mat Calibrator::GetPerViewErrors() {
  return impl_->ResultOf(MONOCULAR, [](const Result& result) { return result.camera.perViewErrors; });
}

cv::Mat Calibrator::GetRotationVectors() {
  return impl_->ResultOf(MONOCULAR, [](const Result& result) { return result.camera.rvecs; });
}

cv::Mat Calibrator::GetTranslationVectors() {
  return impl_->ResultOf(MONOCULAR, [](const Result& result) { return result.camera.tvecs; });
}

cv::Mat Calibrator::GetT() {
  const int status = GetStatus();
  const bool answers = status != STATUS_PROGRESS && impl_->AnswersUnreachableResults() && status == STEREO;
  return answers ? GetStereoTranslation() : cv::Mat();
}

cv::Mat Calibrator::GetE() {
  if (isCalibrating() || !impl_->AnswersUnreachableResults()) return cv::Mat();
  return GetEssentialMatrix();
}

cv::Mat Calibrator::GetF() {
  if (isCalibrating() || !impl_->AnswersUnreachableResults()) return cv::Mat();
  return GetFundamentalMatrix();
}

double Calibrator::GetBaseline() {
  if (isCalibrating()) return -1.0;
  if (!impl_->AnswersUnreachableResults() || impl_->kind != STEREO) return 0.0;
  return cv::norm(GetStereoTranslation(), cv::NORM_L2);
}

float Calibrator::GetRMS() {
  const Snapshots::Moment now = impl_->snapshots.Current();
  return now.status == STATUS_PROGRESS ? -1.0F : now.rms;
}

std::string Calibrator::currentDateTime() {
  return CurrentDateTime();
}

std::string Calibrator::SaveResult(const bool& save, const std::string& path) {
  const Snapshots::Moment now = impl_->snapshots.Current();
  if (now.status == STATUS_PROGRESS) return "";
  if (now.status != STATUS_COMPLETED) {
    Log::error("The calibration process has not been performed yet.");
    return "";
  }
  JSON document;
  std::string text = ResultText(now, impl_->Facts(), document);
  if (now.result != nullptr && now.result->IsFisheye())
    Log::error("The result is a fisheye's, which this file cannot hold. SaveFisheye writes one that can.");
  if (text.empty()) return "";
  const std::string fileName = ResultFileName(path, impl_->kind == STEREO);
  if (save && !document.save(fileName)) Log::error("Cannot save file: %s", fileName.c_str());
  return text;
}

FisheyeResult Calibrator::GetFisheye() {
  const Snapshots::Moment now = impl_->snapshots.Current();
  const bool isOne = now.status != STATUS_PROGRESS && now.result != nullptr && now.result->IsFisheye();
  return isOne ? FisheyeOf(*now.result, impl_->size) : FisheyeResult();
}

std::string Calibrator::SaveFisheye(const bool& save, const std::string& path) {
  if (isCalibrating()) return "";
  const FisheyeResult fisheye = GetFisheye();
  if (fisheye.IsEmpty()) {
    Log::error("There is no result of a fisheye.");
    return "";
  }
  const std::string fileName = FisheyeFileName(path);
  const std::string text = fisheye.ToJson();
  JSON document;
  document.fromJson(text);
  if (save && !document.save(fileName)) Log::error("Cannot save file: %s", fileName.c_str());
  return text;
}

std::string Calibrator::GetStatus_QVX() {
  return impl_->StatusText();
}

void Calibrator::WatchReprojection() {
  const Snapshots::Moment now = impl_->snapshots.Current();
  if (!impl_->IsMonocular() || now.status == STATUS_PROGRESS) return;
  ReviewReprojection(now, impl_->grid, impl_->size);
}

void Calibrator::StartModelRecording() {
  impl_->recording.Start();
}

void Calibrator::StopModelRecording() {
  impl_->recording.Stop();
}

bool Calibrator::StopModelRecording(const std::string& path) {
  return impl_->recording.StopInto(path);
}
