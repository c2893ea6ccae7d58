/// The headless calibration of a pair of cameras.
#include "batch/PairBatch.h"

#include <cmath>
#include <iostream>
#include <map>
#include <set>

#include "batch/CameraFile.h"
#include "batch/CameraViews.h"
#include "batch/KeptSession.h"
#include "batch/MomentText.h"
#include "batch/SessionArguments.h"
#include "batch/SharedSearch.h"
#include "batch/TogetherStream.h"
#include "batch/ViewSelection.h"
#include "common/EngineOptions.h"
#include "common/Epipolar.h"
#include "common/ExitStatus.h"
#include "common/Halves.h"
#include "common/OutputFiles.h"
#include "common/Report.h"
#include "common/ResultFile.h"
#include "common/SourceSettings.h"
#include "common/VerdictFiles.h"
#include "common/VerdictReport.h"

namespace batch {

namespace {

constexpr size_t LEFT = 0;
constexpr size_t RIGHT = 1;

std::vector<std::vector<std::string>> FilesOf(const Arguments& arguments) {
  if (!arguments.HasInputs()) return {{}, {}};
  std::vector<std::vector<std::string>> files = {ExpandInputsAloud(arguments.inputs)};
  if (arguments.split == common::Split::None) files.push_back(ExpandInputsAloud(arguments.rightInputs));
  return files;
}

/// Images of the left and the right camera, taken together.
class PairStream {
 public:
  explicit PairStream(const Arguments& arguments)
      : split_(arguments.split), stream_(FilesOf(arguments), arguments.sampling) {
    if (split_ != common::Split::None) return;
    const int leftCount = stream_.ExpectedCount(LEFT);
    const int rightCount = stream_.ExpectedCount(RIGHT);
    if (leftCount != rightCount) {
      throw InputError("the left camera has " + std::to_string(leftCount) + " images, the right one " +
                       std::to_string(rightCount));
    }
  }

  /// One image of each camera, or one that shows both.
  bool Next(std::vector<NamedImage>& pair) { return stream_.Next(pair); }

  /// Cuts an image that shows both.
  void Cut(std::vector<NamedImage>& pair) const {
    if (split_ == common::Split::None) return;
    pair.push_back(pair[LEFT]);  // whatever comes, there are two
    Read(pair[LEFT]);
    pair[RIGHT] = pair[LEFT];
    const cv::Mat both = pair[LEFT].image;
    pair[LEFT].image = common::HalfOf(both, split_, common::Camera::Left);
    pair[RIGHT].image = common::HalfOf(both, split_, common::Camera::Right);
    pair[RIGHT].orientationIgnored = false;  // one image, told of once
    if (pair[LEFT].origin.empty()) return;
    pair[LEFT].origin += "/left";
    pair[RIGHT].origin += "/right";
  }

  int ExpectedCount() const { return stream_.ExpectedCount(); }

 private:
  common::Split split_;
  TogetherStream stream_;
};

/// What looking at all pairs gave: the views of each camera, and those that both have.
struct PairViews {
  explicit PairViews(const Arguments& arguments) : left(arguments), right(arguments) {}

