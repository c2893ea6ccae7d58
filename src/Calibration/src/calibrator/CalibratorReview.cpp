/// The calibrator's review of a computation in a window.
#include <opencv2/highgui.hpp>
#include <vector>

#include "Calibrator.h"
#include "Display.h"
#include "Log.h"
#include "imaging/Review.h"

using namespace velmora;

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

}  // namespace

void Calibrator::WatchReprojection() {
  if (kind_ != MONOCULAR) return;
  Records records;
  Results results;
  {
    const std::lock_guard<std::mutex> data(dataLock_);
    if (GetStatus() == STATUS_PROGRESS) return;
    records = records_;
    results = results_;
  }
  std::string reason;
  if (!DisplayAvailable(&reason)) {
    Log::error("Cannot show the reprojection. %s", reason.c_str());
    return;
  }

  const char* const window = "Reprojected frame";
  const int total = static_cast<int>(records.snapshots.size());
  OpenPictureWindow(window, {frameWidth_, frameHeight_});
  for (int i = 0; i < total; ++i) {
    const auto index = static_cast<size_t>(i);
    const ReviewView view = {records.snapshots[index],
                             {frameWidth_, frameHeight_},
                             i + 1,
                             total,
                             records.objectRecords[index],
                             patternSize_};
    // Snapshots added after the computation, or all without one, have no row in its results.
    ReviewResult result;
    const bool computed = i < results.perViewErrors.rows;
    if (computed) {
      result = {results.K,
                results.D,
                results.rvecs.at<cv::Vec3d>(i),
                results.tvecs.at<cv::Vec3d>(i),
                results.perViewErrors.at<double>(i),
                results.rms};
    }
    cv::imshow(window, DrawReview(view, computed ? &result : nullptr));
    if (!AwaitKey(window)) break;
  }
  Destroy(window);
}
