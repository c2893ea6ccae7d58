/// How the grid moved in the last frames.
#include "assistant/GuideMotion.h"

#include <algorithm>

#include "assistant/GuidePose.h"

namespace velmora {

namespace {

/// How long the grid must have been where it is, seconds.
constexpr double STILL_TIME = 0.3;
/// Frames that are further apart do not tell what was between them.
constexpr double LONGEST_GAP = 1.0;
/// How far it may drift in that time, in sides of the frame: hands hold an A4 sheet to a few millimetres a
/// second. A sensor that is read row by row within a thirtieth of a second then skews the grid by 0.3 px in a
/// frame of 640 x 480, most of which is like a slightly different pose.
constexpr double DRIFT = 0.005;
/// How far from one frame to the next, likewise: a trembling hand jerks by half of that.
constexpr double JERK = 0.0028;
/// Frames that follow each other so fast are neighbours; of slower ones the drift decides.
constexpr double NEIGHBOURS = 0.12;

}  // namespace

void GuideMotion::Add(double time, const std::vector<cv::Point2d>& centres) {
  if (!past_.empty() && time < past_.back().time) past_.clear();
  if (!past_.empty() && time == past_.back().time) past_.pop_back();
  past_.push_back({time, centres});
  while (past_.front().time < time - STILL_TIME - LONGEST_GAP) past_.pop_front();
}

const std::vector<cv::Point2d>* GuideMotion::Last(double time) const {
  constexpr double LONG_AGO = 2.0;
  return past_.empty() || past_.back().time < time - LONG_AGO ? nullptr : &past_.back().centres;
}

bool GuideMotion::IsMoving(double time, const std::vector<cv::Point2d>& centres) const {
  const auto before =
      std::find_if(past_.rbegin(), past_.rend(), [time](const Moment& m) { return m.time < time; });
  if (before == past_.rend() || time - before->time > LONGEST_GAP) return false;
  const double limit = time - before->time < NEIGHBOURS ? JERK : DRIFT;
  return RmsDistance(before->centres, centres) > limit * side_;
}

bool GuideMotion::IsStill(double time, const std::vector<cv::Point2d>& centres) const {
  if (IsMoving(time, centres)) return false;
  double next = time;
  for (auto moment = past_.rbegin(); moment != past_.rend(); ++moment) {
    if (moment->time >= time) continue;
    if (next - moment->time > LONGEST_GAP) return false;
    if (RmsDistance(moment->centres, centres) > DRIFT * side_) return false;
    // Clocks of frames are rounded.
    if (moment->time <= time - STILL_TIME + 1e-3) return true;
    next = moment->time;
  }
  return false;
}

}  // namespace velmora
