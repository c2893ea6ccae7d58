/// The guide's face: from a frame to what is said of it.
#include "velmora/Guide.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "assistant/AssistantModel.h"
#include "assistant/EdgeBlur.h"
#include "assistant/GuideChecks.h"
#include "assistant/GuideLine.h"
#include "assistant/GuideMotion.h"
#include "assistant/GuidePose.h"
#include "assistant/GuideTargets.h"
#include "finder/RobustFinder.h"

namespace velmora {

namespace {

const char* const MOVING = "the sheet is moving";
const char* const SMEARED = "the sheet moved while the image was taken";
const char* const OUT_OF_FOCUS = "the image is out of focus";
const char* const SAME = "it is the same view as one before";

/// Rendered views of discs of 11 to 43 px radius, at a noise of 4 grey levels, have centres of twice the
/// error of sharp ones from a blur of an eighth of the radius on, of three times that from a fifth on; the
/// search loses them at more than a third. Below the pixels that follow, any camera is as soft as that.
constexpr double SOFTEST = 0.2;
constexpr double SOFTEST_PIXELS = 1.6;
/// A sheet that moves by L pixels while the image is exposed adds 0.33 L to the widths of the edges across
/// its way; this share of the frame's longer side is that of 5 px in 640. Discs keep their centres in that,
/// but a sensor that is read row by row skews the grid by about as much as it smears it.
constexpr double SMEAR = 0.0025;
/// Blur that is so one-sided comes of a movement.
constexpr double ONE_SIDED = 0.6;

/// How the bar falls with the distance, in reaches.
constexpr double FALL = 4.0;

/// Why the view is of no use as an image; empty when it is not.
std::string BlurOf(const cv::Mat& image, const GuideSettings& settings,
                   const std::vector<cv::Point2d>& centres, const std::vector<double>& weights) {
  EdgeBlur blur;
  if (image.empty() || !MeasureEdgeBlur(image, settings.grid, centres, weights, blur)) return "";
  const double smear = SMEAR * std::max(settings.frame.width, settings.frame.height);
  if (blur.OneSided() > smear && blur.OneSided() > ONE_SIDED * blur.most) return SMEARED;
  return blur.least > std::max(SOFTEST_PIXELS, SOFTEST * blur.radius) ? OUT_OF_FOCUS : "";
}

}  // namespace

class Guide::Impl {
 public:
  explicit Impl(const GuideSettings& s)
      : settings(s), view(s.grid, s.frame), targets(view), motion(s.frame) {}

  GuideAnswer Look(const GuideFrame& frame);
  std::string BlurIn(const GuideFrame& frame) const;
  void SetTargets(const std::vector<std::vector<cv::Point2d>>& centres) {
    targets.Set(centres);
    takesRepeats_ = false;
    NewTarget();
  }
  void SetChosenTarget(const std::vector<cv::Point2d>& centres) {
    SetTargets({centres});
    takesRepeats_ = true;
  }
  void NewTarget() { isAt_ = false; }

  GuideSettings settings;
  const GuideView view;
  GuideTargets targets;
  GuideMotion motion;

 private:
  /// Whoever chooses poses one by one, by what they tell, knows when one is to be taken twice.
  bool takesRepeats_ = false;

  GuideAnswer Compare(const GuideFrame& frame, const GuidePose& pose, const GuideTarget& target);
  GuideAnswer AtTarget(const GuideFrame& frame, const GuidePose& pose, const GuideTarget& target);
  GuideHint HintWithoutGrid(const GuideFrame& frame) const;
  GuideHint HintForUnseen(const std::vector<cv::Point2d>& centres, const std::vector<double>& weights) const;
  GuideHint HintAfterSame(const GuideFrame& frame, const GuidePose& pose, const GuideTarget& target) const;