  CameraViews left;
  CameraViews right;
  std::vector<std::string> names;
  int number = 0;                   ///< in the session, of the pair that is being taken
  std::vector<int> numbers;         ///< of those that both cameras see
  std::vector<int> used{};          ///< of those, the ones that the computation was of
  std::map<int, ViewNote> notes{};  ///< of the session's views
  std::vector<Centres> leftCentres;
  std::vector<Centres> rightCentres;
  std::vector<std::vector<double>> weights;  ///< 1 for circles that both cameras see
  std::vector<std::vector<double>> leftDeviations;
  std::vector<std::vector<double>> rightDeviations;
  std::vector<common::Rejection> rejected;
};

/// Keeps what both cameras see; the reason when that is too little, else an empty text.
std::string TakeCommon(const std::string& name, const cv::Size& grid, PairViews& pairs) {
  GridView left = pairs.left.Last();
  GridView right = pairs.right.Last();
  KeepCommon(left, right);
  const size_t common = left.Seen().size();
  if (common < static_cast<size_t>(FewestCircles(grid))) {
    std::string fault = "only " + std::to_string(common) + " of " + std::to_string(grid.area()) +
                        " circles are seen by both cameras";
    pairs.rejected.push_back({name, fault, true});
    pairs.notes[pairs.number].reason = fault;
    return fault;
  }
  pairs.names.push_back(name);
  pairs.numbers.push_back(pairs.number);
  pairs.leftCentres.push_back(left.points);
  pairs.rightCentres.push_back(right.points);
  pairs.weights.push_back(left.weights);
  pairs.leftDeviations.push_back(left.deviations);
  pairs.rightDeviations.push_back(right.deviations);
  return "";
}

/// The reason when the pair gives no common view, else an empty text.
std::string TakePair(const SearchedImages& pair, const cv::Size& grid, PairViews& pairs) {
  const std::string name = NameTogether(pair.inputs);
  pairs.number = pair.inputs[LEFT].snapshot;
  const std::string faultLeft = pairs.left.Take(pair.inputs[LEFT], pair.outcomes[LEFT]);
  const std::string faultRight = pairs.right.Take(pair.inputs[RIGHT], pair.outcomes[RIGHT]);
  if (faultLeft.empty() && faultRight.empty()) return TakeCommon(name, grid, pairs);
  std::string fault = FaultOfPair(faultLeft, faultRight);
  pairs.rejected.push_back({name, fault});
  pairs.notes[pairs.number].reason = fault;
  return fault;
}

void SearchPairs(const Arguments& arguments, PairViews& pairs, const RunContext& context) {
  PairStream stream(arguments);
  SearchSteps steps;
  steps.next = [&](std::vector<NamedImage>& pair) { return stream.Next(pair); };
  steps.prepare = [&](std::vector<NamedImage>& pair) { stream.Cut(pair); };
  steps.take = [&](SearchedImages& pair) {
    const std::string fault = TakePair(pair, arguments.grid, pairs);
    return fault.empty() ? "grid found in both" : fault;
  };
  steps.expected = [&] { return stream.ExpectedCount(); };
  steps.firstSize = [&](size_t camera) {
    const auto& inputs = camera == LEFT ? arguments.inputs : arguments.rightInputs;
    return FirstSize(ExpandInputs(inputs), arguments.sampling);
  };
  SearchShared(arguments, Wanted::Views, steps, context);
  if (!pairs.left.HasImages() || !pairs.right.HasImages()) {
    throw InputError("no pair of images could be read from the input");
  }
  if (pairs.left.FrameSize() != pairs.right.FrameSize()) {
    throw InputError("the images of the two cameras differ in size: give --width and --height");
  }
}

/// The result of one camera of the pair.
struct CameraResult {
  std::string text;            ///< of the result, or the path of the file that was given
  CalibrationVerdict verdict;  ///< of grade None when it is not known
};

struct CameraResults {
  CameraResult left;
  CameraResult right;
  bool fromFiles = false;
};

/// `unwritten` is the file that could not be written, or empty.
common::ExitStatus StatusOf(const std::string& unwritten) {
  return unwritten.empty() ? common::SUCCESS : ReportUnwritten(unwritten);
}

common::ExitStatus CalibrateCamera(CameraViews& camera, const std::string& side,
                                   const std::vector<std::string>& outputs, CameraResult& result,
                                   common::OutputFiles& files) {
  std::cerr << "Computing the " << side << " camera ...\n";
  common::Report report = camera.Calibrate();
  result.verdict = camera.Verdict(report);
  std::cout << "== " << side << " camera\n"
            << common::ResultTable(report) << "\n"
            << common::VerdictTable(result.verdict, report.used) << "\n";
  std::string unwritten;
  for (std::string name : outputs) {
    if (!unwritten.empty()) break;
    name.append("_").append(side);
    unwritten = SaveWithVerdict(camera, result.verdict, name, result.text, files);
  }
  return StatusOf(unwritten);
}

/// A result that the user gives, with the verdict beside it.
CameraResult ResultFrom(const std::string& file) {
  std::string warning;
  CameraResult result{file, common::VerdictBeside(file, warning)};
  std::cerr << warning;
  return result;
}

common::ExitStatus CameraResultsFor(const Arguments& arguments, PairViews& pairs, CameraResults& results,
                                    common::OutputFiles& files, const RunContext& context) {
  if (!arguments.calibLeft.empty()) {
    results.left = ResultFrom(arguments.calibLeft);
    results.right = ResultFrom(arguments.calibRight);
    results.fromFiles = true;
    return common::SUCCESS;
  }
  const common::ExitStatus status =
      CalibrateCamera(pairs.left, "left", arguments.Outputs(), results.left, files);
  if (status != common::SUCCESS) return status;
  context.EndIfAsked();
  return CalibrateCamera(pairs.right, "right", arguments.Outputs(), results.right, files);
}

/// The mean over the views that agree.
double EpipolarDistance(Calibrator& calibrator, const std::vector<Centres>& left,
                        const std::vector<Centres>& right, const std::set<size_t>& disagreeing) {
  std::vector<Centres> agreeingLeft;
  std::vector<Centres> agreeingRight;
  for (size_t i = 0; i < left.size(); ++i) {
    if (disagreeing.count(i) > 0) continue;
    agreeingLeft.push_back(left[i]);
    agreeingRight.push_back(right[i]);
  }
  return common::MeanEpipolarDistance(
      agreeingLeft, agreeingRight, {calibrator.GetKLeft(), calibrator.GetDistCoefsLeft()},
      {calibrator.GetKRight(), calibrator.GetDistCoefsRight()}, calibrator.GetFundamentalMatrix());
}

/// Gives the calibrator the common views that spread best; the others are noted in the report.
common::SeenByPair Select(const Arguments& arguments, PairViews& pairs, Calibrator& calibrator,
                          common::PairReport& report) {
  common::SeenByPair seen;
  seen.frame = pairs.left.FrameSize();
  report.rejected = pairs.rejected;
  report.parts.of = static_cast<size_t>(arguments.grid.area());
  const auto chosen = SelectSpreadViews(pairs.leftCentres, arguments.grid, pairs.left.FrameSize(),
                                        static_cast<size_t>(arguments.maxViews));
  const std::set<size_t> isChosen(chosen.begin(), chosen.end());
  for (size_t i = 0; i < pairs.names.size(); ++i) {
    if (isChosen.count(i) == 0) {
      report.rejected.push_back(common::NotNeeded(pairs.names[i], arguments.maxViews));
      pairs.notes[pairs.numbers[i]].reason = report.rejected.back().reason;
      continue;
    }
    pairs.used.push_back(pairs.numbers[i]);
    const GridView left{pairs.leftCentres[i], pairs.weights[i], pairs.leftDeviations[i]};
    const GridView right{pairs.rightCentres[i], pairs.weights[i], pairs.rightDeviations[i]};
    calibrator.AddStereoPoints(left.points, left.weights, left.deviations, right.points, right.weights,
                               right.deviations);
    seen.left.push_back(left.Seen());
    seen.right.push_back(right.Seen());
    report.used.push_back(pairs.names[i]);
    if (left.IsPart()) report.parts.circles.push_back(seen.left.back().size());
  }
  return seen;
}

/// Computes the pair from what it saw.
void CalibratePair(const Arguments& arguments, const CameraResults& results, const common::SeenByPair& seen,
                   Calibrator& calibrator, common::PairReport& report, PairVerdict& verdict) {
  report.model = arguments.modelName;
  const float rms = calibrator.ComputeCalibrationStereo(results.left.text, results.right.text,
                                                        arguments.model, results.fromFiles);
  if (calibrator.GetStatus() != Calibrator::STATUS_COMPLETED) {
    throw InputError("the result files of the cameras cannot be used");  // the engine has said why
  }
  report.rms = static_cast<double>(rms);
  report.R = calibrator.GetR();
  report.T = calibrator.GetStereoTranslation();
  if (arguments.refineLenses) {
    report.refinedLeft = calibrator.GetKLeft();
    report.refinedRight = calibrator.GetKRight();
  }
  verdict = calibrator.GetPairVerdict(results.left.verdict, results.right.verdict);
  report.left = {verdict.left.rms, verdict.left.viewRms};
  report.right = {verdict.right.rms, verdict.right.viewRms};
  report.disagreeing = common::RejectedViews(verdict);
  std::set<size_t> apart = report.disagreeing;
  for (const auto& image : verdict.recounted)
    apart.insert(image.view);  // here the circles are in their old order
  report.epipolarDistance = EpipolarDistance(calibrator, seen.left, seen.right, apart);
}

/// The RMS of both images of each pair, and why it counts for nothing.
void NoteErrors(const common::PairReport& report, PairViews& pairs) {
  for (size_t i = 0; i < pairs.used.size(); ++i) {
    ViewNote& note = pairs.notes[pairs.used[i]];
    if (report.disagreeing.count(i) > 0) note.reason = common::DISAGREES;
    if (i >= report.left.views.size() || i >= report.right.views.size()) continue;
    const double left = report.left.views[i];
    const double right = report.right.views[i];
    if (left >= 0.0 && right >= 0.0) note.rms = std::sqrt((left * left + right * right) / 2.0);
  }
}

void CheckOutput(const Arguments& arguments, const std::string& output) {
  common::CheckOutput(output);
  const common::VerdictFiles files(output);
  for (const std::string& file : {files.text, files.PictureOf("left"), files.PictureOf("right")}) {
    common::CheckWritable(file);
  }
  if (!arguments.calibLeft.empty()) return;
  common::CheckOutputWithVerdict(output + "_left");
  common::CheckOutputWithVerdict(output + "_right");
}

/// The file that could not be written, or an empty text.
std::string SavePair(Calibrator& calibrator, const PairVerdict& verdict, const common::SeenByPair& seen,
                     const std::string& output, common::OutputFiles& files) {
  std::string file = output + ".json";
  files.Announce(file);
  if (common::SaveResultFile(calibrator, output).empty()) return file;
  files.Written(file);
  return common::SaveVerdict(verdict, seen, output, files);
}

}  // namespace

common::ExitStatus RunPair(const Arguments& arguments, const RunContext& context) {
  for (const std::string& output : OutputsToCheck(arguments)) CheckOutput(arguments, output);
  for (const std::string& file : {arguments.calibLeft, arguments.calibRight}) {
    if (!file.empty()) CheckCameraFile(file);
  }
  PairViews pairs(arguments);
  SearchPairs(arguments, pairs, context);
  if (pairs.names.size() < ENOUGH_VIEWS) {
    std::cout << common::ViewsTable(pairs.names, pairs.rejected, {}, "pair");
    return ReportTooFewViews("pair", pairs.names.size(), pairs.left.OtherGridText());
  }
  CameraResults results;
  common::OutputFiles files;
  const common::ExitStatus status = CameraResultsFor(arguments, pairs, results, files, context);
  if (status != common::SUCCESS) return status;

  context.EndIfAsked();
  std::cerr << "Computing the pair ...\n";
  const cv::Size frame = pairs.left.FrameSize();
  Calibrator calibrator(arguments.grid, UnitOf(arguments), Calibrator::STEREO, frame.width, frame.height);
  common::ApplyEngineOptions(arguments, UnitOf(arguments), calibrator);
  calibrator.SetPartialGrids(arguments.TakesParts());
  calibrator.SetRefineLenses(arguments.refineLenses);
  common::PairReport report;
  PairVerdict verdict;
  const common::SeenByPair seen = Select(arguments, pairs, calibrator, report);
  CalibratePair(arguments, results, seen, calibrator, report, verdict);
  std::cout << "== pair\n" << common::PairTable(report) << "\n" << common::VerdictTable(verdict, report.used);
  for (const std::string& output : arguments.Outputs()) {
    const common::ExitStatus written = StatusOf(SavePair(calibrator, verdict, seen, output, files));
    if (written != common::SUCCESS) return written;
  }
  NoteErrors(report, pairs);
  if (context.session != nullptr) context.session->Write(pairs.notes);
  return EndWithFiles(files, verdict.grade == PairVerdict::Grade::Worthless, arguments);
}

}  // namespace batch
