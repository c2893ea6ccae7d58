/// Reads frames on a thread of its own, so that a source that stalls stalls nothing else.
#include "common/FrameReader.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <utility>

namespace common {

namespace {

constexpr std::chrono::milliseconds RETRY_PAUSE{10};
constexpr std::chrono::milliseconds DESTRUCTION_GRACE{500};

/// One read; an exception of the capture library is a read that failed.
template <typename Frame>
bool ReadOnce(const std::function<bool(Frame&)>& source, Frame& frame) {
  try {
    return source(frame) && !frame.empty();
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace

/// What both threads know. It outlives the reader when its thread is stuck.
template <typename Frame>
struct BasicFrameReader<Frame>::Shared {
  explicit Shared(Delivery way) : delivery(way) {}

  bool FailedToStart() const { return delivery == Delivery::EveryFrame && failed && !delivered; }

  const Delivery delivery;

  mutable std::mutex lock;  ///< guards everything below
  std::condition_variable changed;
  Frame frame;             ///< read and not yet taken; empty when there is none
  bool delivered = false;  ///< a frame has been read
  bool failed = false;     ///< a read has failed
  bool stopping = false;
  bool finished = false;  ///< the thread is done with its source
};

template <typename Frame>
BasicFrameReader<Frame>::BasicFrameReader(Source source, Delivery delivery)
    : shared_(std::make_shared<Shared>(delivery)),
      thread_(&BasicFrameReader::Read, shared_, std::move(source)) {
}

template <typename Frame>
BasicFrameReader<Frame>::~BasicFrameReader() {
  if (!Stop(DESTRUCTION_GRACE)) thread_.detach();
}

template <typename Frame>
void BasicFrameReader<Frame>::Read(const std::shared_ptr<Shared>& shared, Source source) {
  std::unique_lock<std::mutex> guard(shared->lock);
  while (!shared->stopping) {
    if (shared->delivery == Delivery::EveryFrame && !shared->frame.empty()) {
      shared->changed.wait(guard, [&] { return shared->stopping || shared->frame.empty(); });
      continue;
    }
    guard.unlock();
    Frame frame;
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

template <typename Frame>
bool BasicFrameReader<Frame>::Take(Frame& frame, std::chrono::milliseconds patience) {
  std::unique_lock<std::mutex> guard(shared_->lock);
  shared_->changed.wait_for(guard, patience,
                            [&] { return !shared_->frame.empty() || shared_->FailedToStart(); });
  if (shared_->frame.empty()) return false;
  frame = std::exchange(shared_->frame, Frame());
  shared_->changed.notify_all();
  return true;
}

template <typename Frame>
bool BasicFrameReader<Frame>::FailedToStart() const {
  const std::lock_guard<std::mutex> guard(shared_->lock);
  return shared_->FailedToStart();
}

template <typename Frame>
bool BasicFrameReader<Frame>::Stop(std::chrono::milliseconds grace) {
  if (!thread_.joinable()) return true;
  std::unique_lock<std::mutex> guard(shared_->lock);
  shared_->stopping = true;
  shared_->changed.notify_all();
  if (!shared_->changed.wait_for(guard, grace, [&] { return shared_->finished; })) return false;
  guard.unlock();
  thread_.join();
  return true;
}

template class BasicFrameReader<cv::Mat>;
template class BasicFrameReader<FramePair>;

}  // namespace common
