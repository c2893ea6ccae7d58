/// Which hint is shown, so that it can be read and obeyed.
#include "assistant/GuideLine.h"

#include <algorithm>
#include <cmath>

namespace velmora {

namespace {

/// A difference of this share of the reach is none: what was shown for it has been obeyed.
constexpr double OBEYED = 0.3;
/// Another difference is named at once when it is this many times larger than the one that is shown, and when
/// it is somewhat larger for a second: somebody does not do what is shown, or does it in vain.
constexpr double MUCH_LARGER = 2.0;
constexpr double LARGER = 1.2;
constexpr double PATIENCE = 1.0;
/// What is shown can be read at least, seconds.
constexpr double READABLE = 0.4;
/// How long something else must hold before it is said.
constexpr double WAVERING = 0.3;
constexpr double URGENT = 0.1;
/// What would lead the grid out of the picture, or has just done it, comes after what makes room for it,
/// unless it is much larger.
constexpr double LATER = 0.4;
constexpr double REMEMBERED = 5.0;  ///< seconds
/// Beyond this turn in the picture it is a half one that is missing; less than the other once that was said.
constexpr double HALF_TURN = 2.36;
constexpr double NO_HALF_TURN = 1.75;

}  // namespace

GuideHint Mirrored(GuideHint hint) {
  switch (hint) {
    case GuideHint::Left:
      return GuideHint::Right;
    case GuideHint::Right:
      return GuideHint::Left;
    case GuideHint::Clockwise:
      return GuideHint::Anticlockwise;
    case GuideHint::Anticlockwise:
      return GuideHint::Clockwise;
    case GuideHint::LeftEdgeAway:
      return GuideHint::RightEdgeAway;
    case GuideHint::RightEdgeAway:
      return GuideHint::LeftEdgeAway;
    default:
      return hint;
  }
}

GuideHint Opposite(GuideHint hint) {
  switch (hint) {
    case GuideHint::Left:
      return GuideHint::Right;
    case GuideHint::Right:
      return GuideHint::Left;
    case GuideHint::Up:
      return GuideHint::Down;
    case GuideHint::Down:
      return GuideHint::Up;
    case GuideHint::Closer:
      return GuideHint::Farther;
    case GuideHint::Farther:
      return GuideHint::Closer;
    default:
      return GuideHint::None;
  }
}

GuideHint HintInto(const std::vector<cv::Point2d>& centres, const cv::Size& frame) {
  constexpr double NEAR = 0.12;  // of the frame's height
  double left = frame.width;
  double top = frame.height;
  double right = left;
  double bottom = top;
  for (const cv::Point2d& centre : centres) {
    left = std::min(left, centre.x);
    top = std::min(top, centre.y);
    right = std::min(right, frame.width - 1.0 - centre.x);
    bottom = std::min(bottom, frame.height - 1.0 - centre.y);
  }
  const double limit = NEAR * frame.height;
  const bool aside = std::min(left, right) < std::min(top, bottom);
  const double near = aside ? std::min(left, right) : std::min(top, bottom);
  const double opposite = aside ? std::max(left, right) : std::max(top, bottom);
  if (opposite < limit) return GuideHint::Farther;
  if (near > limit) return GuideHint::PartOutside;
  if (aside) return left < right ? GuideHint::Right : GuideHint::Left;
  return top < bottom ? GuideHint::Down : GuideHint::Up;
}

double GuideLine::WorthOf(const GuideDifference& difference, double time) const {
  const bool didLeadOut = difference.hint == ledOut_ && time - ledOutAt_ < REMEMBERED;
  return difference.leadsOut || didLeadOut ? LATER * difference.distance : difference.distance;
}

void GuideLine::LeftThePicture(GuideHint back, double time) {
  ledOut_ = Opposite(back);
  ledOutAt_ = time;
}

GuideHint GuideLine::ChooseMove(const std::array<GuideDifference, 6>& differences, double turn, double reach,
                                double time) {
  if (std::abs(turn) > (shown_ == GuideHint::TurnRound ? NO_HALF_TURN : HALF_TURN))
    return Show(GuideHint::TurnRound, time);
  const GuideDifference& largest =
      *std::max_element(differences.begin(), differences.end(),
                        [&](const auto& a, const auto& b) { return WorthOf(a, time) < WorthOf(b, time); });
  const auto current = std::find_if(differences.begin(), differences.end(),
                                    [this](const auto& difference) { return difference.hint == shown_; });
  if (current == differences.end() || current->distance < OBEYED * reach) return Show(largest.hint, time);
  const double ratio = WorthOf(largest, time) / WorthOf(*current, time);
  if (ratio > MUCH_LARGER && time - shownSince_ >= READABLE) return Show(largest.hint, time);
  if (ratio <= LARGER) return Show(shown_, time);
  if (other_ != largest.hint) {
    other_ = largest.hint;
    otherSince_ = time;
  }
  return time - otherSince_ >= PATIENCE ? Show(largest.hint, time) : shown_;
}

GuideHint GuideLine::Await(GuideHint hint, double time) {
  if (hint == shown_ || shown_ == GuideHint::None) return Show(hint, time);
  if (other_ != hint) {
    other_ = hint;
    otherSince_ = time;
  }
  // Who has just left the picture is on the way out.
  const double wait = Opposite(hint) == GuideHint::None ? WAVERING : URGENT;
  return time - otherSince_ >= wait ? Show(hint, time) : shown_;
}

GuideHint GuideLine::Show(GuideHint hint, double time) {
  if (hint != shown_) shownSince_ = time;
  shown_ = hint;
  other_ = GuideHint::None;
  return hint;
}

}  // namespace velmora
