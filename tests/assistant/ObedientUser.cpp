/// Somebody who holds the sheet and does what the guide says, and nothing else: with blind hands.
#include "assistant/ObedientUser.h"

#include <opencv2/calib3d.hpp>

#include "Placement.h"

namespace unit {

using velmora::GuideAnswer;
using velmora::GuideHint;

namespace {

constexpr double SPEED = 0.2;           ///< metres per second far from the target
constexpr double ROTATION_SPEED = 0.8;  ///< radians per second, likewise
constexpr double SLOWEST = 0.15;        ///< share of these speeds near the target
constexpr double MOST_CARE = 0.2;       ///< share of them for who was sent back and forth
constexpr double COURAGE = 0.3;         ///< by which that grows per second of going on
constexpr size_t REACTION = 5;          ///< frames
constexpr double MOST_OBLIQUE = 65.0;   ///< degrees at which a search finds the grid

cv::Vec3d MiddleOf(const world::Pose& pose, const world::Sheet& sheet) {
  const cv::Point3d middle = world::ToCamera({sheet.GridMiddle()}, pose).front();
  return {middle.x, middle.y, middle.z};
}

}  // namespace

world::Pose Displaced(const world::Pose& pose, const world::Sheet& sheet, const cv::Vec3d& rotation,
                      const cv::Vec3d& way) {
  const cv::Vec3d middle = MiddleOf(pose, sheet);
  cv::Matx33d before;
  cv::Matx33d step;
  cv::Rodrigues(pose.rvec, before);
  cv::Rodrigues(rotation, step);
  world::Pose after;
  cv::Rodrigues(step * before, after.rvec);
  after.tvec = step * (pose.tvec - middle) + middle + way;
  return after;
}

velmora::GuideFrame ObedientUser::Show(double time) const {
  velmora::GuideFrame frame;
  frame.time = time;
  if (!world::FacesCamera(pose_) || world::Obliqueness(sheet_, pose_) > MOST_OBLIQUE) {
    frame.whyNotFound = "nothing like the grid in sight";
  } else if (!world::DiscsInside(camera_, sheet_, pose_)) {
    frame.whyNotFound = "part of the grid is outside the picture";
  } else {
    frame.centres = world::TrueCentres(camera_.lens, sheet_, pose_);
  }
  return frame;
}

void ObedientUser::Obey(const GuideAnswer& answer, double seconds) {
  read_.push_back(answer);
  if (read_.size() <= REACTION) return;
  Move(read_.front(), seconds);
  read_.pop_front();
}

void ObedientUser::Move(const GuideAnswer& answer, double seconds) {
  if (answer.state != velmora::GuideState::NotFound) closeness_ = answer.closeness;
  double& care = care_.emplace(answer.hint, 1.0).first->second;
  if (answer.hint != last_) {
    // There again: he went too far before.
    care = std::max(MOST_CARE, 0.7 * care);
    last_ = answer.hint;
  } else {
    care = std::min(1.0, care + COURAGE * seconds);
  }
  const double share = care * std::max(SLOWEST, 1.0 - closeness_) * seconds;
  const double way = SPEED * share;
  const double angle = ROTATION_SPEED * share;
  const double right = mirrored_ ? -1.0 : 1.0;
  switch (answer.hint) {
    case GuideHint::Left:
    case GuideHint::Right:
      pose_.tvec[0] += way * (answer.hint == GuideHint::Right ? right : -right);
      break;
    case GuideHint::Up:
    case GuideHint::Down:
      pose_.tvec[1] += answer.hint == GuideHint::Down ? way : -way;
      break;
    case GuideHint::Closer:
    case GuideHint::Farther:
      pose_.tvec[2] += answer.hint == GuideHint::Farther ? way : -way;
      break;
    case GuideHint::Clockwise:
    case GuideHint::Anticlockwise:
      Rotate({0.0, 0.0, angle * (answer.hint == GuideHint::Clockwise ? right : -right)});
      break;
    case GuideHint::TurnRound:
      Rotate({0.0, 0.0, angle});
      break;
    case GuideHint::LeftEdgeAway:
    case GuideHint::RightEdgeAway:
      Rotate({0.0, angle * (answer.hint == GuideHint::LeftEdgeAway ? right : -right), 0.0});
      break;
    case GuideHint::TopEdgeAway:
    case GuideHint::BottomEdgeAway:
      Rotate({answer.hint == GuideHint::TopEdgeAway ? -angle : angle, 0.0, 0.0});
      break;
    case GuideHint::PartOutside: {
      const cv::Vec3d middle = MiddleOf(pose_, sheet_);
      const cv::Vec3d aside(middle[0], middle[1], 0.0);
      const double off = cv::norm(aside);
      pose_.tvec += off > way ? cv::Vec3d(-way / off * aside) : cv::Vec3d(0.0, 0.0, way);
      break;
    }
    default:
      break;
  }
}

void ObedientUser::Rotate(const cv::Vec3d& rotation) {
  pose_ = Displaced(pose_, sheet_, rotation);
}

}  // namespace unit
