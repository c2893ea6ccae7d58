/// Somebody who holds the sheet and does what the guide says, and nothing else: with blind hands.
#pragma once

#include <deque>
#include <map>

#include "Camera.h"
#include "Sheet.h"
#include "velmora/Guide.h"

namespace unit {

/// Moves the sheet at a speed that falls as the bar grows, after a time of reaction, and knows no target. Who
/// is sent back moves with more care.
class ObedientUser {
 public:
  /// Who sees a mirrored picture goes by its sides.
  ObedientUser(const world::Camera& camera, const world::Sheet& sheet, const world::Pose& start,
               bool mirrored = false)
      : camera_(camera), sheet_(sheet), pose_(start), mirrored_(mirrored) {}

  /// What the camera shows now: the true centres, if all discs are in the image and seen from the front.
  velmora::GuideFrame Show(double time) const;
  /// Goes on for that time after having read the answer.
  void Obey(const velmora::GuideAnswer& answer, double seconds);

  const world::Pose& Pose() const { return pose_; }

 private:
  void Move(const velmora::GuideAnswer& answer, double seconds);
  void Rotate(const cv::Vec3d& rotation);

  world::Camera camera_;
  world::Sheet sheet_;
  world::Pose pose_;
  bool mirrored_;
  velmora::GuideHint last_ = velmora::GuideHint::None;  ///< that was obeyed
  std::map<velmora::GuideHint, double> care_;           ///< 1: none
  double closeness_ = 0.0;                              ///< when the grid was seen last
  std::deque<velmora::GuideAnswer> read_;               ///< not obeyed yet
};

/// The pose with the sheet rotated about its middle, about the axes of the camera (radians), and then moved.
world::Pose Displaced(const world::Pose& pose, const world::Sheet& sheet, const cv::Vec3d& rotation,
                      const cv::Vec3d& way = {});

}  // namespace unit
