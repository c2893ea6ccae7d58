/// A thread that works on the newest of the frames handed to it.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace velmora {

/// Holds one pending frame, which a newer one replaces, and a thread that takes it. All functions are
/// thread-safe, and Open, Close and Offer may be called from the body itself.
///
/// A grabber has one thread at most. When it is opened again while the thread still works on its last frame,
/// the same thread serves the new opening afterwards.
template <typename Frame>
class LatestFrameGrabber {
 public:
  /// How long an idle grabber waits for newer frames after one has arrived, so that of several pushed at once
  /// only the newest costs a detection. A busy machine adds to it, and 10 ms are to be kept.
  static constexpr std::chrono::milliseconds GATHERING{6};

  /// The body runs once for each opening, on the grabber's thread. It calls Take until that returns false,
  /// and throws nothing.
  explicit LatestFrameGrabber(std::function<void()> body) : body_(std::move(body)) {}
  ~LatestFrameGrabber() { End(); }
  LatestFrameGrabber(const LatestFrameGrabber&) = delete;
  LatestFrameGrabber& operator=(const LatestFrameGrabber&) = delete;

  /// False when it is open already, or was ended. Raises std::system_error when no thread can be started.
  bool Open() {
    const std::lock_guard<std::mutex> lock(lock_);
    if (open_ || ended_) return false;
    if (!threadLives_) {
      if (thread_.joinable()) thread_.join();  // it has released the lock for the last time
      thread_ = std::thread([this] { Live(); });
      threadLives_ = true;
    }
    open_ = true;
    ++openings_;
    return true;
  }

  /// Drops the pending frame and asks the thread to end after the one that it works on; does not wait.
  void Close() {
    const std::lock_guard<std::mutex> lock(lock_);
    CloseLocked();
  }

  /// Makes the frame the pending one; false when the grabber is not open.
  bool Offer(const Frame& frame, int tag) {
    const std::lock_guard<std::mutex> lock(lock_);
    if (!open_) return false;
    if (!pending_) pendingSince_ = std::chrono::steady_clock::now();
    pending_ = true;
    frame_ = frame;
    tag_ = tag;
    changed_.notify_all();
    return true;
  }

  /// Waits for a pending frame and takes it; false when this opening is over. For the body only.
  bool Take(Frame& frame, int& tag) {
    std::unique_lock<std::mutex> lock(lock_);
    changed_.wait(lock, [this] { return pending_ || IsOver(); });
    changed_.wait_until(lock, pendingSince_ + GATHERING, [this] { return IsOver(); });
    if (IsOver()) return false;
    frame = std::exchange(frame_, Frame());
    tag = tag_;
    pending_ = false;
    return true;
  }

  /// True on the thread that runs the body.
  bool RunsHere() const { return bodyThread_ == std::this_thread::get_id(); }

  /// Closes, not to be opened again, and waits for the thread's end, as others do who call it meanwhile. Not
  /// to be called from the body.
  void End() {
    {
      const std::lock_guard<std::mutex> lock(lock_);
      CloseLocked();
      ended_ = true;
    }
    const std::lock_guard<std::mutex> joining(joinLock_);
    if (thread_.joinable()) thread_.join();
  }

 private:
  void CloseLocked() {
    open_ = false;
    pending_ = false;
    frame_ = Frame();
    changed_.notify_all();
  }

  /// True when the opening that the thread serves was closed, whether or not another one followed.
  bool IsOver() const { return !open_ || served_ != openings_; }

  void Live() {
    std::unique_lock<std::mutex> lock(lock_);
    while (served_ != openings_) {
      ++served_;
      lock.unlock();
      bodyThread_ = std::this_thread::get_id();
      body_();
      bodyThread_ = std::thread::id();
      lock.lock();
    }
    threadLives_ = false;
  }

  const std::function<void()> body_;
  std::atomic<std::thread::id> bodyThread_{};
  std::mutex joinLock_;  ///< one End at a time joins the thread; the body never takes it
  std::mutex lock_;      ///< guards all that follows, but for joining the thread
  std::condition_variable changed_;
  bool open_ = false;
  bool ended_ = false;
  bool threadLives_ = false;
  unsigned openings_ = 0;
  unsigned served_ = 0;
  bool pending_ = false;
  std::chrono::steady_clock::time_point pendingSince_;
  Frame frame_{};
  int tag_ = 0;
  std::thread thread_;
};

}  // namespace velmora