  GuideLine line_;
  bool isAt_ = false;       ///< the frame before was at the target
  bool everFound_ = false;  ///< so that the grid is of the right size
  double lastTime_ = 0.0;
};

GuideAnswer Guide::Impl::Look(const GuideFrame& frame) {
  CheckGuideFrame(settings, frame);
  if (frame.time < lastTime_) {
    motion.Forget();
    line_.Forget();
  }
  lastTime_ = frame.time;
  const bool found = !frame.centres.empty();
  everFound_ = everFound_ || found;
  if (found) motion.Add(frame.time, frame.centres);

  GuideAnswer answer;
  const GuideTarget* const target = targets.Current();
  if (target != nullptr) {
    const auto pose = found ? view.PoseOf(frame.centres) : std::nullopt;
    if (pose) {
      answer = Compare(frame, *pose, *target);
    } else {
      isAt_ = false;
      answer.state = GuideState::NotFound;
      const GuideHint hint = HintWithoutGrid(frame);
      if (Opposite(hint) != GuideHint::None) line_.LeftThePicture(hint, frame.time);
      answer.hint = line_.Await(hint, frame.time);
    }
  } else {
    line_.Forget();
  }
  if (settings.mirrored) answer.hint = Mirrored(answer.hint);
  answer.instruction = Words(answer.hint);
  return answer;
}

GuideAnswer Guide::Impl::Compare(const GuideFrame& frame, const GuidePose& pose, const GuideTarget& target) {
  isAt_ = target.IsReachedBy(view, frame.centres, pose, isAt_);
  if (isAt_) return AtTarget(frame, pose, target);
  GuideAnswer answer;
  answer.state = GuideState::Away;
  const double reaches = target.DistanceOf(frame.centres) / target.Reach();
  answer.closeness = std::min(1.0, std::exp((1.0 - reaches) / FALL));
  answer.hint = line_.ChooseMove(target.DifferencesOf(view, frame.centres, pose), target.TurnFrom(pose),
                                 target.Reach(), frame.time);
  return answer;
}

GuideAnswer Guide::Impl::AtTarget(const GuideFrame& frame, const GuidePose& pose, const GuideTarget& target) {
  GuideAnswer answer;
  answer.closeness = 1.0;
  answer.state = GuideState::Away;
  if (!AllSeen(frame.weights, target.Centres(), settings.frame)) {
    answer.hint = line_.Show(HintForUnseen(frame.centres, frame.weights), frame.time);
    return answer;
  }
  if (settings.cameras == 2 && frame.rightCentres.empty()) {
    answer.hint = line_.Show(GuideHint::ShowRightToo, frame.time);
    return answer;
  }
  if (!motion.IsStill(frame.time, frame.centres)) {
    answer.state = GuideState::HoldStill;
    answer.hint = line_.Show(GuideHint::HoldStill, frame.time);
    if (motion.IsMoving(frame.time, frame.centres)) answer.refusal = MOVING;
    return answer;
  }
  answer.state = GuideState::Refused;
  answer.refusal = BlurIn(frame);
  if (!answer.refusal.empty()) {
    answer.hint =
        line_.Show(answer.refusal == OUT_OF_FOCUS ? GuideHint::Sharpen : GuideHint::HoldStill, frame.time);
  } else if (!takesRepeats_ && targets.IsKept(frame.centres)) {
    answer.refusal = SAME;
    answer.hint = line_.Show(HintAfterSame(frame, pose, target), frame.time);
  } else {
    answer.state = GuideState::Reached;
    line_.Forget();
  }
  return answer;
}

std::string Guide::Impl::BlurIn(const GuideFrame& frame) const {
  std::string left = BlurOf(frame.image, settings, frame.centres, frame.weights);
  if (!left.empty() || settings.cameras == 1 || frame.rightCentres.empty()) return left;
  return BlurOf(frame.rightImage, settings, frame.rightCentres, frame.rightWeights);
}

GuideHint Guide::Impl::HintWithoutGrid(const GuideFrame& frame) const {
  const auto is = [&frame](GridFault fault) { return frame.whyNotFound == DescribeFault(fault); };
  if (is(GridFault::PartOutside)) {
    const auto* const last = motion.Last(frame.time);
    return last == nullptr ? GuideHint::PartOutside : HintInto(*last, settings.frame);
  }
  if (is(GridFault::CirclesTooSmall)) return GuideHint::Closer;
  if (is(GridFault::CirclesTooLarge)) return GuideHint::Farther;
  if (is(GridFault::PartlyHidden) || (everFound_ && is(GridFault::WrongSize))) return GuideHint::PartHidden;
  return GuideHint::ShowGrid;
}

/// Circles that are where the picture is are hidden; those elsewhere are outside.
GuideHint Guide::Impl::HintForUnseen(const std::vector<cv::Point2d>& centres,
                                     const std::vector<double>& weights) const {
  return AllSeen(weights, centres, settings.frame) ? GuideHint::PartOutside : GuideHint::PartHidden;
}

/// Two targets may be so near each other that a view at both is possible: then on to this one's very place.
GuideHint Guide::Impl::HintAfterSame(const GuideFrame& frame, const GuidePose& pose,
                                     const GuideTarget& target) const {
  constexpr double WORTH_IT = 0.4;
  const auto differences = target.DifferencesOf(view, frame.centres, pose);
  const auto& largest =
      *std::max_element(differences.begin(), differences.end(),
                        [](const auto& a, const auto& b) { return a.distance < b.distance; });
  return largest.distance > WORTH_IT * target.Reach() ? largest.hint : GuideHint::Skip;
}

// ---- Guide.

Guide::Guide(const GuideSettings& settings) {
  CheckGuideSettings(settings);
  impl_ = std::make_unique<Impl>(settings);
}

Guide::~Guide() = default;
Guide::Guide(Guide&& other) noexcept = default;
Guide& Guide::operator=(Guide&& other) noexcept = default;

const GuideSettings& Guide::Settings() const {
  return impl_->settings;
}

void Guide::SetMirrored(bool mirrored) {
  impl_->settings.mirrored = mirrored;
}

void Guide::LoadTargets(const std::string& path) {
  std::vector<std::vector<cv::Point2d>> targets;
  try {
    const AssistantModel model = ReadAssistantModel(path, impl_->settings.frame, impl_->settings.grid);
    targets.reserve(model.poses.size());
    for (const cv::Mat& pose : model.poses)
      targets.emplace_back(pose.begin<cv::Vec2f>(), pose.end<cv::Vec2f>());
    impl_->SetTargets(targets);
  } catch (const std::logic_error& fault) {
    throw std::runtime_error("cannot use the poses in '" + path + "': " + fault.what());
  } catch (const std::runtime_error& fault) {
    throw std::runtime_error("cannot use the poses in '" + path + "': " + fault.what());
  }
}

void Guide::SetTargets(const std::vector<std::vector<cv::Point2d>>& targets) {
  impl_->SetTargets(targets);
}

void Guide::SetTarget(const std::vector<cv::Point2d>& centres) {
  impl_->SetChosenTarget(centres);
}

int Guide::Targets() const {
  return impl_->targets.Count();
}

int Guide::TargetNumber() const {
  return impl_->targets.Number();
}

const std::vector<cv::Point2d>& Guide::Target() const {
  static const std::vector<cv::Point2d> WITHOUT;
  const GuideTarget* const target = impl_->targets.Current();
  return target == nullptr ? WITHOUT : target->Centres();
}

std::vector<int> Guide::Reached() const {
  return impl_->targets.Reached();
}

std::vector<int> Guide::LeftOut() const {
  return impl_->targets.LeftOut();
}

void Guide::Advance() {
  impl_->targets.Advance();
  impl_->NewTarget();
}

void Guide::Skip() {
  impl_->targets.Skip();
  impl_->NewTarget();
}

void Guide::Restart() {
  impl_->targets.Restart();
  impl_->NewTarget();
}

void Guide::SetReached(const std::vector<int>& numbers) {
  impl_->targets.SetReached(numbers);
  impl_->NewTarget();
}

std::vector<int> Guide::ReachedBy(const std::vector<std::vector<cv::Point2d>>& views) const {
  for (const auto& view : views) {
    if (!view.empty()) CheckGuideCentres(impl_->settings, view);
  }
  return impl_->targets.ReachedBy(views);
}

void Guide::Kept(const std::vector<cv::Point2d>& centres) {
  CheckGuideCentres(impl_->settings, centres);
  impl_->targets.Keep(centres);
}

void Guide::TakenBack() {
  if (impl_->targets.TakeBack()) impl_->NewTarget();
}

int Guide::Views() const {
  return impl_->targets.Views();
}

GuideAnswer Guide::Look(const GuideFrame& frame) {
  return impl_->Look(frame);
}

std::string Guide::ReasonAgainst(const GuideFrame& frame) const {
  CheckGuideFrame(impl_->settings, frame);
  if (frame.centres.empty())
    return frame.whyNotFound.empty() ? "the grid is not in sight" : frame.whyNotFound;
  if (impl_->settings.cameras == 2 && frame.rightCentres.empty()) return Words(GuideHint::ShowRightToo);
  if (impl_->motion.IsMoving(frame.time, frame.centres)) return MOVING;
  std::string blur = impl_->BlurIn(frame);
  if (!blur.empty()) return blur;
  return impl_->targets.IsKept(frame.centres) ? SAME : "";
}

}  // namespace velmora
