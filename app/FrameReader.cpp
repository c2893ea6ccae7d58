#include "FrameReader.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <utility>

namespace app {

namespace {

constexpr std::chrono::milliseconds RETRY_PAUSE{10};
constexpr std::chrono::milliseconds DESTRUCTION_GRACE{500};

/// One read; an exception of the capture library is a read that failed.
bool ReadOnce(const FrameReader::Source& source, cv::Mat& frame) {
  try {
    return source(frame) && !frame.empty();
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace

/// What both threads know. It outlives the reader when its thread is stuck.
struct FrameReader::Shared {
  explicit Shared(Delivery way) : delivery(way) {}

  bool FailedToStart() const { return delivery == Delivery::EveryFrame && failed && !delivered; }

  const Delivery delivery;

  mutable std::mutex lock;  ///< guards everything below
  std::condition_variable changed;
  cv::Mat frame;           ///< read and not yet taken; empty when there is none
  bool delivered = false;  ///< a frame has been read
  bool failed = false;     ///< a read has failed
  bool stopping = false;
  bool finished = false;  ///< the thread is done with its source
};

FrameReader::FrameReader(Source source, Delivery delivery)
    : shared_(std::make_shared<Shared>(delivery)), thread_(&FrameReader::Read, shared_, std::move(source)) {
}

FrameReader::~FrameReader() {
  if (!Stop(DESTRUCTION_GRACE)) {
    thread_.detach();
  }
}

void FrameReader::Read(const std::shared_ptr<Shared>& shared, Source source) {
  std::unique_lock<std::mutex> guard(shared->lock);
  while (!shared->stopping) {
    if (shared->delivery == Delivery::EveryFrame && !shared->frame.empty()) {
      shared->changed.wait(guard, [&] { return shared->stopping || shared->frame.empty(); });
      continue;
    }
    guard.unlock();
    cv::Mat frame;
    const bool read = ReadOnce(source, frame);
    guard.lock();
    if (read) {
      shared->frame = frame;
      shared->delivered = true;
      shared->changed.notify_all();
    } else {
      shared->failed = true;
      shared->changed.notify_all();
      shared->changed.wait_for(guard, RETRY_PAUSE, [&] { return shared->stopping; });
    }
  }
  guard.unlock();
  source = nullptr;
  guard.lock();
  shared->finished = true;
  shared->changed.notify_all();
}

bool FrameReader::Take(cv::Mat& frame, std::chrono::milliseconds patience) {
  std::unique_lock<std::mutex> guard(shared_->lock);
  shared_->changed.wait_for(guard, patience,
                            [&] { return !shared_->frame.empty() || shared_->FailedToStart(); });
  if (shared_->frame.empty()) {
    return false;
  }
  frame = std::exchange(shared_->frame, cv::Mat());
  shared_->changed.notify_all();
  return true;
}

bool FrameReader::FailedToStart() const {
  const std::lock_guard<std::mutex> guard(shared_->lock);
  return shared_->FailedToStart();
}

bool FrameReader::Stop(std::chrono::milliseconds grace) {
  if (!thread_.joinable()) {
    return true;
  }
  std::unique_lock<std::mutex> guard(shared_->lock);
  shared_->stopping = true;
  shared_->changed.notify_all();
  if (!shared_->changed.wait_for(guard, grace, [&] { return shared_->finished; })) {
    return false;
  }
  guard.unlock();
  thread_.join();
  return true;
}

}  // namespace app
