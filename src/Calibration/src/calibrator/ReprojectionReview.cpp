/// Shows the snapshots of a computation in a window, one after the other.
#include "calibrator/ReprojectionReview.h"

#include <opencv2/calib3d.hpp>
#include <opencv2/highgui.hpp>
#include <string>
#include <vector>

#include "Display.h"
#include "Log.h"
#include "imaging/Review.h"
#include "solver/FisheyeProjection.h"

namespace velmora {

namespace {

/// How often the window is looked after while a key is waited for, in milliseconds.
constexpr int KEY_WAIT = 50;

/// Closed by its user, that is; back-ends that cannot tell answer with a negative number.
bool IsClosed(const char* window) {
  try {
    return cv::getWindowProperty(window, cv::WND_PROP_VISIBLE) == 0.0;
  } catch (const cv::Exception&) {
    return true;  // no window is left
  }
}

/// True when a key was pressed, false when the window was closed: without one there are no keys.
bool AwaitKey(const char* window) {
  while (cv::waitKey(KEY_WAIT) < 0) {
    if (IsClosed(window)) return false;
  }
  return true;
}

void Destroy(const char* window) {
  try {
    cv::destroyWindow(window);
  } catch (const cv::Exception&) {
    // Closed by its user already.
  }
}

/// Where the result has the points of a snapshot; none where it is a fisheye that sees not all of them.
std::vector<cv::Point2d> ProjectedIn(const Snapshots::Moment& moment, int snapshot) {
  const SparseResult& camera = moment.result->camera;
  const std::vector<cv::Point3d>& points = moment.snapshots->target[static_cast<size_t>(snapshot)];
  const cv::Vec3d& rotation = camera.rvecs.at<cv::Vec3d>(snapshot);
  const cv::Vec3d& translation = camera.tvecs.at<cv::Vec3d>(snapshot);
  std::vector<cv::Point2d> projected;
  if (!moment.result->IsFisheye()) {
    cv::projectPoints(points, rotation, translation, camera.K, camera.D, projected);
    return projected;
  }
  const solver::FisheyeProjection projection(camera.solution->rig.cameras.front().intrinsics);
  cv::Matx33d R;
  cv::Rodrigues(rotation, R);
  for (const cv::Point3d& point : points) {
    projected.emplace_back();
    if (!projection.Project(R * cv::Vec3d(point) + translation, projected.back())) return {};
  }
  return projected;
}

/// What a result says of a snapshot; false of those that were added after the computation, and of all without
/// one or after one was taken out.
bool ResultOf(const Snapshots::Moment& moment, int snapshot, ReviewResult& review) {
  if (moment.result == nullptr || moment.result->removals != moment.snapshots->removals) return false;
  if (snapshot >= moment.result->camera.perViewErrors.rows) return false;
  const double error = moment.result->camera.perViewErrors.at<double>(snapshot);
  review = {ProjectedIn(moment, snapshot), error, moment.rms};
  return true;
}

}  // namespace

void ReviewReprojection(const Snapshots::Moment& moment, const cv::Size& grid, const cv::Size& imageSize) {
  std::string reason;
  if (!DisplayAvailable(&reason)) {
    Log::error("Cannot show the reprojection. %s", reason.c_str());
    return;
  }
  const char* const window = "Reprojected frame";
  const SnapshotList& snapshots = *moment.snapshots;
  const int total = static_cast<int>(snapshots.Count());
  OpenPictureWindow(window, imageSize);
  for (int i = 0; i < total; ++i) {
    const auto index = static_cast<size_t>(i);
    const SnapshotList::Camera& camera = snapshots.cameras.front();
    const ReviewView view = {camera.frames[index], imageSize, i + 1, total, grid, camera.weights[index]};
    ReviewResult result;
    const bool computed = ResultOf(moment, i, result);
    cv::imshow(window, DrawReview(view, computed ? &result : nullptr));
    if (!AwaitKey(window)) break;
  }
  Destroy(window);
}

}  // namespace velmora
