/// A smooth path of the sheet through key poses, for videos.
#pragma once

#include <functional>
#include <vector>

#include "Camera.h"

namespace world {

/// Key poses at equal intervals from time 0 to `seconds`. Between two keys the sheet speeds up and slows down
/// again; at the keys it stands still.
class Trajectory {
 public:
  /// Throws std::invalid_argument without keys or for a duration that is not positive.
  Trajectory(std::vector<Pose> keys, double seconds);

  /// The pose at a time; before the start the first key, after the end the last one.
  Pose At(double seconds) const;

  double Seconds() const { return seconds_; }
  std::size_t Keys() const { return keys_.size(); }
  /// When the sheet stands still at a key.
  double TimeOf(std::size_t key) const;

 private:
  std::vector<Pose> keys_;
  double seconds_;
};

/// The views one after the other, with a stretch outside the image, at the pose that `away` gives for the
/// view before, after every `awayEvery` of them (0: never). The path ends as it starts: with the sheet in the
/// image.
Trajectory ThroughViews(const std::vector<Pose>& views, double seconds, int awayEvery,
                        const std::function<Pose(const Pose&)>& away);

/// A trajectory through views with the camera's AwayPose between them.
Trajectory ThroughViews(const Camera& camera, const Sheet& sheet, const std::vector<Pose>& views,
                        double seconds, int awayEvery = 0);

}  // namespace world
