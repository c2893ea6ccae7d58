/// Frames of a sheet that moves before a camera, and the search that follows it.
#include "finder/Sequences.h"

#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "Views.h"
#include "finder/NearbyGrid.h"

using namespace velmora;

namespace unit {

namespace {

const cv::Size PATTERN(4, 11);

cv::Mat Grey(const cv::Mat& frame, bool light) {
  cv::Mat grey = frame;
  if (frame.channels() == 3) cv::cvtColor(frame, grey, cv::COLOR_BGR2GRAY);
  return light ? cv::Mat(255 - grey) : grey;
}

}  // namespace

FollowedFrames Follow(int count, const std::function<cv::Mat(int)>& frame) {
  FollowedFrames all;
  GridTracker tracker;
  for (int k = 0; k < count; ++k) {
    const cv::Mat image = frame(k);
    finder::LabelledDiscs nearby;
    const std::vector<finder::ExpectedGrid> expected = tracker.Expected(image.size(), PATTERN);
    if (!expected.empty() && FindNearby(Grey(image, tracker.ExpectsLight()), expected, nearby)) {
      ++all.followed;
    }
    const GridFinding tracked = SearchGridRobust(image, PATTERN, tracker);
    const GridFinding whole = SearchGridRobust(image, PATTERN);
    ++all.frames;
    if (whole.Found()) ++all.found;
    if (tracked.fault != whole.fault) ++all.otherFaults;
    if (!tracked.Found() || !whole.Found()) continue;
    for (size_t disc = 0; disc < whole.centres.size(); ++disc) {
      all.farthest = std::max(all.farthest, cv::norm(tracked.centres[disc] - whole.centres[disc]));
    }
  }
  return all;
}

world::Pose MovingSheet::PoseAt(double share) const {
  const double angle = 2.0 * CV_PI * share;
  world::Appearance appearance;
  appearance.x = 0.7 * std::cos(angle);
  appearance.y = 0.7 * std::sin(angle);
  appearance.span = 0.6 + 0.15 * std::sin(2.0 * angle);
  appearance.tiltX = 30.0 * std::sin(angle);
  appearance.tiltY = 25.0 * std::cos(3.0 * angle);
  appearance.roll = 25.0 * std::sin(2.0 * angle);
  world::Pose pose;
  if (!world::PlaceGrid(scene_.camera, scene_.sheet, appearance, 3.0, pose)) {
    throw std::runtime_error("the sheet does not fit into the image");
  }
  return pose;
}

}  // namespace unit
