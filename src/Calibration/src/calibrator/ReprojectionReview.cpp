/// Shows the snapshots of a computation in a window, one after the other.
#include "calibrator/ReprojectionReview.h"

#include <opencv2/highgui.hpp>
#include <string>

#include "Display.h"
#include "Log.h"
#include "imaging/Review.h"

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

/// What a result says of a snapshot; false of those that were added after the computation, or of all without
/// one.
bool ResultOf(const Snapshots::Moment& moment, int snapshot, ReviewResult& review) {
  if (moment.result == nullptr || snapshot >= moment.result->camera.perViewErrors.rows) return false;
  const SparseResult& camera = moment.result->camera;
  review = {camera.K,
            camera.D,
            camera.rvecs.at<cv::Vec3d>(snapshot),
            camera.tvecs.at<cv::Vec3d>(snapshot),
            camera.perViewErrors.at<double>(snapshot),
            moment.rms};
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
    const ReviewView view = {camera.frames[index], imageSize, i + 1, total, snapshots.target[index], grid,
                             camera.weights[index]};
    ReviewResult result;
    const bool computed = ResultOf(moment, i, result);
    cv::imshow(window, DrawReview(view, computed ? &result : nullptr));
    if (!AwaitKey(window)) break;
  }
  Destroy(window);
}

}  // namespace velmora
