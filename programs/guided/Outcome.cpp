/// What the views that were taken come to: one camera, or a pair.
#include "guided/Outcome.h"

#include <cctype>
#include <set>

#include "common/Epipolar.h"
#include "common/LensModels.h"
#include "common/OneLine.h"
#include "common/ResultFile.h"
#include "common/VerdictReport.h"

namespace guided {

namespace {

using velmora::GridSnapshot;

constexpr size_t LEFT = 0;
constexpr size_t RIGHT = 1;

std::vector<cv::Point2d> SeenOnly(const GridSnapshot::Camera& camera, const std::vector<double>& weights) {
  if (weights.empty()) return camera.centres;
  std::vector<cv::Point2d> seen;
  seen.reserve(camera.centres.size());
  for (size_t k = 0; k < camera.centres.size(); ++k) {
    if (weights[k] > 0.0) seen.push_back(camera.centres[k]);
  }
  return seen;
}

std::vector<double> CommonWeights(const GridSnapshot& pair) {
  const std::vector<double>& left = pair.cameras[LEFT].weights;
  const std::vector<double>& right = pair.cameras[RIGHT].weights;
  if (left.empty()) return right;
  std::vector<double> weights = left;
  for (size_t k = 0; k < right.size(); ++k) weights[k] = std::min(weights[k], right[k]);
  return weights;
}

std::shared_ptr<Calibrator> EngineFor(const ComputationSettings& settings, int kind) {
  auto engine = std::make_shared<Calibrator>(settings.grid, settings.unit, kind, settings.frame.width,
                                             settings.frame.height);
  common::ApplyEngineOptions(settings.engine, settings.unit, *engine);
  engine->SetPartialGrids(true);
  return engine;
}

std::vector<std::string> NamesOf(const std::vector<NamedSnapshot>& snapshots) {
  std::vector<std::string> names;
  names.reserve(snapshots.size());
  for (const NamedSnapshot& snapshot : snapshots) names.push_back(snapshot.name);
  return names;
}

std::string FaultOfCount(size_t views) {
  constexpr size_t ENOUGH = 5;
  if (views == 0) return "there are no views";
  if (views >= ENOUGH) return "";
  return (views == 1 ? "there is 1 view" : "there are " + std::to_string(views) + " views") +
         ", and at least five are needed";
}

/// As the end of a sentence: what the image library raises without its sources and where it has words.
std::string Clause(const std::exception& fault) {
  const auto* const ofLibrary = dynamic_cast<const cv::Exception*>(&fault);
  if (ofLibrary != nullptr && ofLibrary->code == cv::Error::StsAssert)
    return "the views agree with no camera";
  std::string text = common::OneLine(ofLibrary != nullptr ? ofLibrary->err : fault.what());
  if (!text.empty() && text.back() == '.') text.pop_back();
  if (!text.empty()) text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
  return text;
}

/// Results of cameras have too few coefficients otherwise, or are of another kind.
void CheckPairModel(int model) {
  if (model == Calibrator::MODEL_RATIONAL || model == Calibrator::MODEL_FULL) return;
  throw std::invalid_argument("a pair is computed with the rational or the full model, not the " +
                              common::NameOfModel(model) + " one");
}

/// One of the cameras that the snapshots are of.
CameraOutcome ComputeCamera(const std::vector<NamedSnapshot>& snapshots, size_t camera, int model,
                            const ComputationSettings& settings,
                            const std::function<void(std::shared_ptr<Calibrator>)>& computing) {
  CameraOutcome outcome;
  outcome.engine = EngineFor(settings, Calibrator::MONOCULAR);
  outcome.report.parts.of = static_cast<size_t>(settings.grid.area());
  for (const NamedSnapshot& each : snapshots) {
    const GridSnapshot::Camera& seen = each.snapshot.cameras.at(camera);
    outcome.engine->AddSnapshot({{seen}});
    outcome.seen.push_back(SeenOnly(seen, seen.weights));
    if (outcome.seen.back().size() < outcome.report.parts.of)
      outcome.report.parts.circles.push_back(outcome.seen.back().size());
  }
  computing(outcome.engine);
  const common::ChosenModel lens = common::ChooseModel(model, *outcome.engine);
  common::ComputeModel(lens.model, *outcome.engine);
  if (outcome.engine->GetStatus() != Calibrator::STATUS_COMPLETED)
    throw std::runtime_error("the views agree with no camera");
  outcome.report.model = common::NameOfModel(lens.model);
  outcome.report.modelReasons = lens.reasons;
  outcome.report.frame = settings.frame;
  outcome.report.used = NamesOf(snapshots);
  common::CopyResult(*outcome.engine, outcome.report);
  outcome.verdict = outcome.engine->GetVerdict();
  outcome.report.disagreeing = common::RejectedViews(outcome.verdict);
  return outcome;
}

/// The mean over the pairs that agree.
double EpipolarDistance(const PairOutcome& pair) {
  std::set<size_t> apart = pair.report.disagreeing;
  for (const auto& image : pair.verdict.recounted) apart.insert(image.view);
  std::vector<std::vector<cv::Point2d>> left;
  std::vector<std::vector<cv::Point2d>> right;
  for (size_t i = 0; i < pair.seen.left.size(); ++i) {
    if (apart.count(i) > 0) continue;
    left.push_back(pair.seen.left[i]);
    right.push_back(pair.seen.right[i]);
  }
  Calibrator& engine = *pair.engine;
  return common::MeanEpipolarDistance(left, right, {engine.GetKLeft(), engine.GetDistCoefsLeft()},
                                      {engine.GetKRight(), engine.GetDistCoefsRight()},
                                      engine.GetFundamentalMatrix());
}

void CopyPair(const std::vector<CameraOutcome>& cameras, float rms, PairOutcome& pair) {
  Calibrator& engine = *pair.engine;
  pair.report.rms = static_cast<double>(rms);
  pair.report.R = engine.GetR();
  pair.report.T = engine.GetStereoTranslation();
  pair.verdict = engine.GetPairVerdict(cameras[LEFT].verdict, cameras[RIGHT].verdict);
  pair.report.left = {pair.verdict.left.rms, pair.verdict.left.viewRms};
  pair.report.right = {pair.verdict.right.rms, pair.verdict.right.viewRms};
  pair.report.disagreeing = common::RejectedViews(pair.verdict);
  pair.report.epipolarDistance = EpipolarDistance(pair);
}

/// With the lenses of the cameras' own results.
PairOutcome ComputePair(const std::vector<NamedSnapshot>& snapshots,
                        const std::vector<CameraOutcome>& cameras, int model,
                        const ComputationSettings& settings,
                        const std::function<void(std::shared_ptr<Calibrator>)>& computing) {
  PairOutcome pair;
  pair.engine = EngineFor(settings, Calibrator::STEREO);
  pair.seen.frame = settings.frame;
  pair.report.model = common::NameOfModel(model);
  pair.report.used = NamesOf(snapshots);
  pair.report.parts.of = static_cast<size_t>(settings.grid.area());
  for (const NamedSnapshot& each : snapshots) {
    pair.engine->AddSnapshot(each.snapshot);
    const std::vector<double> weights = CommonWeights(each.snapshot);
    pair.seen.left.push_back(SeenOnly(each.snapshot.cameras[LEFT], weights));
    pair.seen.right.push_back(SeenOnly(each.snapshot.cameras[RIGHT], weights));
    if (pair.seen.left.back().size() < pair.report.parts.of)
      pair.report.parts.circles.push_back(pair.seen.left.back().size());
  }
  computing(pair.engine);
  const float rms =
      pair.engine->ComputeCalibrationStereo(cameras[LEFT].engine->SaveResult(false, "unused"),
                                            cameras[RIGHT].engine->SaveResult(false, "unused"), model, false);
  if (pair.engine->GetStatus() != Calibrator::STATUS_COMPLETED)
    throw std::runtime_error("the cameras' views agree with no pair");
  CopyPair(cameras, rms, pair);
  return pair;
}

}  // namespace

bool Outcome::IsWorthless() const {
  if (pair) return pair->verdict.grade == PairVerdict::Grade::Worthless;
  return !cameras.empty() && cameras.front().verdict.grade == CalibrationVerdict::Grade::Worthless;
}

Outcome Compute(const std::vector<NamedSnapshot>& snapshots, const ComputationSettings& settings,
                const std::function<void(std::shared_ptr<Calibrator>)>& computing) {
  Outcome outcome;
  for (const NamedSnapshot& each : snapshots) outcome.numbers.push_back(each.number);
  outcome.fault = FaultOfCount(snapshots.size());
  if (outcome.Failed()) return outcome;
  try {
    const size_t cameras = snapshots.front().snapshot.cameras.size();
    const bool isPair = cameras > 1;
    const int model =
        isPair && settings.model == common::MODEL_AUTO ? Calibrator::MODEL_RATIONAL : settings.model;
    if (isPair) CheckPairModel(model);
    for (size_t camera = 0; camera < cameras; ++camera)
      outcome.cameras.push_back(ComputeCamera(snapshots, camera, model, settings, computing));
    if (isPair) {
      outcome.pair = std::make_shared<const PairOutcome>(
          ComputePair(snapshots, outcome.cameras, model, settings, computing));
    }
  } catch (const std::exception& fault) {
    outcome.cameras.clear();
    outcome.fault = Clause(fault);
  }
  return outcome;
}

std::string TextOf(const Outcome& outcome) {
  std::string text;
  for (size_t i = 0; i < outcome.cameras.size(); ++i) {
    const CameraOutcome& camera = outcome.cameras[i];
    if (outcome.pair) text += i == LEFT ? "== left camera\n" : "== right camera\n";
    text +=
        common::ResultTable(camera.report) + "\n" + common::VerdictTable(camera.verdict, camera.report.used);
    if (outcome.pair) text += "\n";
  }
  if (!outcome.pair) return text;
  return text + "== pair\n" + common::PairTable(outcome.pair->report) + "\n" +
         common::VerdictTable(outcome.pair->verdict, outcome.pair->report.used);
}

namespace {

/// A fisheye has a file of its own.
std::string SaveCamera(const CameraOutcome& camera, const std::string& name, common::OutputFiles& files) {
  const bool fisheye = camera.report.fisheye;
  const std::string stem = fisheye ? name + "_fisheye" : name;
  files.Announce(stem + ".json");
  const std::string text =
      fisheye ? common::SaveFisheyeFile(*camera.engine, name) : common::SaveResultFile(*camera.engine, name);
  if (text.empty()) return stem + ".json";
  files.Written(stem + ".json");
  return common::SaveVerdict(camera.verdict, camera.report.frame, camera.seen, stem, files);
}

std::string SavePair(const PairOutcome& pair, const std::string& name, common::OutputFiles& files) {
  files.Announce(name + ".json");
  if (common::SaveResultFile(*pair.engine, name).empty()) return name + ".json";
  files.Written(name + ".json");
  return common::SaveVerdict(pair.verdict, pair.seen, name, files);
}

}  // namespace

std::string Save(const Outcome& outcome, const std::string& name, common::OutputFiles& files) {
  if (!outcome.pair) return SaveCamera(outcome.cameras.front(), name, files);
  std::string unwritten = SaveCamera(outcome.cameras[LEFT], name + "_left", files);
  if (unwritten.empty()) unwritten = SaveCamera(outcome.cameras[RIGHT], name + "_right", files);
  return unwritten.empty() ? SavePair(*outcome.pair, name, files) : unwritten;
}

}  // namespace guided
