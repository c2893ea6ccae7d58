/// A listener for tests: it keeps what it gets and can be held up in the middle of a call.
#pragma once

#include <chrono>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <thread>
#include <vector>

#include "Calibrator.h"

namespace unit {

/// What a listener was called with.
struct Delivered {
  std::vector<unsigned char> jpeg;
  std::string status;
  std::thread::id thread;

  cv::Mat Image() const { return cv::imdecode(jpeg, cv::IMREAD_COLOR); }
  /// The mean of the first channel in steps of ten (encoding shifts it a little): tells plain images apart.
  int Level() const { return 10 * static_cast<int>(std::lround(cv::mean(Image())[0] / 10.0)); }
};

class Audience {
 public:
  Calibrator::FrameListener Listener() {
    return [this](const std::vector<unsigned char>& jpeg, const std::string& status) {
      Receive({jpeg, status, std::this_thread::get_id()});
    };
  }

  /// The next call does not end before Release.
  void HoldUpNext() {
    const std::lock_guard<std::mutex> lock(lock_);
    holdNext_ = true;
  }
  void Release() {
    const std::lock_guard<std::mutex> lock(lock_);
    holdNext_ = false;
    held_ = false;
    changed_.notify_all();
  }
  /// Waits until a call is held up; false when the deadline passes.
  bool AwaitHeld() {
    return Await([this] { return held_; });
  }
  /// Waits until `count` calls have begun.
  bool AwaitCalls(size_t count) {
    return Await([this, count] { return calls_.size() >= count; });
  }

  std::vector<Delivered> Calls() {
    const std::lock_guard<std::mutex> lock(lock_);
    return calls_;
  }
  std::vector<int> Levels() {
    std::vector<int> levels;
    for (const Delivered& call : Calls()) levels.push_back(call.Level());
    return levels;
  }

 private:
  template <typename Condition>
  bool Await(Condition condition) {
    std::unique_lock<std::mutex> lock(lock_);
    return changed_.wait_for(lock, std::chrono::seconds(120), condition);
  }
  void Receive(Delivered call) {
    std::unique_lock<std::mutex> lock(lock_);
    calls_.push_back(std::move(call));
    if (holdNext_) {
      holdNext_ = false;
      held_ = true;
    }
    changed_.notify_all();
    const bool mine = held_ && !holder_;
    if (!mine) return;
    holder_ = true;
    changed_.wait(lock, [this] { return !held_; });
    holder_ = false;
  }

  std::mutex lock_;
  std::condition_variable changed_;
  std::vector<Delivered> calls_;
  bool holdNext_ = false;
  bool held_ = false;
  bool holder_ = false;
};

}  // namespace unit
