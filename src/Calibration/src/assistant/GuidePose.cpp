/// Where the sheet is as the guide sees it, and how that differs from a target.
#include "assistant/GuidePose.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "finder/Homography.h"
#include "model/TargetGeometry.h"

namespace velmora {

namespace {

/// Focal length of the nominal camera, in widths of the frame: a field of view of 60 degrees.
constexpr double FOCAL_LENGTH = 0.866;

/// The distance of centres at which CalibAssistant takes a pose of 44 circles, in pixels of a frame of 640 x
/// 480 that the grid fills: its score is less than 150 there, the root of the sum of all squares.
const double ASSISTANT_REACH = 150.0 / std::sqrt(44.0);
/// The guide takes a view from a little farther, and lets go of it farther still, so that it does not waver.
constexpr double TAKE = 1.15;
constexpr double LEAVE = 1.35;
/// A target that this lens cannot show as it was drawn is reached where all that moving the sheet could
/// change is within this share of the reach, and the rest, which is the lens's, within so much of it.
constexpr double NEAREST = 0.6;
constexpr double LENS = 2.0;

cv::Matx33d RotationAboutX(double angle) {
  return RotationOf({angle, 0.0, 0.0});
}

cv::Matx33d RotationAboutY(double angle) {
  return RotationOf({0.0, angle, 0.0});
}

/// How far the normal that leads away behind the sheet leans to the right and down, radians: a rotation about
/// the vertical axis changes the first alone, one about the horizontal axis the second.
cv::Vec2d LeanOf(const GuidePose& pose) {
  const cv::Matx33d& R = pose.camera_from_grid.R;
  return {std::asin(std::min(1.0, std::max(-1.0, R(0, 2)))),
          std::asin(std::min(1.0, std::max(-1.0, R(1, 2))))};
}

/// See CalibAssistant::CheckValidity. The turned rectangle may name its sides either way: the way of the
/// wider reach counts.
double ReachOf(const std::vector<cv::Point2d>& centres, const cv::Size& frame) {
  const std::vector<cv::Point2f> points(centres.begin(), centres.end());
  const cv::Size2f extent = cv::minAreaRect(points).size;
  const double scale = std::min(frame.width / 640.0, frame.height / 480.0);
  const auto share = [&frame](double width, double height) {
    return (frame.width / width + frame.height / height) / 2.0;
  };
  const double weight =
      std::min(share(static_cast<double>(extent.width), static_cast<double>(extent.height)),
               share(static_cast<double>(extent.height), static_cast<double>(extent.width)));
  return ASSISTANT_REACH * scale / std::sqrt(weight);
}

/// The nearest rotation to one whose first two columns have these directions.
cv::Matx33d NearestRotation(const cv::Vec3d& x, const cv::Vec3d& y) {
  const cv::Vec3d z = x.cross(y);
  const cv::Matx33d near(x[0], y[0], z[0], x[1], y[1], z[1], x[2], y[2], z[2]);
  cv::Matx31d values;
  cv::Matx33d left;
  cv::Matx33d right;
  cv::SVD::compute(near, values, left, right);
  return left * right;
}

/// The points, brought into another form about a middle and moved.
std::vector<cv::Point2d> Mapped(const std::vector<cv::Point2d>& points, const cv::Point2d& middle,
                                const cv::Matx22d& form, const cv::Point2d& way) {
  std::vector<cv::Point2d> mapped;
  mapped.reserve(points.size());
  for (const cv::Point2d& point : points) {
    const cv::Vec2d from = form * cv::Vec2d(point.x - middle.x, point.y - middle.y);
    mapped.push_back(middle + way + cv::Point2d(from[0], from[1]));
  }
  return mapped;
}

double WithinHalfATurn(double angle) {
  return std::remainder(angle, 2.0 * CV_PI);
}

}  // namespace

cv::Point2d MeanOf(const std::vector<cv::Point2d>& points) {
  cv::Point2d sum;
  for (const cv::Point2d& point : points) sum += point;
  return sum / static_cast<double>(points.size());
}

double SpreadOf(const std::vector<cv::Point2d>& points) {
  return RmsDistance(points, std::vector<cv::Point2d>(points.size(), MeanOf(points)));
}

double RmsDistance(const std::vector<cv::Point2d>& a, const std::vector<cv::Point2d>& b) {
  double sum = 0.0;
  for (size_t i = 0; i < a.size(); ++i) sum += (a[i] - b[i]).ddot(a[i] - b[i]);
  return std::sqrt(sum / static_cast<double>(a.size()));
}

double MarginOf(const std::vector<cv::Point2d>& points, const cv::Size& frame) {
  double least = std::max(frame.width, frame.height);
  for (const cv::Point2d& point : points)
    least = std::min({least, point.x, point.y, frame.width - 1.0 - point.x, frame.height - 1.0 - point.y});
  return least;
}

// ---- GuideView.

GuideView::GuideView(const cv::Size& grid, const cv::Size& frame)
    : grid_(grid), frame_(frame), focal_(FOCAL_LENGTH * std::max(frame.width, frame.height)) {
  for (const cv::Point3d& point : MakeObjectTemplate(grid, 1.0F)) points_.emplace_back(point.x, point.y);
  const cv::Point2d middle = MeanOf(points_);
  for (cv::Point2d& point : points_) point -= middle;
}

std::optional<GuidePose> GuideView::PoseOf(const std::vector<cv::Point2d>& centres) const {
  cv::Matx33d H;
  if (!finder::FitHomography(points_, centres, H)) return std::nullopt;
  // The last element is 1: the middle of the grid is at the homography's last column. Seen from the front,
  // the sheet's axes turn the same way as the frame's, and all of it is before the camera.
  const cv::Matx22d J(H(0, 0) - H(0, 2) * H(2, 0), H(0, 1) - H(0, 2) * H(2, 1), H(1, 0) - H(1, 2) * H(2, 0),
                      H(1, 1) - H(1, 2) * H(2, 1));
  if (cv::determinant(J) <= 0.0) return std::nullopt;
  for (const cv::Point2d& point : points_) {
    if (H(2, 0) * point.x + H(2, 1) * point.y + 1.0 <= 0.0) return std::nullopt;
  }
  const cv::Matx33d inverseK(1.0 / focal_, 0.0, -0.5 * frame_.width / focal_, 0.0, 1.0 / focal_,
                             -0.5 * frame_.height / focal_, 0.0, 0.0, 1.0);
  const cv::Matx33d columns = inverseK * H;
  const cv::Vec3d x(columns(0, 0), columns(1, 0), columns(2, 0));
  const cv::Vec3d y(columns(0, 1), columns(1, 1), columns(2, 1));
  const double scale = 1.0 / std::sqrt(cv::norm(x) * cv::norm(y));
  GuidePose pose;
  pose.middle = {H(0, 2), H(1, 2)};
  pose.roll = std::atan2(J(1, 0) - J(0, 1), J(0, 0) + J(1, 1));
  pose.camera_from_grid.R = NearestRotation(scale * x, scale * y);
  pose.camera_from_grid.t = scale * cv::Vec3d(columns(0, 2), columns(1, 2), columns(2, 2));
  return pose;
}

std::vector<cv::Point2d> GuideView::Project(const RigidTransform& camera_from_grid) const {
  // A sheet that is turned into the camera's plane has no picture; it is far from every target.
  constexpr double NEAREST_DEPTH = 0.1;
  std::vector<cv::Point2d> pixels;
  pixels.reserve(points_.size());
  for (const cv::Point2d& point : points_) {
    const cv::Vec3d p = camera_from_grid * cv::Point3d(point.x, point.y, 0.0);
    const double depth = std::max(p[2], NEAREST_DEPTH * camera_from_grid.t[2]);
    pixels.emplace_back(focal_ * p[0] / depth + 0.5 * frame_.width,
                        focal_ * p[1] / depth + 0.5 * frame_.height);
  }
  return pixels;
}

// ---- GuideTarget.

GuideTarget::GuideTarget(const GuideView& view, const std::vector<cv::Point2d>& centres) : centres_(centres) {
  const auto wrong = [](const std::string& fault) { throw std::invalid_argument("a target " + fault); };
  if (centres.size() != static_cast<size_t>(view.Grid().area())) {
    wrong("has " + std::to_string(centres.size()) + " circles, and the grid " +
          std::to_string(view.Grid().area()));
  }
  if (!cv::checkRange(cv::Mat(centres_))) wrong("has centres that are not finite");
  const std::optional<GuidePose> pose = view.PoseOf(centres);
  if (!pose) wrong("is no picture of the grid");
  pose_ = *pose;
  projections_ = view.Project(pose_.camera_from_grid);
  reach_ = ReachOf(centres, view.Frame());
  spread_ = SpreadOf(centres);
  // About half the way between rows, but less than the target has itself.
  constexpr double ROOM = 0.14;
  margin_ = std::min(ROOM * spread_, 0.8 * MarginOf(centres, view.Frame()));
}

double GuideTarget::DistanceOf(const std::vector<cv::Point2d>& centres) const {
  return RmsDistance(centres_, centres);
}

bool GuideTarget::IsReachedBy(const GuideView& view, const std::vector<cv::Point2d>& centres,
                              const GuidePose& pose, bool leave) const {
  const double more = leave ? LEAVE / TAKE : 1.0;
  const double distance = DistanceOf(centres);
  if (distance < TAKE * more * reach_) return true;
  return distance < LENS * more * reach_ &&
         RmsDistance(projections_, view.Project(pose.camera_from_grid)) < NEAREST * more * reach_;
}

double GuideTarget::TurnFrom(const GuidePose& pose) const {
  return WithinHalfATurn(pose_.roll - pose.roll);
}

std::array<GuideDifference, 6> GuideTarget::DifferencesOf(const GuideView& view,
                                                          const std::vector<cv::Point2d>& centres,
                                                          const GuidePose& pose) const {
  const cv::Point2d way = pose_.middle - pose.middle;
  const double size = pose_.camera_from_grid.t[2] / pose.camera_from_grid.t[2];  // of what is found
  const double turn = TurnFrom(pose);
  const cv::Vec2d lean = LeanOf(pose_) - LeanOf(pose);
  // A grid that is too near to an edge already is not led out by what keeps it there.
  const double room = std::min(margin_, MarginOf(centres, view.Frame()) - 0.5);
  const auto one = [&](double signedWay, GuideHint more, GuideHint less, double distance,
                       const std::vector<cv::Point2d>& then) {
    return GuideDifference{signedWay > 0.0 ? more : less, distance, MarginOf(then, view.Frame()) < room};
  };
  const auto moved = [&](const cv::Point2d& by) {
    return Mapped(centres, pose.middle, cv::Matx22d::eye(), by);
  };
  const auto formed = [&](const cv::Matx22d& form) { return Mapped(centres, pose.middle, form, {}); };
  const auto tilted = [&](const RigidTransform& from, const cv::Matx33d& rotation) {
    return view.Project({rotation * from.R, from.t});
  };
  // What a tilt is worth is seen on the target, tilted as the sheet is.
  const auto tilt = [&](double angle, GuideHint more, GuideHint less, const cv::Matx33d& rotation) {
    return one(angle, more, less, RmsDistance(projections_, tilted(pose_.camera_from_grid, rotation.t())),
               tilted(pose.camera_from_grid, rotation));
  };
  return {one(way.x, GuideHint::Right, GuideHint::Left, std::abs(way.x), moved({way.x, 0.0})),
          one(way.y, GuideHint::Down, GuideHint::Up, std::abs(way.y), moved({0.0, way.y})),
          one(1.0 - size, GuideHint::Closer, GuideHint::Farther, spread_ * std::abs(1.0 - size),
              formed(cv::Matx22d::eye() * (1.0 / size))),
          one(turn, GuideHint::Clockwise, GuideHint::Anticlockwise,
              2.0 * spread_ * std::sin(std::abs(turn) / 2.0),
              formed({std::cos(turn), -std::sin(turn), std::sin(turn), std::cos(turn)})),
          tilt(lean[0], GuideHint::LeftEdgeAway, GuideHint::RightEdgeAway, RotationAboutY(lean[0])),
          tilt(lean[1], GuideHint::TopEdgeAway, GuideHint::BottomEdgeAway, RotationAboutX(-lean[1]))};
}

}  // namespace velmora
