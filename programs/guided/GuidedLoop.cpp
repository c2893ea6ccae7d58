/// The live window of a guided calibration.
#include "guided/GuidedLoop.h"

#include <opencv2/imgproc.hpp>

#include "common/ExitStatus.h"
#include "common/Messages.h"
#include "common/Report.h"
#include "common/ResultFile.h"
#include "common/VerdictFiles.h"
#include "common/VerdictReport.h"

namespace guided {

namespace {

constexpr int KEY_QUIT = 'q';
constexpr int KEY_RESTART = 'r';
constexpr int KEY_SNAPSHOT = ' ';
const char* const KEYS = " Space takes what is in view besides, r starts again, q quits.";
constexpr int LIVE_WAIT = 1;
constexpr int IDLE_WAIT = 10;

/// `used` are the names of the snapshots.
common::Report ReportOf(Calibrator& calibrator, const common::ChosenModel& lens, const cv::Size& frame,
                        const std::vector<std::string>& used) {
  common::Report report;
  report.model = common::NameOfModel(lens.model);
  report.modelReasons = lens.reasons;
  report.frame = frame;
  report.used = used;
  common::CopyResult(calibrator, report);
  return report;
}

}  // namespace

const char* const GuidedLoop::WINDOW = "Velmora";

GuidedLoop::GuidedLoop(Calibrator& calibrator, common::FrameFeed& feed, common::Screen& screen,
                       const LoopOptions& options, std::ostream& out, std::ostream& err)
    : calibrator_(calibrator), feed_(feed), screen_(screen), options_(options), out_(out), err_(err) {
}

common::ExitStatus GuidedLoop::Run() {
  if (!Begin()) return common::UNUSABLE;
  if (next_) {
    out_ << "Bring the sheet to the drawn one, until projections are known to " << options_.until
         << " px, at most " << goal_ << " times." << KEYS << std::endl;
  } else {
    out_ << "Bring the sheet to the drawn one, " << goal_ << " times." << KEYS << std::endl;
  }
  while (ShowNext() == Step::GoOn && Follow() == Step::GoOn &&
         React(screen_.WaitKey(fresh_ ? LIVE_WAIT : IDLE_WAIT)) == Step::GoOn) {
  }
  screen_.Close(WINDOW);
  return status_;
}

/// From the first pose. False, after the engine's error line, when the poses cannot be used.
bool GuidedLoop::Begin() {
  calibrator_.Reset();
  reached_ = 0;
  besides_ = 0;
  observed_.clear();
  names_.clear();
  lens_.reset();
  if (options_.until > 0.0) {
    calibrator_.DisableAssistant();
    next_.emplace(calibrator_, options_.until, options_.mostPoses, options_.model);
    goal_ = options_.mostPoses;
    return next_->Ask() == NextPoses::State::Asked;
  }
  calibrator_.EnableAssistant(options_.poses);
  goal_ = calibrator_.GetAssistantGoal();
  return goal_ > 0;
}

GuidedLoop::Step GuidedLoop::ShowNext() {
  cv::Mat frame;
  fresh_ = feed_.Take(frame, std::chrono::milliseconds(0));
  if (fresh_) {
    DetectIn(frame);
    if (next_) DrawPrecision(frame);
    screen_.Show(WINDOW, frame);
    return Step::GoOn;
  }
  if (feed_.FailedToStart()) {
    common::PrintError(err_, "cannot read " + options_.source + ".");
    status_ = common::UNUSABLE;
    return Step::Stop;
  }
  if (options_.sourceEnded() && !computing_) {
    common::PrintError(err_, "the video ended with " + std::to_string(reached_) + " of " +
                                 std::to_string(goal_) + " poses reached.");
    return Step::Stop;
  }
  return Step::GoOn;
}

/// Keeps the circles of the frames that become snapshots.
void GuidedLoop::DetectIn(cv::Mat& frame) {
  std::vector<cv::Point2d> points;
  calibrator_.DetectPoints(frame, points, true);
  if (calibrator_.GetNumberOfRecords() <= static_cast<int>(observed_.size())) return;
  observed_.push_back(std::move(points));
  names_.push_back("pose " + std::to_string(static_cast<int>(observed_.size()) - besides_));
  options_.taken();
}

GuidedLoop::Step GuidedLoop::React(int key) {
  if (key == KEY_QUIT) {
    out_ << "Ended with " << reached_ << " of " << goal_ << " poses reached." << std::endl;
    return Step::Stop;
  }
  if (key == KEY_SNAPSHOT && !computing_) TakeWhatIsInView();
  if (key == KEY_RESTART && !computing_) {
    out_ << "Starting again at the first pose." << std::endl;
    if (!Begin()) {
      status_ = common::UNUSABLE;
      return Step::Stop;
    }
  }
  return Step::GoOn;
}

/// Also a part of the grid: edges and corners are where whole grids hardly come.
void GuidedLoop::TakeWhatIsInView() {
  std::vector<cv::Point2d> seen;
  if (!calibrator_.AddSeen(seen)) {
    out_ << "Nothing to take: hold the sheet so that most of its circles are in view." << std::endl;
    return;
  }
  ++besides_;
  out_ << "Taken besides: " << seen.size() << " circles." << std::endl;
  observed_.push_back(std::move(seen));
  names_.push_back("by hand " + std::to_string(besides_));
  options_.taken();
}

GuidedLoop::Step GuidedLoop::Follow() {
  TellOfPoses();
  return computing_ ? FollowComputation() : Step::GoOn;
}

void GuidedLoop::TellOfPoses() {
  for (const int poses = calibrator_.GetNumberOfRecords() - besides_; reached_ < poses;) {
    ++reached_;
    out_ << "Pose " << reached_ << (next_ ? " reached." : " of " + std::to_string(goal_) + " reached.")
         << std::endl;
  }
  // The assistant ends with the last pose of its model, or with the one that was asked for.
  if (computing_ || calibrator_.GetAssistantGoal() >= 0) return;
  if (next_) {
    AskForNext();
  } else {
    BeginComputation();
  }
}

void GuidedLoop::AskForNext() {
  const NextPoses::State state = next_->Ask();
  out_ << "  " << next_->Precision() << std::endl;
  if (state == NextPoses::State::Asked) return;
  if (state == NextPoses::State::GivenUp) {
    out_ << "No more poses after " << reached_ << ": the goal is not reached." << std::endl;
  }
  BeginComputation();
  calibrator_.ComputeCalibrationMultithread(Calibrator::MODEL_RATIONAL);
}

void GuidedLoop::BeginComputation() {
  computing_ = true;
  const bool rational = options_.model == Calibrator::MODEL_RATIONAL;
  out_ << "Computing the " << (rational ? "rational model" : "camera") << ". This may take a while..."
       << std::endl;
}

/// Above the score bar, away from the texts of the engine.
void GuidedLoop::DrawPrecision(cv::Mat& frame) const {
  const cv::Point place(10, frame.rows - 14);
  cv::putText(frame, next_->Precision(), place, cv::FONT_HERSHEY_DUPLEX, 0.5, cv::Scalar::all(0), 3,
              cv::LINE_AA);
  cv::putText(frame, next_->Precision(), place, cv::FONT_HERSHEY_DUPLEX, 0.5, cv::Scalar::all(255), 1,
              cv::LINE_AA);
}

GuidedLoop::Step GuidedLoop::FollowComputation() {
  if (calibrator_.IsComputing()) return Step::GoOn;
  if (!lens_ && ComputesAnother()) return Step::GoOn;
  if (calibrator_.GetStatus() == Calibrator::STATUS_COMPLETED) return Save();
  common::PrintError(err_, "the calibration failed.");
  return Step::Stop;
}

/// What follows the last pose is the rational model, which may fail before a fisheye. True when another one
/// is wanted, or asked for by the views, and is being computed.
bool GuidedLoop::ComputesAnother() {
  try {
    lens_ = common::ChooseModel(options_.model, calibrator_);
  } catch (const cv::Exception&) {
    lens_ = common::ChosenModel{Calibrator::MODEL_RATIONAL, {}};  // no model fits these views
  }
  if (lens_->model == Calibrator::MODEL_RATIONAL) return false;
  common::ComputeModelInBackground(lens_->model, calibrator_);
  return true;
}

/// A fisheye has a file of its own.
std::string GuidedLoop::ResultName() const {
  return calibrator_.GetFisheye().IsEmpty() ? options_.output : options_.output + "_fisheye";
}

GuidedLoop::Step GuidedLoop::Save() {
  common::Report report = ReportOf(calibrator_, *lens_, options_.frame, names_);
  const CalibrationVerdict verdict = calibrator_.GetVerdict();
  report.disagreeing = common::RejectedViews(verdict);
  out_ << common::ResultTable(report) << "\n" << common::VerdictTable(verdict, report.used);
  common::OutputFiles files;
  const std::string unwritten = Write(verdict, files);
  if (!unwritten.empty()) {
    common::PrintError(err_, "cannot write '" + unwritten + "'.");
    status_ = common::UNUSABLE;
    return Step::Stop;
  }
  out_ << "\n" << files.Text() << std::flush;
  const bool worthless = verdict.grade == CalibrationVerdict::Grade::Worthless;
  status_ = worthless && options_.strict ? common::WORTHLESS : common::SUCCESS;
  return Step::Stop;
}

/// The file that could not be written, or an empty text.
std::string GuidedLoop::Write(const CalibrationVerdict& verdict, common::OutputFiles& files) {
  const std::string name = ResultName();
  std::string result = name + ".json";
  files.Announce(result);
  const std::string text = name == options_.output ? common::SaveResultFile(calibrator_, options_.output)
                                                   : common::SaveFisheyeFile(calibrator_, options_.output);
  if (text.empty()) return result;
  files.Written(result);
  return common::SaveVerdict(verdict, options_.frame, observed_, name, files);
}

}  // namespace guided
