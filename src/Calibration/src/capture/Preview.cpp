/// A calibrator's use of the preview window.
#include "capture/Preview.h"

#include <opencv2/imgproc.hpp>

#include "Log.h"

namespace velmora {

namespace {

cv::Mat InColour(const cv::Mat& picture) {
  cv::Mat colour = picture;
  if (picture.channels() == 1) cv::cvtColor(picture, colour, cv::COLOR_GRAY2BGR);
  if (picture.channels() == 4) cv::cvtColor(picture, colour, cv::COLOR_BGRA2BGR);
  return colour;
}

}  // namespace

cv::Mat SideBySidePicture(const cv::Mat& left, const cv::Mat& right) {
  cv::Mat ofLeft = left;
  cv::Mat ofRight = right;
  if (left.size() != right.size()) cv::resize(right, ofRight, left.size());
  if (left.type() != right.type()) {
    ofLeft = InColour(left);
    ofRight = InColour(ofRight);
  }
  cv::Mat both;
  cv::hconcat(ofLeft, ofRight, both);
  return both;
}

Preview::Preview(PreviewWindow& window) : window_(window) {
}

Preview::~Preview() {
  Close();
}

void Preview::Open() {
  const std::lock_guard<std::mutex> lock(lock_);
  if (enabled_) return;
  OpenWindow();
  enabled_ = windowOpen_;
}

void Preview::Close() {
  const std::lock_guard<std::mutex> lock(lock_);
  enabled_ = false;
  CloseWindow();
}

void Preview::SourceOpened() {
  const std::lock_guard<std::mutex> lock(lock_);
  if (!enabled_) return;
  OpenWindow();
  enabled_ = windowOpen_;
}

void Preview::SourceClosed() {
  const std::lock_guard<std::mutex> lock(lock_);
  CloseWindow();
}

/// With the lock held.
void Preview::OpenWindow() {
  if (windowOpen_) return;
  std::string reason;
  windowOpen_ = window_.Open(this, reason);
  if (!windowOpen_) Log::error("Cannot open the preview. %s", reason.c_str());
}

/// With the lock held.
void Preview::CloseWindow() {
  if (!windowOpen_) return;
  windowOpen_ = false;
  window_.Close(this);
}

void Preview::Show(const cv::Mat& frame) {
  Show(frame, cv::Mat());
}

void Preview::Show(const cv::Mat& frame, const cv::Mat& right) {
  if (!enabled_ || frame.empty()) return;
  const cv::Mat picture = right.empty() ? frame.clone() : SideBySidePicture(frame, right);
  const std::lock_guard<std::mutex> lock(lock_);
  if (!enabled_) return;
  OpenWindow();  // it is gone when a source was closed since
  enabled_ = windowOpen_;
  window_.Show(this, picture);
}

}  // namespace velmora
