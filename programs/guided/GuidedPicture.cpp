/// The window of a guided calibration: what is shown.
#include <algorithm>

#include "guided/GuidedLoop.h"
#include "guided/Pages.h"

namespace guided {

namespace {

using velmora::GuideState;

/// Seconds.
constexpr double FLASH = 0.4;
constexpr double MESSAGE_STAYS = 2.0;
constexpr double MESSAGE_FADES = 1.0;

double SecondsSince(std::chrono::steady_clock::time_point moment) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - moment).count();
}

/// With a capital letter.
std::string AsSentence(std::string text) {
  if (!text.empty()) text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
  return text;
}

Tone ToneOf(GuideState state) {
  switch (state) {
    case GuideState::Reached:
    case GuideState::HoldStill:
      return Tone::Good;
    case GuideState::Refused:
      return Tone::Warning;
    default:
      return Tone::Neutral;
  }
}

}  // namespace

void GuidedLoop::Say(const std::string& message) {
  message_ = message;
  said_ = std::chrono::steady_clock::now();
}

void GuidedLoop::Draw() {
  screen_.Show(WINDOW, stage_ == Stage::Done ? guided::Draw(endPage_) : guided::Draw(PictureNow()));
}

Picture GuidedLoop::PictureNow() {
  Picture picture;
  picture.grid = options_.computation.grid;
  picture.notice = stage_ == Stage::Taking ? options_.remark() : "";
  AddEstimate(picture);
  for (size_t camera = 0; camera < collector_.Cameras(); ++camera)
    picture.cameras.push_back(CameraNow(camera));
  AddWords(picture);
  picture.keys = KeysNow();
  return picture;
}

CameraPicture GuidedLoop::CameraNow(size_t camera) const {
  CameraPicture picture;
  if (camera < images_.size()) picture.image = images_[camera];
  if (collector_.Cameras() > 1) picture.name = camera == 0 ? "left camera" : "right camera";
  if (undistorted_ && camera < undistortions_.size() && !picture.image.empty()) {
    picture.image = undistortions_[camera].Of(picture.image);
    picture.undistorted = true;  // what is found lies elsewhere there
    return picture;
  }
  if (camera == 0) picture.target = guide_.Target();
  if (camera < found_.size()) {
    picture.found = found_[camera].centres;
    picture.weights = found_[camera].weights;
  }
  picture.kept.reserve(views_.Count());
  for (const NamedSnapshot& view : views_.All())
    picture.kept.push_back(view.snapshot.cameras.at(camera).centres);
  return picture;
}

void GuidedLoop::AddWords(Picture& picture) const {
  if (stage_ == Stage::Computing) {
    picture.instruction = "Computing ...";
  } else if (answer_.state == GuideState::NoTarget) {
    picture.instruction = "Space takes a view, Enter computes";
  } else {
    // What to do is said, and why only where there is nothing to be done but to know it.
    const bool refused = answer_.state == GuideState::Refused;
    picture.instruction = AsSentence(refused ? answer_.refusal : answer_.instruction);
    picture.tone = ToneOf(answer_.state);
    picture.closeness = answer_.closeness;
  }
  if (!picture.notice.empty()) picture.tone = Tone::Warning;
  picture.view = static_cast<int>(next_ ? views_.Count() : guide_.Reached().size()) + 1;
  if (!next_) {
    picture.goal = guide_.Targets() - static_cast<int>(guide_.LeftOut().size());
    picture.view = std::min(picture.view, picture.goal);
  }
  picture.message = message_;
  picture.messageStrength = 1.0 - std::clamp((SecondsSince(said_) - MESSAGE_STAYS) / MESSAGE_FADES, 0.0, 1.0);
  picture.flash = 1.0 - std::clamp(SecondsSince(flashed_) / FLASH, 0.0, 1.0);
}

/// What is known so far. Maps take some milliseconds, and are drawn once for each result.
void GuidedLoop::AddEstimate(Picture& picture) {
  const std::shared_ptr<const Outcome> outcome = estimator_.Latest();
  const bool known = outcome != nullptr && !outcome->Failed();
  if (drawn_ != outcome) {
    drawn_ = outcome;
    undistortions_.clear();
    map_ = known ? MapOf(*outcome) : cv::Mat();
    if (known) {
      for (const CameraOutcome& camera : outcome->cameras) undistortions_.emplace_back(camera.report);
    }
  }
  if (next_) {
    picture.precision = next_->Precision();
  } else if (known) {
    picture.precision = PrecisionOf(*outcome);
  }
  if (!known) return;
  picture.map = map_;
  picture.mapPlace = mapPlace_;
}

std::vector<Key> GuidedLoop::KeysNow() const {
  if (stage_ != Stage::Taking) return {{"q", "end"}};
  const bool known = drawn_ != nullptr && !drawn_->Failed();
  const bool live = !options_.sourceEnded();
  return {{"Space", "take this view", live},
          {"Enter", "compute", views_.Count() >= Estimator::ENOUGH},
          {"u", "take back", views_.CanTakeBack()},
          {"s", "skip", live && guide_.TargetNumber() > 0},
          {"v", undistorted_ ? "as it is" : "undistorted", known},
          {"m", "map", known},
          {"r", "begin again", views_.Count() > 0},
          {"q", "end"}};
}

}  // namespace guided
