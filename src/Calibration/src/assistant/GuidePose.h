/// Where the sheet is as the guide sees it, and how that differs from a target.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "model/RigidTransform.h"
#include "velmora/Guide.h"

namespace velmora {

/// The sheet before a nominal camera: one of 60 degrees without distortion. The user's camera is not known
/// yet, and need not be: the same centres always give the same pose, so that a pose that does not differ from
/// the target's shows the sheet at the target, whatever the lens.
struct GuidePose {
  cv::Point2d middle;               ///< of the grid, pixels
  double roll = 0.0;                ///< of the grid in the picture, radians, clockwise
  RigidTransform camera_from_grid;  ///< steps between rows, from the grid's middle
};

/// The grid's points and the nominal camera.
class GuideView {
 public:
  GuideView(const cv::Size& grid, const cv::Size& frame);

  /// The pose for which the grid's points are nearest to those pixels; none for points that are no picture of
  /// the grid's front.
  std::optional<GuidePose> PoseOf(const std::vector<cv::Point2d>& centres) const;

  /// The pixels in which the nominal camera sees the grid's points.
  std::vector<cv::Point2d> Project(const RigidTransform& camera_from_grid) const;

  const cv::Size& Grid() const { return grid_; }
  const cv::Size& Frame() const { return frame_; }

 private:
  cv::Size grid_;
  cv::Size frame_;
  double focal_;
  std::vector<cv::Point2d> points_;  ///< of the grid, steps, around their middle
};

/// One of the ways in which the sheet is not where it should be.
struct GuideDifference {
  GuideHint hint = GuideHint::None;  ///< what lessens it, in the frame as it is, not mirrored
  double distance = 0.0;             ///< root mean square of the way of the centres that it is worth, pixels
  /// Whether the grid would leave the picture if this was all that was done: something else comes first.
  bool leadsOut = false;
};

/// A pose to reach.
class GuideTarget {
 public:
  /// Throws std::invalid_argument for centres that are no picture of the grid.
  GuideTarget(const GuideView& view, const std::vector<cv::Point2d>& centres);

  const std::vector<cv::Point2d>& Centres() const { return centres_; }
  /// The distance at which CalibAssistant takes a view for the pose, pixels.
  double Reach() const { return reach_; }
  /// Root mean square of the distances of centres from the target's, pixels.
  double DistanceOf(const std::vector<cv::Point2d>& centres) const;
  /// Whether the view is at the target. `leave` is for one that was there: it may be a little farther.
  bool IsReachedBy(const GuideView& view, const std::vector<cv::Point2d>& centres, const GuidePose& pose,
                   bool leave = false) const;
  /// What there is to change, one difference for each way to move the sheet.
  std::array<GuideDifference, 6> DifferencesOf(const GuideView& view, const std::vector<cv::Point2d>& centres,
                                               const GuidePose& pose) const;
  /// How much the sheet is turned in the picture, radians, -pi to pi, clockwise from the view to the target.
  double TurnFrom(const GuidePose& pose) const;

 private:
  std::vector<cv::Point2d> centres_;
  GuidePose pose_;
  std::vector<cv::Point2d> projections_;  ///< in the nominal camera
  double reach_ = 0.0;
  double spread_ = 0.0;  ///< root mean square of the centres' distances from their mean, pixels
  double margin_ = 0.0;  ///< that the grid needs in the picture, around the centres, pixels
};

/// The mean of the points.
cv::Point2d MeanOf(const std::vector<cv::Point2d>& points);
/// Root mean square of the points' distances from their mean.
double SpreadOf(const std::vector<cv::Point2d>& points);
/// Pixels between the frame's edge and the point that is nearest to it; negative for one outside.
double MarginOf(const std::vector<cv::Point2d>& points, const cv::Size& frame);
/// Root mean square of the distances between points of the same number.
double RmsDistance(const std::vector<cv::Point2d>& a, const std::vector<cv::Point2d>& b);

}  // namespace velmora
