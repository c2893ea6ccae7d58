/// A window that only notes what it is told, for tests of the preview.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "capture/PreviewWindow.h"

namespace unit {

using namespace velmora;

/// What happened to a fake window. Tests keep it while the preview owns the calls.
struct WindowLog {
  std::atomic<bool> displayAvailable{true};
  std::atomic<bool> createFails{false};
  std::atomic<bool> createWaits{false};  ///< making the window takes as long as this holds
  std::atomic<bool> slow{false};         ///< a picture stays in Show while this holds
  std::atomic<int> entered{0};           ///< into Show
  std::atomic<int> tended{0};
  std::atomic<bool> exists{false};
  std::atomic<int> created{0};
  std::atomic<int> destroyed{0};
  std::atomic<int> questions{0};

  void Note(int value) {
    const std::lock_guard<std::mutex> lock(lock_);
    shown_.push_back(value);
  }
  void NoteThread() {
    const std::lock_guard<std::mutex> lock(lock_);
    threads_.insert(std::this_thread::get_id());
  }
  /// The first byte of each picture.
  std::vector<int> Shown() const {
    const std::lock_guard<std::mutex> lock(lock_);
    return shown_;
  }
  std::set<std::thread::id> Threads() const {
    const std::lock_guard<std::mutex> lock(lock_);
    return threads_;
  }

 private:
  mutable std::mutex lock_;
  std::vector<int> shown_;
  std::set<std::thread::id> threads_;
};

class FakeBackend final : public WindowBackend {
 public:
  explicit FakeBackend(std::shared_ptr<WindowLog> log) : log_(std::move(log)) {}

  bool IsDisplayAvailable(std::string& reason) override {
    ++log_->questions;
    if (!log_->displayAvailable) reason = "No display.";
    return log_->displayAvailable;
  }

  void Create() override {
    log_->NoteThread();
    ++log_->created;
    while (log_->createWaits) std::this_thread::yield();
    if (log_->createFails) throw std::runtime_error("no window");
    log_->exists = true;
  }

  void Show(const cv::Mat& picture) override {
    log_->NoteThread();
    ++log_->entered;
    while (log_->slow) std::this_thread::yield();
    log_->Note(picture.data[0]);
  }

  void PumpEvents() override {
    log_->NoteThread();
    ++log_->tended;
  }

  void Destroy() override {
    log_->NoteThread();
    log_->exists = false;
    ++log_->destroyed;
  }

 private:
  const std::shared_ptr<WindowLog> log_;
};

}  // namespace unit
