/// The window of a guided calibration: what happens. What is shown is in GuidedPicture.cpp.
#include "guided/GuidedLoop.h"

#include "common/Messages.h"
#include "guided/Pages.h"

namespace guided {

namespace {

using velmora::GuideState;

constexpr int KEY_ENTER = 13;
constexpr int KEY_LINE_FEED = 10;
constexpr int KEY_ESCAPE = 27;
constexpr int LIVE_WAIT = 1;
constexpr int IDLE_WAIT = 25;

velmora::GuideSettings GuideSettingsOf(const LoopOptions& options, size_t cameras) {
  velmora::GuideSettings settings;
  settings.grid = options.computation.grid;
  settings.frame = options.computation.frame;
  settings.cameras = static_cast<int>(cameras);
  return settings;
}

/// The poses of a file, in the frame.
std::vector<std::vector<cv::Point2d>> PosesIn(const std::string& path,
                                              const velmora::GuideSettings& settings) {
  velmora::Guide guide(settings);
  guide.LoadTargets(path);
  std::vector<std::vector<cv::Point2d>> poses;
  for (; guide.TargetNumber() > 0; guide.Advance()) poses.push_back(guide.Target());
  return poses;
}

std::string Count(size_t views) {
  return std::to_string(views) + (views == 1 ? " view" : " views");
}

}  // namespace

const char* const GuidedLoop::WINDOW = "Velmora";

GuidedLoop::GuidedLoop(velmora::Session& session, ImagesFeed& feed, common::Screen& screen,
                       LoopOptions options, std::ostream& out, std::ostream& err)
    : session_(session),
      feed_(feed),
      screen_(screen),
      options_(std::move(options)),
      out_(out),
      err_(err),
      collector_(options_.computation, feed.Cameras()),
      guide_(GuideSettingsOf(options_, feed.Cameras())),
      views_(collector_, session_, guide_),
      estimator_(options_.computation) {
  const auto poses = PosesIn(options_.poses, guide_.Settings());
  if (options_.until > 0.0) {
    next_.emplace([this] { return collector_.Propose(options_.computation.model); }, options_.until,
                  options_.mostPoses);
    standIns_ = poses;
  } else {
    guide_.SetTargets(poses);
  }
  views_.Resume();
}

common::ExitStatus GuidedLoop::Run() {
  Welcome();
  AfterChange();
  while (stage_ != Stage::Over) {
    if (options_.interrupted()) {
      End();
      break;
    }
    const bool fresh = stage_ == Stage::Taking && LookAtNext();
    LookAtSource();
    estimator_.Poll();
    FollowComputation();
    if (stage_ == Stage::Over) break;
    Draw();
    React(screen_.WaitKey(fresh ? LIVE_WAIT : IDLE_WAIT));
    if (screen_.WasClosed(WINDOW)) End();
  }
  screen_.Close(WINDOW);
  return status_;
}

void GuidedLoop::Welcome() {
  if (next_) {
    out_ << "Bring the sheet to the drawn one, until projections are known to " << options_.until
         << " px, at most " << options_.mostPoses << " times.\n";
  } else {
    out_ << "Bring the sheet to the drawn one, " << guide_.Targets() << " times.\n";
  }
  out_ << "The keys are in the window." << std::endl;
}

/// True when there was something to look at.
bool GuidedLoop::LookAtNext() {
  if (!feed_.Take(images_)) return false;
  found_ = collector_.Search(images_);
  lookedAt_ = {};
  lookedAt_.image = images_[0];
  lookedAt_.centres = found_[0].centres;
  lookedAt_.weights = found_[0].weights;
  lookedAt_.whyNotFound = collector_.WhyNotFound();
  lookedAt_.time = options_.clock();
  if (found_.size() > 1) {
    lookedAt_.rightImage = images_[1];
    lookedAt_.rightCentres = found_[1].centres;
    lookedAt_.rightWeights = found_[1].weights;
  }
  answer_ = guide_.Look(lookedAt_);
  FollowGuide();
  return true;
}

void GuidedLoop::LookAtSource() {
  if (feed_.FailedToStart()) {
    common::PrintError(err_, "cannot read " + options_.source + ".");
    status_ = common::UNUSABLE;
    stage_ = Stage::Over;
    return;
  }
  if (stage_ != Stage::Taking || !options_.endsByItself || !options_.sourceEnded()) return;
  if (views_.Count() >= Estimator::ENOUGH) {
    BeginComputing();
    return;
  }
  common::PrintError(err_, "the source ended after " + Count(views_.Count()) + ": at least five are needed.");
  End();
}

void GuidedLoop::FollowGuide() {
  if (answer_.state == GuideState::Reached) Take(true);
}

/// What was looked at last.
void GuidedLoop::Take(bool reachesTarget) {
  const std::string fault = views_.Keep(reachesTarget);
  if (!fault.empty()) {
    out_ << fault << std::endl;
    Say(fault);
    return;
  }
  const NamedSnapshot& view = views_.All().back();
  out_ << "View " << views_.Count() << " taken: " << view.name << "." << std::endl;
  Say("View " + std::to_string(views_.Count()) + " taken");
  flashed_ = std::chrono::steady_clock::now();
  options_.taken();
  const std::string warning = session_.DiskWarning();
  if (!warning.empty()) {
    err_ << "Warning: " << warning << std::endl;
    Say(warning);
  }
  AfterChange();
}

void GuidedLoop::TakeByHand() {
  const std::string reason = images_.empty() ? "there is no picture yet" : guide_.ReasonAgainst(lookedAt_);
  if (!reason.empty()) {
    Say("Not taken: " + reason);
    out_ << "Not taken: " << reason << "." << std::endl;
    return;
  }
  const bool atTarget = answer_.state == GuideState::Reached || answer_.state == GuideState::HoldStill;
  Take(atTarget);
}

/// The views are others than before.
void GuidedLoop::AfterChange() {
  estimator_.Update(views_.All());
  if (next_) {
    AskForNext();
  } else if (guide_.TargetNumber() == 0 && views_.Count() >= Estimator::ENOUGH) {
    BeginComputing();
  }
}

void GuidedLoop::AskForNext() {
  const NextPoses::State state = next_->Ask(static_cast<int>(views_.Count()));
  if (views_.Count() > 0) out_ << "  " << next_->Precision() << std::endl;
  if (state == NextPoses::State::Asked) {
    guide_.SetTarget(next_->Pose());
    return;
  }
  if (state == NextPoses::State::GivenUp)
    out_ << "No more poses after " << Count(views_.Count()) << ": the goal is not reached." << std::endl;
  if (views_.Count() >= Estimator::ENOUGH) BeginComputing();
}

/// A chosen pose has no other beside it: one of the file stands in for it, for one view.
void GuidedLoop::Skip() {
  if (next_ && !standIns_.empty()) {
    guide_.SetTarget(standIns_[nextStandIn_++ % standIns_.size()]);
  } else {
    guide_.Skip();
  }
  Say("Skipped");
  if (guide_.TargetNumber() == 0) AfterChange();
}

void GuidedLoop::BeginComputing() {
  stage_ = Stage::Computing;
  out_ << "Computing from " << Count(views_.Count()) << " ..." << std::endl;
}

void GuidedLoop::FollowComputation() {
  if (stage_ != Stage::Computing) return;
  const std::shared_ptr<const Outcome> outcome = estimator_.Current();
  if (outcome == nullptr) return;
  if (!outcome->Failed()) {
    Finish(*outcome);
    return;
  }
  common::PrintError(err_, "the calibration failed: " + outcome->fault);
  Say("The calibration failed: take more views");
  stage_ = Stage::Taking;
  if (options_.endsByItself && options_.sourceEnded()) End();
}

void GuidedLoop::Finish(const Outcome& outcome) {
  out_ << TextOf(outcome);
  common::OutputFiles files;
  if (!SaveAll(outcome, files)) {
    status_ = common::UNUSABLE;
    stage_ = Stage::Over;
    SayHowToGoOn();
    return;
  }
  out_ << "\n" << files.Text();
  constexpr double MEGABYTE = 1e6;
  out_ << "The views are in '" << session_.Folder() << "': " << Count(views_.Count()) << ", "
       << std::lround(static_cast<double>(session_.BytesTaken()) / MEGABYTE) << " MB." << std::endl;
  status_ = outcome.IsWorthless() && options_.strict ? common::WORTHLESS : common::SUCCESS;
  stage_ = options_.endsByItself ? Stage::Over : Stage::Done;
  if (stage_ == Stage::Done) {
    endPage_ = EndPageOf(outcome, session_, files.Names());
    endPage_.keys = {{"Enter", "take more views", !options_.sourceEnded()}, {"q", "end"}};
  }
}

/// Under the name that was asked for, and beside the views that it is of.
bool GuidedLoop::SaveAll(const Outcome& outcome, common::OutputFiles& files) {
  std::string unwritten = Save(outcome, options_.output, files);
  common::OutputFiles copies;
  if (unwritten.empty()) unwritten = Save(outcome, session_.PathFor("calibration"), copies);
  if (!unwritten.empty()) common::PrintError(err_, "cannot write '" + unwritten + "'.");
  return unwritten.empty();
}

void GuidedLoop::React(int key) {
  if (key < 0) return;
  if (key == 'q' || key == KEY_ESCAPE) {
    End();
  } else if (stage_ == Stage::Taking) {
    ReactWhileTaking(key);
  } else if (stage_ == Stage::Done) {
    ReactAtTheEnd(key);
  }
}

void GuidedLoop::ReactWhileTaking(int key) {
  switch (key) {
    case ' ':
      if (!options_.sourceEnded()) TakeByHand();
      break;
    case 'u': {
      const std::string done = views_.TakeBack();
      out_ << done << "." << std::endl;
      Say(done);
      AfterChange();
      break;
    }
    case 'r':
      BeginAgain();
      break;
    case 's':
      Skip();
      break;
    case 'v':
      undistorted_ = !undistorted_;
      break;
    case 'm':
      mapPlace_ = mapPlace_ == MapPlace::None    ? MapPlace::Inset
                  : mapPlace_ == MapPlace::Inset ? MapPlace::Whole
                                                 : MapPlace::None;
      break;
    case KEY_ENTER:
    case KEY_LINE_FEED:
      if (views_.Count() >= Estimator::ENOUGH) {
        BeginComputing();
      } else {
        Say("At least five views are needed: there are " + std::to_string(views_.Count()));
      }
      break;
    default:
      break;
  }
}

void GuidedLoop::BeginAgain() {
  const std::string fault = views_.BeginAgain();
  out_ << (fault.empty() ? "Starting again at the first pose." : fault) << std::endl;
  Say(fault.empty() ? "Begun again: u brings the views back" : fault);
  AfterChange();
}

void GuidedLoop::ReactAtTheEnd(int key) {
  if ((key == KEY_ENTER || key == KEY_LINE_FEED) && !options_.sourceEnded()) stage_ = Stage::Taking;
}

void GuidedLoop::End() {
  if (stage_ != Stage::Done) {
    out_ << "Ended with " << Count(views_.Count()) << "." << std::endl;
    SayHowToGoOn();
  }
  stage_ = Stage::Over;
}

void GuidedLoop::SayHowToGoOn() {
  out_ << "They are kept. To go on: velmora-guided --session '" << session_.Folder() << "'" << std::endl;
}

}  // namespace guided
