/// A camera that may be unplugged and plugged in again.
#include "guided/ReopeningCapture.h"

namespace guided {

namespace {

/// A camera that is there may miss some frames.
constexpr std::chrono::seconds FAILING_PATIENCE{3};
constexpr std::chrono::seconds BETWEEN_ATTEMPTS{1};

}  // namespace

ReopeningCapture::ReopeningCapture(NewCapture newCapture, CameraCare care, Clock clock)
    : newCapture_(std::move(newCapture)),
      care_(std::move(care)),
      clock_(std::move(clock)),
      capture_(newCapture_()) {
}

bool ReopeningCapture::Open(const common::CaptureRequest& request) {
  request_ = request;
  set_.clear();
  tryAt_.reset();
  return open_ = capture_->Open(request);
}

void ReopeningCapture::Set(int property, double value) {
  set_.emplace_back(property, value);
  capture_->Set(property, value);
}

bool ReopeningCapture::TryRead(cv::Mat& frame) {
  try {
    return open_ && capture_->Read(frame) && !frame.empty();
  } catch (const std::exception&) {
    return false;
  }
}

bool ReopeningCapture::Read(cv::Mat& frame) {
  if (TryRead(frame)) {
    tryAt_.reset();
    return true;
  }
  if (const int* camera = std::get_if<int>(&request_.address)) Recover(*camera);
  return false;
}

void ReopeningCapture::Recover(int camera) {
  const bool present = care_.present(camera);
  care_.tellGone(request_.name, !present);
  const Moment now = clock_();
  if (!present) {
    if (open_) capture_ = newCapture_();
    open_ = false;
    tryAt_ = now;
    return;
  }
  if (!tryAt_) tryAt_ = now + FAILING_PATIENCE;
  if (now < *tryAt_) return;
  tryAt_ = now + (Reopen() ? FAILING_PATIENCE : BETWEEN_ATTEMPTS);
  if (open_) care_.reopened(camera);
}

bool ReopeningCapture::Reopen() {
  capture_ = newCapture_();
  open_ = capture_->Open(request_);
  if (!open_) return false;
  for (const auto& [property, value] : set_) capture_->Set(property, value);
  return true;
}

}  // namespace guided
